// Depth increase, tone and geometry of the palette image.
// SPDX-License-Identifier: Apache-2.0
#include "image/cximage_reference.h"

namespace reference {

uint32_t depthOf(const CxImage& image) {
  if (!image.IsValid()) return 0;
  switch (image.GetNumColors()) {
    case 2:
      return 1;
    case 16:
      return 4;
    case 256:
      return 8;
    default:
      return 24;
  }
}

bool createLike(CxImage& fresh, const CxImage& source, uint32_t bpp) {
  fresh.CopyInfo(source);
  return fresh.Create(source.GetWidth(), source.GetHeight(), bpp, 0) != nullptr;
}

bool IncreaseBpp(CxImage& image, uint32_t target) {
  const uint32_t depth = depthOf(image);
  if (depth == 0) return false;
  if (target != 4 && target != 8 && target != 24) return false;
  if (target == depth) return true;
  if (target < depth) return false;

  CxImage deeper;
  if (!createLike(deeper, image, target)) return false;
  deeper.SetPalette(image.GetPalette(), image.GetNumColors());  // at 24 bits there is none to set
  for (int64_t y = 0; y < image.GetHeight(); ++y) {
    for (int64_t x = 0; x < image.GetWidth(); ++x) {
      if (target == 24) {
        deeper.BlindSetPixelColor(x, y, image.BlindGetPixelColor(x, y));
      } else {
        deeper.BlindSetPixelIndex(x, y, image.BlindGetPixelIndex(x, y));
      }
    }
  }
  return image.Transfer(deeper);
}

bool Lut(CxImage& image, const uint8_t* table) {
  if (!image.IsValid() || table == nullptr) return false;
  for (int64_t y = 0; y < image.GetHeight(); ++y) {
    for (int64_t x = 0; x < image.GetWidth(); ++x) {
      image.BlindSetPixelIndex(x, y, table[image.BlindGetPixelIndex(x, y)]);
    }
  }
  return true;
}

void Negative(CxImage& image) {
  if (!image.IsValid()) return;
  uint8_t* bytes = image.GetBits();
  const size_t count = size_t{image.GetEffWidth()} * image.GetHeight();
  for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(~bytes[i]);
}

bool Rotate180(CxImage& image) {
  if (!image.IsValid()) return false;
  const int64_t width = image.GetWidth();
  const int64_t height = image.GetHeight();
  CxImage turned;
  createLike(turned, image, 8);
  turned.SetPalette(image.GetPalette(), image.GetNumColors());
  for (int64_t y = 0; y < height; ++y) {
    for (int64_t x = 0; x < width; ++x) {
      turned.SetPixelIndex(width - 1 - x, height - 1 - y, image.BlindGetPixelIndex(x, y));
    }
  }
  return image.Transfer(turned);
}

void Mirror(CxImage& image) {
  if (depthOf(image) != 8) return;
  const int64_t width = image.GetWidth();
  CxImage mirrored;
  createLike(mirrored, image, 8);
  mirrored.SetPalette(image.GetPalette(), image.GetNumColors());
  for (int64_t y = 0; y < image.GetHeight(); ++y) {
    for (int64_t x = 0; x < width; ++x) {
      mirrored.SetPixelIndex(width - 1 - x, y, image.BlindGetPixelIndex(x, y));
    }
  }
  image.Transfer(mirrored);  // without memory for it, the page has no image any more
}

}  // namespace reference
