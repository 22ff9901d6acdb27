// Single pixels of the palette image, by index and by colour, checked and unchecked.
// Within a byte the leftmost pixel has the most significant bits.
// SPDX-License-Identifier: Apache-2.0
#include "image/cximage.h"

bool CxImage::IsInside(int64_t x, int64_t y) const {
  return x >= 0 && y >= 0 && x < Width() && y < Height();
}

uint8_t* CxImage::PixelRow(int64_t y) const { return info.bits + y * int64_t{info.effWidth}; }

uint8_t CxImage::GetPixelIndex(int64_t x, int64_t y) const {
  if (dib == nullptr || header.biClrUsed == 0) return 0;
  // Outside the image there is no index: callers write such a value back, which changes nothing.
  if (!IsInside(x, y)) return static_cast<uint8_t>(reinterpret_cast<uintptr_t>(info.bits));
  return BlindGetPixelIndex(x, y);
}

void CxImage::SetPixelIndex(int64_t x, int64_t y, uint8_t index) {
  if (dib == nullptr || header.biClrUsed == 0 || !IsInside(x, y)) return;
  BlindSetPixelIndex(x, y, index);
}

uint8_t CxImage::BlindGetPixelIndex(int64_t x, int64_t y) const {
  const uint8_t byte = PixelRow(y)[(x * header.biBitCount) >> 3];
  switch (header.biBitCount) {
    case 1:
      return (byte >> (7 - x % 8)) & 1;
    case 4:
      return (byte >> (4 * (1 - x % 2))) & 15;
    case 8:
      return byte;
    default:
      return 0;
  }
}

void CxImage::BlindSetPixelIndex(int64_t x, int64_t y, uint8_t index) {
  uint8_t& byte = PixelRow(y)[(x * header.biBitCount) >> 3];
  switch (header.biBitCount) {
    case 1: {
      const int shift = static_cast<int>(7 - x % 8);
      byte = static_cast<uint8_t>((byte & ~(1 << shift)) | ((index & 1) << shift));
      break;
    }
    case 4: {
      const int shift = static_cast<int>(4 * (1 - x % 2));
      byte = static_cast<uint8_t>((byte & ~(15 << shift)) | ((index & 15) << shift));
      break;
    }
    case 8:
      byte = index;
      break;
    default:
      break;
  }
}

tagRGBQUAD CxImage::BlindGetPixelColor(int64_t x, int64_t y, bool /*withAlpha*/) const {
  if (header.biClrUsed != 0) return GetPaletteColor(BlindGetPixelIndex(x, y));
  const uint8_t* pixel = PixelRow(y) + 3 * x;
  return {pixel[0], pixel[1], pixel[2], 0};
}

void CxImage::BlindSetPixelColor(int64_t x, int64_t y, tagRGBQUAD colour, bool /*withAlpha*/) {
  if (header.biClrUsed != 0) {
    BlindSetPixelIndex(x, y, GetNearestIndex(colour));
    return;
  }
  uint8_t* pixel = PixelRow(y) + 3 * x;
  pixel[0] = colour.rgbBlue;
  pixel[1] = colour.rgbGreen;
  pixel[2] = colour.rgbRed;
}
