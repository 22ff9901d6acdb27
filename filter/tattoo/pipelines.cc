// How the two stencil halftones are put together.
// Threshold, tone curve, unsharp mask and quantiser are shared.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/pipelines.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "tattoo/diffusion.h"
#include "tattoo/filters.h"
#include "tattoo/sharpen.h"
#include "tattoo/tattoo_kernels.h"
#include "tattoo/tone_curve.h"

namespace {

constexpr int kFixedKnee = 64;
constexpr float kMaskAmount = 300.0f;  // percent

using Halftone = void (*)(const GreyRows& grey, unsigned char* to, size_t stride);

// Rows flow from the page through tone curve and mask to the quantiser, one stripe at a time, so
// that no image of the page is made on the way.
void quantise(const GreyRows& grey, int threshold, const ToneTable& tone, unsigned char* to,
              size_t stride) {
  SharpRows rows(grey, kMaskAmount, kMaskTaps, tone.levels);
  StencilDiffusion diffusion(grey.width, grey.height, threshold, to, stride);
  const auto width = static_cast<size_t>(grey.width);
  std::vector<uint8_t> stripe(width * kStencilRows);
  for (int y = 0; y < grey.height; y += kStencilRows) {
    const int end = std::min(y + kStencilRows, grey.height);
    for (int row = y; row < end; ++row) rows.next(&stripe[static_cast<size_t>(row - y) * width]);
    diffusion.next(stripe.data());
  }
}

bool hasArea(const QMImage& image) { return image.width * image.height > 0; }

QMImage halftoned(const QMImage& src, Halftone halftone) {
  if (!hasArea(src)) return src;
  QMImage out(src.width, src.height, QM_IMG_GRAY);
  const auto stride = static_cast<size_t>(src.width);
  if (src.channels == 1) {
    halftone(src, out.data, stride);
  } else {
    halftone(cvtGray(src), out.data, stride);
  }
  return out;
}

}  // namespace

void qmTattooDitherRows(const GreyRows& grey, unsigned char* to, size_t stride) {
  const int threshold = thresh_global_moments(grey);
  quantise(grey, threshold, toneTable(kFixedKnee, 0.85f, 0.7f), to, stride);
}

void qmTattooDitherRowsZ4(const GreyRows& grey, unsigned char* to, size_t stride) {
  const int threshold = thresh_global_moments(grey);
  quantise(grey, threshold, toneTable(threshold, 0.5f, 1.5f), to, stride);
}

QMImage qmTattooDithering(const QMImage& src) { return halftoned(src, qmTattooDitherRows); }
QMImage qmTattooDitheringZ4(const QMImage& src) { return halftoned(src, qmTattooDitherRowsZ4); }
