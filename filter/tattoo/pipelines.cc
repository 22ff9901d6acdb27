// The stencil halftones' fixed chains: grey, threshold, tone curve, sharpening, diffusion.
// The threshold is taken before any enhancement.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/pipelines.h"

#include <algorithm>
#include <vector>

#include "tattoo/diffusion.h"
#include "tattoo/filters.h"
#include "tattoo/rows.h"
#include "tattoo/sharpen.h"
#include "tattoo/tone_curve.h"

namespace {

constexpr int kFixedKnee = 64;
constexpr float kMaskAmount = 300.0f;  // percent
constexpr int kMaskSize = 11;          // taps

bool hasArea(const QMImage& image) { return image.width * image.height > 0; }

// Rows flow from the page through tone curve and mask to the quantiser, a stripe at a time, and no
// image but the result is made.
QMImage stencilOf(const QMImage& grey, int threshold, const ToneTable& tone) {
  QMImage out(grey.width, grey.height, QM_IMG_GRAY);
  SharpRows rows(grey, kMaskAmount, kMaskSize, tone.levels);
  StencilDiffusion diffusion(out, threshold);
  const auto width = static_cast<size_t>(grey.width);
  std::vector<uint8_t> stripe(width * kStencilRows);
  for (int y = 0; y < grey.height; y += kStencilRows) {
    const int end = std::min(y + kStencilRows, grey.height);
    for (int row = y; row < end; ++row) rows.next(&stripe[static_cast<size_t>(row - y) * width]);
    diffusion.next(stripe.data());
  }
  return out;
}

QMImage firstStencil(const QMImage& grey) {
  const int threshold = thresh_global_moments(grey);
  return stencilOf(grey, threshold, toneTable(kFixedKnee, 0.85f, 0.7f));
}

QMImage stencilZ4(const QMImage& grey) {
  const int threshold = thresh_global_moments(grey);
  return stencilOf(grey, threshold, toneTable(threshold, 0.5f, 1.5f));
}

}  // namespace

QMImage qmTattooDithering(const QMImage& src) {
  if (!hasArea(src)) return src;
  return src.channels == 1 ? firstStencil(src) : firstStencil(cvtGray(src));
}

QMImage qmTattooDitheringZ4(const QMImage& src) {
  if (!hasArea(src)) return src;
  return src.channels == 1 ? stencilZ4(src) : stencilZ4(cvtGray(src));
}
