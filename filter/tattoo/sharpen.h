// The unsharp mask of a page, row by row.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_SHARPEN_H
#define KORVEL_TATTOO_SHARPEN_H

#include <cstdint>
#include <vector>

#include "tattoo/blur.h"

// Adds `amount` percent of the detail above a Gaussian of sigma 3 with `size` taps to each pixel.
// `tone` has 256 levels that first replace the page's own. The page, which is not empty, and `tone`
// are not copied: they outlive this object.
class SharpRows {
 public:
  SharpRows(const GreyRows& grey, float amount, int size, const uint8_t* tone);

  // Writes the next row, `width` bytes. To be called at most once per row.
  void next(uint8_t* to);

 private:
  float amount_;  // 1 for 100 percent
  size_t width_;
  BlurKernel kernel_;
  BlurredRows rows_;
};

#endif
