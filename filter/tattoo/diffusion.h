// Error diffusion for stencils: a kernel of its own and a correction at white edges.
// It keeps single dots out of white areas next to black ones.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_DIFFUSION_H
#define KORVEL_TATTOO_DIFFUSION_H

#include <cstddef>
#include <cstdint>
#include <vector>

// Quantises a page to 0 and 255, stripe by stripe: white where level plus error is above
// `threshold` (which may be -1). Rows top to bottom, each left to right.
class StencilDiffusion {
 public:
  // Writes rows of `width` bytes, `stride` bytes apart, to `to`, which is not owned.
  StencilDiffusion(int width, int height, int threshold, uint8_t* to, size_t stride);

  // Quantises the next kStencilRows rows (tattoo/tattoo_kernels.h), or those that are left, from
  // `levels`: rows without padding.
  void next(const uint8_t* levels);

 private:
  int width_;
  int height_;
  float threshold_;
  uint8_t* to_;
  size_t stride_;
  int row_ = 0;  // the next one
  std::vector<float> shares_;
  std::vector<uint8_t> whites_;
  std::vector<uint8_t> nowhere_;
};

#endif
