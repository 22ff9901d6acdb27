// Separable blur and unsharp mask in their plain form.
// The law for the forms that go by rows.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <vector>

#include "tattoo/filters.h"
#include "tattoo/literal.h"
#include "tattoo/numeric.h"

namespace literal {

namespace {

constexpr double kMaskSigma = 3.0;  // whatever the kernel's size

}  // namespace

QMImage convolve1D(const QMImage& src, const double* kernel, int size, bool horizontal) {
  QMImage result(src);
  const int half = size / 2;
  for (int y = 0; y < src.height; ++y) {
    for (int x = 0; x < src.width; ++x) {
      double acc = 0.0;
      for (int k = -half; k <= half; ++k) {
        const int xx = horizontal ? std::min(std::max(x + k, 0), src.width - 1) : x;
        const int yy = horizontal ? y : std::min(std::max(y + k, 0), src.height - 1);
        acc = static_cast<double>(src.data[yy * src.width + xx]) * kernel[k + half] + acc;
      }
      result.data[y * src.width + x] =
          static_cast<unsigned char>(my_round(static_cast<float>(acc)));
    }
  }
  return result;
}

QMImage enh_gaussian_filter_fast(const QMImage& src, int size, double sigma) {
  std::vector<double> kernel(static_cast<size_t>(size));
  generateGaussianKernel1D(size, sigma, kernel.data());
  return literal::convolve1D(literal::convolve1D(src, kernel.data(), size, true), kernel.data(),
                             size, false);
}

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
  const QMImage blurred = literal::enh_gaussian_filter_fast(src, size, kMaskSigma);
  return literal::add_Weighted(src, blurred, share);
}

}  // namespace literal
