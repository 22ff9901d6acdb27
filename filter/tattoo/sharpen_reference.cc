// The unsharp mask over whole images: a blur, then a weighted sum of each pixel.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/numeric.h"
#include "tattoo/tattoo_reference.h"

namespace reference {

namespace {

constexpr double kMaskSigma = 3.0;  // whatever the kernel's size

}  // namespace

QMImage add_Weighted(const QMImage& src, const QMImage& blurred, float amount) {
  const float alpha = 1.0f + amount;
  const float beta = -amount;
  const float gamma = 0.0f;
  QMImage result(src);
  for (size_t i = 0; i < src.size(); ++i) {
    const float own = static_cast<float>(src.data[i]) * alpha;
    const float taken = static_cast<float>(blurred.data[i]) * beta;
    const int level = my_round(own + taken + gamma);
    result.data[i] = static_cast<unsigned char>(myClamp(level, 0, 255));
  }
  return result;
}

QMImage enh_unsharp_mask(const QMImage& src, float amount, int size) {
  const float share = amount / 100.0f;
  const QMImage blurred = enh_gaussian_filter_fast(src, size, kMaskSigma);
  return add_Weighted(src, blurred, share);
}

}  // namespace reference
