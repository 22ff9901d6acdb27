// Error diffusion for stencils: a kernel of its own and a correction at white edges.
// Made to leave lone dots out of white areas next to black ones.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_DIFFUSION_H
#define KORVEL_TATTOO_DIFFUSION_H

#include <cstdint>
#include <vector>

#include "tattoo/qm_image.h"

// True exactly when 0 <= x < width and 0 <= y < height.
bool isWithinBounds(int x, int y, int width, int height);

// Quantises a grey image to 0 and 255: white where level plus error is above `threshold`
// (which may be -1). Rows top to bottom, each left to right.
QMImage edf_cus(const QMImage& grey, int threshold);

// The same for a page whose rows come in stripes.
class StencilDiffusion {
 public:
  // Writes to `out`, borrowed, whose sides are the page's.
  StencilDiffusion(QMImage& out, int threshold);

  // Quantises the next kStencilRows rows (tattoo/rows.h), or those that are left. They stand
  // unpadded at `levels`.
  void next(const uint8_t* levels);

 private:
  QMImage& out_;
  float threshold_;
  int row_ = 0;  // the next one
  std::vector<float> shares_;
  std::vector<uint8_t> whites_;
  std::vector<uint8_t> nowhere_;
};

#endif
