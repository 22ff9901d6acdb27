// The stencil quantiser in stripes of rows.
// A white pixel beside black ones counts as only partly white, which spreads white edges.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/diffusion.h"

#include <algorithm>

#include "tattoo/rows.h"

bool isWithinBounds(int x, int y, int width, int height) {
  return x >= 0 && x < width && y >= 0 && y < height;
}

StencilDiffusion::StencilDiffusion(QMImage& out, int threshold)
    : out_(out),
      threshold_(static_cast<float>(threshold)),
      shares_(stencilColumns(out.width)),
      whites_(stencilColumns(out.width)),
      nowhere_(static_cast<size_t>(out.width)) {}

void StencilDiffusion::next(const uint8_t* levels) {
  const auto stride = static_cast<size_t>(out_.width);
  StencilStripe stripe;
  stripe.from = levels;
  stripe.fromStride = stride;
  stripe.to = out_.data + static_cast<size_t>(row_) * stride;
  stripe.toStride = stride;
  stripe.rows = std::min(kStencilRows, out_.height - row_);
  stripe.firstRow = row_;
  stripe.width = out_.width;
  stripe.height = out_.height;
  stripe.threshold = threshold_;
  stripe.shares = shares_.data();
  stripe.whites = whites_.data();
  stripe.nowhere = nowhere_.data();
  tattooRows().diffuse(stripe);
  row_ += stripe.rows;
}

QMImage edf_cus(const QMImage& grey, int threshold) {
  QMImage out(grey.width, grey.height, QM_IMG_GRAY);
  if (grey.width <= 0 || grey.height <= 0) return out;
  StencilDiffusion diffusion(out, threshold);
  for (int y = 0; y < grey.height; y += kStencilRows) {
    diffusion.next(grey.data + static_cast<size_t>(y) * static_cast<size_t>(grey.width));
  }
  return out;
}
