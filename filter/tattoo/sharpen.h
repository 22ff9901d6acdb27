// The rows of an unsharp mask, one after another, for those who need no whole image of them.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_SHARPEN_H
#define KORVEL_TATTOO_SHARPEN_H

#include <cstdint>
#include <vector>

#include "tattoo/blur.h"
#include "tattoo/qm_image.h"

// Gives what enh_unsharp_mask makes of an image, whose levels `tone` has replaced first when it is
// given: 256 of them, borrowed like the pixels. The image has one byte a pixel and some area.
class SharpRows {
 public:
  SharpRows(const QMImage& grey, float amount, int size, const uint8_t* tone = nullptr);

  // Writes the next row, `width` bytes; at most as many calls as rows.
  void next(uint8_t* to);

 private:
  float amount_;  // 1 for 100 percent
  size_t width_;
  BlurKernel kernel_;
  BlurredRows rows_;
};

#endif
