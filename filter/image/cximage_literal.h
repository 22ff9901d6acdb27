// The palette image's operations in their plain form, one pixel at a time.
// They are what the fast forms must agree with; the filter does not link them.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_IMAGE_CXIMAGE_LITERAL_H
#define KORVEL_IMAGE_CXIMAGE_LITERAL_H

#include "image/cximage.h"

struct DiffusionKernel;  // image/dither_tables.h

// Each does to `image` what the member function of the same name does.
struct CxImageLiteral {
  static bool Dither(CxImage& image, DitherMethod method);
  static bool IncreaseBpp(CxImage& image, uint32_t target);
  static bool Lut(CxImage& image, const uint8_t* table);
  static void Negative(CxImage& image);
  static bool Rotate180(CxImage& image);
  static void Mirror(CxImage& image);

 private:
  static void ThresholdInto(const CxImage& image, CxImage& target);
  static void OrderedInto(const CxImage& image, CxImage& target);
  static void BayerInto(const CxImage& image, CxImage& target);
  static void DiffuseInto(CxImage& image, CxImage& target, const DiffusionKernel& kernel);
};

#endif
