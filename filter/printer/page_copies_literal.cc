// The two pixel copies of a page in their plain form, through the checked access.
// The law for the member functions of PellamPrinter.
// SPDX-License-Identifier: Apache-2.0
#include "printer/page_literal.h"

void PageLiteral::copyPixels(CxImage& image, unsigned char* dst, int width, int height,
                             int stride) {
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      dst[static_cast<ptrdiff_t>(y) * stride + x] = image.GetPixelIndex(x, y);
    }
  }
}

void PageLiteral::copyProcessedPixels(CxImage* image, unsigned char* dst, int width, int height,
                                      int stride, bool negative, size_t capacity) {
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
