// The reference implementation of the palette image's operations, one pixel at a time.
// It defines the correct result: the member functions must give the same bytes on every processor.
// Only tests, benchmarks and fuzz targets link it.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_IMAGE_CXIMAGE_REFERENCE_H
#define KORVEL_IMAGE_CXIMAGE_REFERENCE_H

#include "image/cximage.h"

// Each changes `image` as the member function of the same name does, and returns what that returns.
// Error texts are not set.
namespace reference {

bool Dither(CxImage& image, DitherMethod method);
bool IncreaseBpp(CxImage& image, uint32_t target);
bool Lut(CxImage& image, const uint8_t* table);
void Negative(CxImage& image);
bool Rotate180(CxImage& image);
void Mirror(CxImage& image);

// Bits per pixel; 0 without a block.
uint32_t depthOf(const CxImage& image);

// Makes `fresh` an empty image of this size and depth that carries what Transfer would keep of
// `source`. Returns false without memory.
bool createLike(CxImage& fresh, const CxImage& source, uint32_t bpp);

}  // namespace reference

#endif
