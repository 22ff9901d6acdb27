// Depth increase of the palette image: the same picture with more bits per pixel.
// Up to 8 bits the indices stay; at 24 bits their colours take their place.
// SPDX-License-Identifier: Apache-2.0
#include "image/cximage.h"

bool CxImage::IncreaseBpp(uint32_t target) {
  if (dib == nullptr) return false;
  if (target != 4 && target != 8 && target != 24) return false;
  if (target == header.biBitCount) return true;
  if (target < header.biBitCount) return false;

  CxImage deeper;
  if (!deeper.CreateLike(*this, GetWidth(), GetHeight(), target)) return TakeErrorFrom(deeper);
  deeper.SetPalette(GetPalette(), header.biClrUsed);  // at 24 bits there is none to set
  for (int64_t y = 0; y < Height(); ++y) {
    for (int64_t x = 0; x < Width(); ++x) {
      if (target == 24) {
        deeper.BlindSetPixelColor(x, y, BlindGetPixelColor(x, y));
      } else {
        deeper.BlindSetPixelIndex(x, y, BlindGetPixelIndex(x, y));
      }
    }
  }
  return Transfer(deeper);
}
