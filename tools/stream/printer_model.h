// The parts of a printer that its sheets depend on, and the replies by which it reports its status.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_STREAM_PRINTER_MODEL_H
#define KORVEL_TOOLS_STREAM_PRINTER_MODEL_H

#include <cstdint>
#include <string>

namespace korvel {

enum class Media { kGap, kMark, kContinuous, kSheet };

struct PrinterBody {
  unsigned dpi = 203;    // dots per inch, 1 to 9999
  unsigned speed = 150;  // millimetres per second, at least 1
  Media media = Media::kGap;
};

inline constexpr uint64_t kStatusReady = 0x00800000;
inline constexpr uint64_t kStatusPaperOut = 0x00080000;
inline constexpr uint64_t kStatusCoverOpen = 0x00010000;

// A reply of 13 bytes: 64 FF, length 8, the word with its low byte first.
inline std::string statusReply(uint64_t word) {
  std::string reply("\x64\xFF\x00\x08\x00", 5);
  for (int i = 0; i < 8; ++i) reply.push_back(static_cast<char>(word >> (8 * i) & 0xFF));
  return reply;
}

}  // namespace korvel

#endif
