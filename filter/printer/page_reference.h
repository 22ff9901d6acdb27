// The reference implementation of a page's packing and pixel copies, one pixel at a time.
// It defines the correct result. Only tests, benchmarks and fuzz targets link it.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_PRINTER_PAGE_REFERENCE_H
#define KORVEL_PRINTER_PAGE_REFERENCE_H

#include <cstddef>
#include <cstdint>

#include "image/cximage.h"

// Each does what PellamPrinter's member function of the same name does. The printer's settings are
// arguments here, and nothing is logged.
namespace reference {

int GrayToMono(int bytesPerLine, int height, uint64_t skipRightPixels, unsigned char* buffer);
void copyPixels(CxImage& image, unsigned char* dst, int width, int height, int stride);
void copyProcessedPixels(CxImage* image, unsigned char* dst, int width, int height, int stride,
                         bool negative, size_t capacity);

}  // namespace reference

#endif
