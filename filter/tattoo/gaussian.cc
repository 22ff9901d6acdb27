// The weights of a Gaussian filter in one dimension.
// They are doubles computed with a single-precision exponential.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/filters.h"
#include "tattoo/numeric.h"

namespace {

constexpr float kTwoPi = 6.2831855f;

}  // namespace

void generateGaussianKernel1D(int size, double sigma, double* out) {
  const int half = size / 2;
  const double c = 1.0 / (static_cast<double>(my_sqrt(kTwoPi)) * sigma);
  double sum = 0.0;
  for (int i = -half; i <= half; ++i) {
    const double power = (-0.5 * static_cast<double>(i * i)) / (sigma * sigma);
    out[i + half] = c * static_cast<double>(my_exp(static_cast<float>(power)));
    sum = sum + out[i + half];
  }
  for (int k = 0; k < size; ++k) out[k] = out[k] / sum;
}
