// The stencil halftones as one whole-image operation after another.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/filters.h"
#include "tattoo/tattoo_reference.h"

namespace reference {

namespace {

constexpr int kFixedKnee = 64;
constexpr float kMaskAmount = 300.0f;  // percent
constexpr int kMaskSize = 11;          // taps

bool hasArea(const QMImage& image) { return image.width * image.height > 0; }

}  // namespace

QMImage qmTattooDithering(const QMImage& src) {
  if (!hasArea(src)) return src;
  QMImage grey = cvtGray(src);
  const int threshold = thresh_global_moments(grey);
  enh_piecewise_gamma(grey, kFixedKnee, 0.85f, 0.7f);
  return edf_cus(enh_unsharp_mask(grey, kMaskAmount, kMaskSize), threshold);
}

QMImage qmTattooDitheringZ4(const QMImage& src) {
  if (!hasArea(src)) return src;
  QMImage grey = cvtGray(src);
  const int threshold = thresh_global_moments(grey);
  enh_piecewise_gamma(grey, threshold, 0.5f, 1.5f);
  return edf_cus(enh_unsharp_mask(grey, kMaskAmount, kMaskSize), threshold);
}

}  // namespace reference
