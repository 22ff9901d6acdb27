// A palette image that frees its block at the end of a test, and texts of what it holds.
// Rows are in stored order, the first stored row first.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_IMAGE_OWNED_IMAGE_H
#define KORVEL_TESTS_IMAGE_OWNED_IMAGE_H

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "image/cximage.h"
#include "tests/support/character_picture.h"
#include "tests/support/hex_text.h"

class OwnedImage : public CxImage {
 public:
  OwnedImage() = default;
  ~OwnedImage() { Destroy(); }
};

// An 8-bit grey image from `height` unpadded rows of `width` levels, given as hex text.
inline void createGrey(CxImage& image, uint32_t width, uint32_t height, std::string_view levels) {
  const std::vector<uint8_t> bytes = hexBytes(levels);
  if (bytes.size() != size_t{width} * height) throw std::invalid_argument("levels miss the size");
  image.CreateFromArray(bytes.data(), width, height, 8, width, false);
}

// An 8-bit grey image of one level.
inline void createSolid(CxImage& image, uint32_t width, uint32_t height, uint8_t level) {
  const std::vector<uint8_t> bytes(size_t{width} * height, level);
  image.CreateFromArray(bytes.data(), width, height, 8, width, false);
}

// An image of `bpp` bits from whole stored rows, padding and all, given as hex text.
inline void createStored(CxImage& image, uint32_t width, uint32_t height, uint32_t bpp,
                         std::string_view rows) {
  image.Create(width, height, bpp, 0);
  const std::vector<uint8_t> bytes = hexBytes(rows);
  if (bytes.size() != size_t{image.GetEffWidth()} * height) {
    throw std::invalid_argument("rows miss the stride");
  }
  std::copy(bytes.begin(), bytes.end(), image.GetBits(0));
}

// Every byte of the stored rows, padding and all.
inline std::string storedBytes(CxImage& image) {
  return hexText(image.GetBits(0), size_t{image.GetEffWidth()} * image.GetHeight());
}

// Every pixel's index, row after row, without padding.
inline std::string indices(const CxImage& image) {
  std::vector<uint8_t> all;
  for (int64_t y = 0; y < image.GetHeight(); ++y) {
    for (int64_t x = 0; x < image.GetWidth(); ++x) all.push_back(image.GetPixelIndex(x, y));
  }
  return hexText(all);
}

// The header copy at the start of the block.
inline std::string headerBytes(CxImage& image) {
  return hexText(image.GetBits(0) - image.GetPaletteSize() - 40, 40);
}

// Bits per pixel, from the block's header copy.
inline int storedDepth(CxImage& image) {
  return (image.GetBits(0) - image.GetPaletteSize() - 40)[14];
}

// The palette's first entries as blue, green, red, reserved.
inline std::string paletteBytes(const CxImage& image, size_t entries) {
  return hexText(image.GetPalette(), 4 * entries);
}

// A 1-bit picture: '#' where the index is 0, black, '.' where it is 1, white.
inline std::string blackPicture(const CxImage& image) {
  return drawPicture(image.GetWidth(), image.GetHeight(), [&image](size_t x, size_t y) {
    const bool black = image.GetPixelIndex(static_cast<int64_t>(x), static_cast<int64_t>(y)) == 0;
    return black ? '#' : '.';
  });
}

#endif
