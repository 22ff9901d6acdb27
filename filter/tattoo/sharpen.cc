// The unsharp mask: the detail that a blur removes is added several times over.
// Sums are in single precision, left to right, rounded and clamped once.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/sharpen.h"

#include "tattoo/filters.h"

namespace {

constexpr double kMaskSigma = 3.0;  // whatever the kernel's size

BlurKernel maskKernel(int size) {
  std::vector<double> taps(static_cast<size_t>(size));
  generateGaussianKernel1D(size, kMaskSigma, taps.data());
  return BlurKernel(taps.data(), size);
}

}  // namespace

SharpRows::SharpRows(const GreyRows& grey, float amount, int size, const uint8_t* tone)
    : amount_(amount / 100.0f),
      width_(static_cast<size_t>(grey.width)),
      kernel_(maskKernel(size)),
      rows_(grey, kernel_, kernel_, tone) {}

void SharpRows::next(uint8_t* to) {
  const BlurredRow row = rows_.next();
  const float alpha = 1.0f + amount_;
  const float beta = -amount_;
  tattooKernels().weigh(row.own, row.blurred, width_, alpha, beta, to);
}
