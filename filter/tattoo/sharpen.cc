// The unsharp mask: what a blur takes away is added back several times over.
// Sums in single precision, left to right, rounded and clamped once.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/sharpen.h"

#include <algorithm>

#include "tattoo/filters.h"

namespace {

constexpr double kMaskSigma = 3.0;  // whatever the kernel's size

BlurKernel maskKernel(int size) {
  std::vector<double> taps(static_cast<size_t>(size));
  generateGaussianKernel1D(size, kMaskSigma, taps.data());
  return BlurKernel(taps.data(), size);
}

void weigh(const uint16_t* own, const uint16_t* blurred, size_t count, float amount, uint8_t* to) {
  const float alpha = 1.0f + amount;
  const float beta = -amount;
  tattooRows().weigh(own, blurred, count, alpha, beta, to);
}

}  // namespace

SharpRows::SharpRows(const QMImage& grey, float amount, int size, const uint8_t* tone)
    : amount_(amount / 100.0f),
      width_(static_cast<size_t>(grey.width)),
      kernel_(maskKernel(size)),
      rows_(grey, kernel_, kernel_, tone) {}

void SharpRows::next(uint8_t* to) {
  const BlurredRow row = rows_.next();
  weigh(row.own, row.blurred, width_, amount_, to);
}

QMImage add_Weighted(const QMImage& src, const QMImage& blurred, float amount) {
  QMImage result(src.width, src.height, src.color);
  constexpr size_t kAtOnce = 1024;
  uint16_t own[kAtOnce] = {};
  uint16_t taken[kAtOnce] = {};
  for (size_t at = 0; at < src.size(); at += kAtOnce) {
    const size_t count = std::min(kAtOnce, src.size() - at);
    tattooRows().widen(src.data + at, count, own);
    tattooRows().widen(blurred.data + at, count, taken);
    weigh(own, taken, count, amount, result.data + at);
  }
  return result;
}

QMImage enh_unsharp_mask(const QMImage& src, float amount, int size) {
  const bool isPlainGrey = src.channels == 1 && src.width > 0 && src.height > 0;
  if (!isPlainGrey) {
    return add_Weighted(src, enh_gaussian_filter_fast(src, size, kMaskSigma), amount / 100.0f);
  }
  QMImage result(src.width, src.height, src.color);
  SharpRows rows(src, amount, size);
  for (int y = 0; y < src.height; ++y) rows.next(result.data + y * src.width);
  return result;
}
