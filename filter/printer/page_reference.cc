// Packing gathers one bit at a time; the copies use the image's checked access.
// SPDX-License-Identifier: Apache-2.0
#include "printer/page_reference.h"

namespace reference {

int GrayToMono(int bytesPerLine, int height, uint64_t skipRightPixels, unsigned char* buffer) {
  const auto skip = static_cast<int>(skipRightPixels);
  const bool skips = skipRightPixels != 0 && skipRightPixels < static_cast<size_t>(bytesPerLine);
  const int wb = skips ? bytesPerLine - skip : bytesPerLine;  // pixels packed in each row

  int out = 0;
  for (int y = 0; y < height; ++y) {
    const unsigned char* row = buffer + static_cast<ptrdiff_t>(y) * bytesPerLine;
    unsigned int bits = 0;
    for (int x = 0; x < wb; ++x) {
      if (row[x] != 0) bits |= 128u >> (x % 8);
      if (x % 8 != 7) continue;
      buffer[out++] = static_cast<unsigned char>(bits);
      bits = 0;
    }
    if (wb % 8 != 0) buffer[out++] = static_cast<unsigned char>(bits);
  }
  return out;
}

void copyPixels(CxImage& image, unsigned char* dst, int width, int height, int stride) {
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      dst[static_cast<ptrdiff_t>(y) * stride + x] = image.GetPixelIndex(x, y);
    }
  }
}

void copyProcessedPixels(CxImage* image, unsigned char* dst, int width, int height, int stride,
                         bool negative, size_t capacity) {
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const size_t at =
          static_cast<size_t>(y) * static_cast<size_t>(stride) + static_cast<size_t>(x);
      if (at >= capacity) return;
      const uint8_t index = image->GetPixelIndex(x, y);
      const uint8_t level = index == 1 ? 255 : index;
      dst[at] = negative ? static_cast<uint8_t>(~level) : level;
    }
  }
}

}  // namespace reference
