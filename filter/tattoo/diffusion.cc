// The stencil quantiser, in stripes of rows.
// A white pixel beside black ones counts as only partly white, which spreads white edges.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/diffusion.h"

#include <algorithm>

#include "tattoo/tattoo_kernels.h"

StencilDiffusion::StencilDiffusion(int width, int height, int threshold, uint8_t* to, size_t stride)
    : width_(width),
      height_(height),
      threshold_(static_cast<float>(threshold)),
      to_(to),
      stride_(stride),
      shares_(stencilColumns(width)),
      whites_(stencilColumns(width)),
      nowhere_(static_cast<size_t>(width)) {}

void StencilDiffusion::next(const uint8_t* levels) {
  StencilStripe stripe;
  stripe.from = levels;
  stripe.fromStride = static_cast<size_t>(width_);
  stripe.to = to_ + static_cast<size_t>(row_) * stride_;
  stripe.toStride = stride_;
  stripe.rows = std::min(kStencilRows, height_ - row_);
  stripe.firstRow = row_;
  stripe.width = width_;
  stripe.height = height_;
  stripe.threshold = threshold_;
  stripe.shares = shares_.data();
  stripe.whites = whites_.data();
  stripe.nowhere = nowhere_.data();
  tattooKernels().diffuse(stripe);
  row_ += stripe.rows;
}
