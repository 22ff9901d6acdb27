// The stencil halftones in their plain form: one whole image after another.
// The law for the forms that go by stripes.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/filters.h"
#include "tattoo/literal.h"

namespace literal {

namespace {

constexpr int kFixedKnee = 64;
constexpr float kMaskAmount = 300.0f;  // percent
constexpr int kMaskSize = 11;          // taps

bool hasArea(const QMImage& image) { return image.width * image.height > 0; }

}  // namespace

QMImage qmTattooDithering(const QMImage& src) {
  if (!hasArea(src)) return src;
  QMImage grey = cvtGray(src);
  const int threshold = literal::thresh_global_moments(grey);
  enh_piecewise_gamma(grey, kFixedKnee, 0.85f, 0.7f);
  return literal::edf_cus(literal::enh_unsharp_mask(grey, kMaskAmount, kMaskSize), threshold);
}

QMImage qmTattooDitheringZ4(const QMImage& src) {
  if (!hasArea(src)) return src;
  QMImage grey = cvtGray(src);
  const int threshold = literal::thresh_global_moments(grey);
  enh_piecewise_gamma(grey, threshold, 0.5f, 1.5f);
  return literal::edf_cus(literal::enh_unsharp_mask(grey, kMaskAmount, kMaskSize), threshold);
}

}  // namespace literal
