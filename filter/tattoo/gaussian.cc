// Gaussian kernels and blurs, separable and direct.
// Weights are doubles that went through a single-precision exponential.
// SPDX-License-Identifier: Apache-2.0
#include <vector>

#include "tattoo/blur.h"
#include "tattoo/filters.h"
#include "tattoo/numeric.h"

namespace {

constexpr float kTwoPiSingle = 6.2831855f;
constexpr double kTwoPi = 6.283185307179586;

void normalise(double* weights, int count) {
  double sum = 0.0;
  for (int k = 0; k < count; ++k) sum = sum + weights[k];
  for (int k = 0; k < count; ++k) weights[k] = weights[k] / sum;
}

constexpr double kOneTap = 1.0;  // leaves every level as it is

// Of an image with more bytes a pixel the first width * height are filtered and the rest kept.
QMImage blurredImage(const QMImage& src, const BlurKernel& across, const BlurKernel& down) {
  QMImage result = src.channels == 1 ? QMImage(src.width, src.height, src.color) : QMImage(src);
  if (src.width <= 0 || src.height <= 0) return result;
  const auto width = static_cast<size_t>(src.width);
  BlurredRows rows(src, across, down);
  for (size_t at = 0; at < width * static_cast<size_t>(src.height); at += width) {
    tattooRows().narrow(rows.next().blurred, width, result.data + at);
  }
  return result;
}

}  // namespace

void generateGaussianKernel1D(int size, double sigma, double* out) {
  const int half = size / 2;
  const double c = 1.0 / (static_cast<double>(my_sqrt(kTwoPiSingle)) * sigma);
  for (int i = -half; i <= half; ++i) {
    const double power = (-0.5 * static_cast<double>(i * i)) / (sigma * sigma);
    out[i + half] = c * static_cast<double>(my_exp(static_cast<float>(power)));
  }
  normalise(out, size);
}

QMImage convolve1D(const QMImage& src, const double* kernel, int size, bool horizontal) {
  const BlurKernel along(kernel, size);
  const BlurKernel nothing(&kOneTap, 1);
  return horizontal ? blurredImage(src, along, nothing) : blurredImage(src, nothing, along);
}

QMImage enh_gaussian_filter_fast(const QMImage& src, int size, double sigma) {
  std::vector<double> taps(static_cast<size_t>(size));
  generateGaussianKernel1D(size, sigma, taps.data());
  const BlurKernel kernel(taps.data(), size);
  return blurredImage(src, kernel, kernel);
}

void generateGaussianKernel(int size, double sigmaX, double sigmaY, double* out) {
  const int half = size / 2;
  const double c = 1.0 / (kTwoPi * sigmaX * sigmaY);
  for (int i = -half; i <= half; ++i) {
    for (int j = -half; j <= half; ++j) {
      const double across = static_cast<double>(-(j * j)) / (2.0 * sigmaX * sigmaX);
      const double down = static_cast<double>(i * i) / (2.0 * sigmaY * sigmaY);
      const auto power = static_cast<float>(across - down);
      out[(i + half) * size + (j + half)] = c * static_cast<double>(my_exp(power));
    }
  }
  normalise(out, size * size);
}

QMImage enh_gaussian_filter(const QMImage& src, int size, double sigmaX, double sigmaY) {
  QMImage result(src.width, src.height, QM_IMG_GRAY);
  std::vector<double> kernel(static_cast<size_t>(size) * static_cast<size_t>(size));
  generateGaussianKernel(size, sigmaX, sigmaY, kernel.data());
  const int half = size / 2;
  for (int y = 0; y < src.height; ++y) {
    for (int x = 0; x < src.width; ++x) {
      double acc = 0.0;
      const double* weight = kernel.data();
      for (int ky = -half; ky <= half; ++ky) {
        const unsigned char* row = src.data + myClamp(y + ky, 0, src.height - 1) * src.width;
        for (int kx = -half; kx <= half; ++kx, ++weight) {
          const int xx = myClamp(x + kx, 0, src.width - 1);
          acc = static_cast<double>(row[xx]) * *weight + acc;
        }
      }
      result.data[y * src.width + x] =
          static_cast<unsigned char>(my_round(static_cast<float>(acc)));
    }
  }
  return result;
}
