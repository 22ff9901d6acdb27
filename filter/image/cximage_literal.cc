// Depth increase, tone and geometry of the palette image in their plain form.
// The law for the member functions of the same names.
// SPDX-License-Identifier: Apache-2.0
#include "image/cximage_literal.h"

bool CxImageLiteral::IncreaseBpp(CxImage& image, uint32_t target) {
  if (image.dib == nullptr) return false;
  if (target != 4 && target != 8 && target != 24) return false;
  if (target == image.header.biBitCount) return true;
  if (target < image.header.biBitCount) return false;

  CxImage deeper;
  if (!deeper.CreateLike(image, image.GetWidth(), image.GetHeight(), target)) {
    return image.TakeErrorFrom(deeper);
  }
  deeper.SetPalette(image.GetPalette(), image.header.biClrUsed);  // at 24 bits there is none to set
  for (int64_t y = 0; y < image.Height(); ++y) {
    for (int64_t x = 0; x < image.Width(); ++x) {
      if (target == 24) {
        deeper.BlindSetPixelColor(x, y, image.BlindGetPixelColor(x, y));
      } else {
        deeper.BlindSetPixelIndex(x, y, image.BlindGetPixelIndex(x, y));
      }
    }
  }
  return image.Transfer(deeper);
}

bool CxImageLiteral::Lut(CxImage& image, const uint8_t* table) {
  if (image.dib == nullptr || table == nullptr) return false;
  for (int64_t y = 0; y < image.Height(); ++y) {
    for (int64_t x = 0; x < image.Width(); ++x) {
      image.BlindSetPixelIndex(x, y, table[image.BlindGetPixelIndex(x, y)]);
    }
  }
  return true;
}

void CxImageLiteral::Negative(CxImage& image) {
  if (image.dib == nullptr) return;
  for (uint32_t i = 0; i < image.header.biSizeImage; ++i) {
    image.info.bits[i] = static_cast<uint8_t>(~image.info.bits[i]);
  }
}

bool CxImageLiteral::Rotate180(CxImage& image) {
  if (image.dib == nullptr) return false;
  CxImage turned;
  turned.CreateLike(image, image.GetWidth(), image.GetHeight(), 8);
  turned.SetPalette(image.GetPalette(), image.header.biClrUsed);
  for (int64_t y = 0; y < image.Height(); ++y) {
    for (int64_t x = 0; x < image.Width(); ++x) {
      turned.SetPixelIndex(image.Width() - 1 - x, image.Height() - 1 - y,
                           image.BlindGetPixelIndex(x, y));
    }
  }
  return image.Transfer(turned);
}

void CxImageLiteral::Mirror(CxImage& image) {
  if (image.dib == nullptr || image.header.biBitCount != 8) return;
  CxImage mirrored;
  if (mirrored.CreateLike(image, image.GetWidth(), image.GetHeight(), 8)) {
    mirrored.SetPalette(image.GetPalette(), image.header.biClrUsed);
    const int64_t last = image.Width() - 1;
    for (int64_t y = 0; y < image.Height(); ++y) {
      const uint8_t* from = image.PixelRow(y);
      uint8_t* to = mirrored.PixelRow(y);
      for (int64_t x = 0; x <= last; ++x) to[x] = from[last - x];
    }
  }
  image.Transfer(mirrored);  // without memory for it the page has no image any more
}
