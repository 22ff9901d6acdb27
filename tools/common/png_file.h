// Writes rows of one or two bits per dot as a PNG file.
// The caller's palette gives the values their colours.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_PNG_FILE_H
#define KORVEL_TOOLS_COMMON_PNG_FILE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/common/result.h"

namespace korvel {

struct PngPicture {
  size_t width;                                 // dots
  size_t height;                                // rows
  size_t stride;                                // bytes between rows
  int bitsPerDot;                               // leftmost dot in the top bits
  unsigned dpi;                                 // 0: unknown
  std::vector<std::array<uint8_t, 3>> palette;  // red, green, blue; empty: grey, set bits black
};

Result<void> writePngFile(const std::string& path, const PngPicture& picture, const uint8_t* rows);

// "Cannot write PATH: REASON." according to errno.
Failure cannotWrite(const std::string& path);

}  // namespace korvel

#endif
