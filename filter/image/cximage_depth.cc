// Depth of the palette image: indices of any depth as bytes, and the same picture with more bits
// per pixel. Up to 8 bits the indices stay; at 24 bits their colours take their place.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>

#include "image/cximage.h"
#include "image/image_kernels.h"

void CxImage::GetPixelIndices(int64_t x, int64_t y, size_t count, uint8_t* to) const {
  if (count != 0 && dib != nullptr && IsInside(x, y)) {
    const size_t inside = std::min(count, static_cast<size_t>(Width() - x));
    size_t copied = 0;
    if (header.biBitCount == 8) {
      copied = inside;
      std::memcpy(to, PixelRow(y) + x, copied);
    } else if (header.biBitCount == 1 && x % 8 == 0) {
      copied = inside;
      imageKernels().bytesOfBits(PixelRow(y) + x / 8, copied, to);
    }
    x += static_cast<int64_t>(copied);
    to += copied;
    count -= copied;
  }
  for (; count != 0; --count) *to++ = GetPixelIndex(x++, y);
}

// The indices of a row from column x on: all of them where they lie at 8 bits per pixel, else at
// most kRunPixels in `scratch`.
CxImage::IndexRun CxImage::RunAt(int64_t x, int64_t y, uint8_t* scratch) const {
  const auto left = static_cast<size_t>(Width() - x);
  if (header.biBitCount == 8) return {PixelRow(y) + x, left};
  const size_t count = std::min(left, kRunPixels);
  GetPixelIndices(x, y, count, scratch);
  return {scratch, count};
}

bool CxImage::IncreaseBpp(uint32_t target) {
  if (dib == nullptr) return false;
  if (target != 4 && target != 8 && target != 24) return false;
  if (target == header.biBitCount) return true;
  if (target < header.biBitCount) return false;

  CxImage deeper;
  if (!deeper.CreateLike(*this, GetWidth(), GetHeight(), target)) return TakeErrorFrom(deeper);
  deeper.SetPalette(GetPalette(), header.biClrUsed);  // at 24 bits there is none to set
  for (int64_t y = 0; y < Height(); ++y) {
    if (target == 8) {
      GetPixelIndices(0, y, GetWidth(), deeper.PixelRow(y));
      continue;
    }
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
