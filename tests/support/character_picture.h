// Pictures as rows of characters, one string per row, so that tables show what prints.
// They are compared as one text with line ends, so that a failure shows the rows that differ.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SUPPORT_CHARACTER_PICTURE_H
#define KORVEL_TESTS_SUPPORT_CHARACTER_PICTURE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// The rows of a picture from top to bottom, all of one length.
using PictureRows = std::vector<std::string>;

// The rows as one text, a line end after each.
inline std::string pictureText(const PictureRows& rows) {
  std::string text;
  for (const std::string& row : rows) text += row + '\n';
  return text;
}

// The text of a picture whose character at column x of row y is charAt(x, y).
template <typename CharAt>
std::string drawPicture(size_t width, size_t height, const CharAt& charAt) {
  std::string text;
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) text += charAt(x, y);
    text += '\n';
  }
  return text;
}

// A picture in memory, `stride` bytes between rows: '#' for a byte that equals `mark`, else '.'.
inline std::string markedPicture(const uint8_t* pixels, size_t width, size_t height, size_t stride,
                                 uint8_t mark) {
  return drawPicture(width, height, [&](size_t x, size_t y) {
    return pixels[y * stride + x] == mark ? '#' : '.';
  });
}

#endif
