// Stencil images from hex text, and texts of what they hold.
// Levels are listed row by row, without padding, the top row first.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_TATTOO_GREY_IMAGE_H
#define KORVEL_TESTS_TATTOO_GREY_IMAGE_H

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tattoo/qm_image.h"
#include "tests/support/character_picture.h"
#include "tests/support/hex_text.h"

inline QMImage imageOf(int width, int height, QM_IMG_COLOR color, std::string_view pixels) {
  const std::vector<uint8_t> bytes = hexBytes(pixels);
  QMImage image(width, height, color);
  if (bytes.size() != image.size()) throw std::invalid_argument("pixels miss the size");
  return QMImage(width, height, color, bytes.data());
}

inline QMImage greyImage(int width, int height, std::string_view levels) {
  return imageOf(width, height, QM_IMG_GRAY, levels);
}

inline QMImage solidGrey(int width, int height, int level) {
  const std::vector<uint8_t> bytes(static_cast<size_t>(width * height),
                                   static_cast<uint8_t>(level));
  return QMImage(width, height, QM_IMG_GRAY, bytes.data());
}

// The 256 levels in order, 16 per row.
inline QMImage everyLevel() {
  std::vector<uint8_t> bytes(256);
  for (size_t i = 0; i < 256; ++i) bytes[i] = static_cast<uint8_t>(i);
  return QMImage(16, 16, QM_IMG_GRAY, bytes.data());
}

inline std::string pixelBytes(const QMImage& image) { return hexText(image.data, image.size()); }

// '#' is black, 0, and '.' is white, 255; any other byte, which there must not be, is '?'.
inline std::string stencilPicture(const QMImage& image) {
  const auto width = static_cast<size_t>(image.width);
  return drawPicture(width, static_cast<size_t>(image.height), [&](size_t x, size_t y) {
    const unsigned char byte = image.data[y * width + x];
    if (byte == 0) return '#';
    return byte == 255 ? '.' : '?';
  });
}

#endif
