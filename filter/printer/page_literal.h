// The page's packing and pixel copies in their plain form, one pixel at a time.
// They are what the fast forms must agree with; the filter does not link them.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_PRINTER_PAGE_LITERAL_H
#define KORVEL_PRINTER_PAGE_LITERAL_H

#include <cstddef>
#include <cstdint>

#include "image/cximage.h"

// Each does what the printer's member function of the same name does; what that takes from the
// printer object is an argument here, and nothing is logged.
struct PageLiteral {
  static int GrayToMono(int bytesPerLine, int height, uint64_t skipRightPixels,
                        unsigned char* buffer);
  static void copyPixels(CxImage& image, unsigned char* dst, int width, int height, int stride);
  static void copyProcessedPixels(CxImage* image, unsigned char* dst, int width, int height,
                                  int stride, bool negative, size_t capacity);
};

#endif
