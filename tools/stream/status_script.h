// What an emulated printer answers to each status request, as a line of text:
// "ready, 64 FF 00 08 | 00 00 00 88 00, none*3, out".
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_STREAM_STATUS_SCRIPT_H
#define KORVEL_TOOLS_STREAM_STATUS_SCRIPT_H

#include <cstdint>
#include <string>
#include <vector>

namespace korvel {

inline constexpr uint64_t kStatusReady = 0x00800000;
inline constexpr uint64_t kStatusPaperOut = 0x00080000;
inline constexpr uint64_t kStatusCoverOpen = 0x00010000;

enum class Answer {
  kReply,    // the pieces, each in a read of its own
  kAuto,     // ready before the page's image, paper out behind it
  kSilent,   // the drain request is granted, no reply comes
  kRefuse,   // the side channel says that it cannot drain
  kNoDrain,  // the side channel does not answer
};

struct StatusStep {
  Answer answer = Answer::kAuto;
  std::vector<std::string> pieces;
};
using StatusScript = std::vector<StatusStep>;

// A reply of 13 bytes: 64 FF, length 8, the word with its low byte first.
std::string statusReply(uint64_t word);

// Entries stand between commas or on lines of their own; '#' starts a comment. An entry is auto,
// none, refuse, timeout, or a reply: ready, out, cover or bytes in hex. '+' glues replies into one
// read, '|' parts a reply into pieces that arrive separately; "*N" behind an entry repeats it.
// On a fault returns false and tells it in one sentence; the script is then unchanged.
bool parseStatusScript(const std::string& text, StatusScript* script, std::string* fault);

}  // namespace korvel

#endif
