// Writes rows of one or two bits per dot as a PNG file.
// The caller's palette gives the values their colours.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_PNG_FILE_H
#define KORVEL_TOOLS_COMMON_PNG_FILE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tools/common/output_file.h"
#include "tools/common/result.h"

namespace korvel {

struct PngPicture {
  size_t width;                                 // dots
  size_t height;                                // rows
  size_t stride;                                // bytes of a row
  int bitsPerDot;                               // leftmost dot in the top bits
  unsigned dpi;                                 // 0: unknown
  std::vector<std::array<uint8_t, 3>> palette;  // red, green, blue; empty: grey, set bits black
  bool quick = false;                           // saves time rather than bytes
};

// The row `y`, valid until the next call.
using PngRow = std::function<const uint8_t*(size_t y)>;

// Asks for one row after the other, so that no picture has to be in memory as a whole. The file is
// created as createOutputFile says, and marked as one that these tools have made.
Result<void> writePngFile(const std::string& path, const PngPicture& picture, const PngRow& row);

// The same for rows that follow each other in memory.
Result<void> writePngFile(const std::string& path, const PngPicture& picture, const uint8_t* rows);

// Whether a file is a picture that these tools have made, according to its mark.
bool isOwnPicture(const std::string& path);

}  // namespace korvel

#endif
