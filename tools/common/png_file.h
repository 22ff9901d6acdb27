// Writes rows of one or two bits a dot as a PNG file.
// What the values look like is the caller's palette.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_PNG_FILE_H
#define KORVEL_TOOLS_COMMON_PNG_FILE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace korvel {

struct PngPicture {
  size_t width;                                 // dots
  size_t height;                                // rows
  size_t stride;                                // bytes between rows
  int bitsPerDot;                               // leftmost dot in the top bits
  unsigned dpi;                                 // 0: not told
  std::vector<std::array<uint8_t, 3>> palette;  // red, green, blue; empty: grey, set bits black
};

// Returns an empty text, or one sentence on what went wrong.
std::string writePngFile(const std::string& path, const PngPicture& picture, const uint8_t* rows);

// "cannot write PATH: REASON" by errno.
std::string cannotWrite(const std::string& path);

}  // namespace korvel

#endif
