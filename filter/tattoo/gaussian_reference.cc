// Convolution and Gaussian blurs over whole images, pixel by pixel.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <vector>

#include "tattoo/filters.h"
#include "tattoo/numeric.h"
#include "tattoo/tattoo_reference.h"

namespace reference {

namespace {

constexpr double kTwoPi = 6.283185307179586;

void normalise(double* weights, int count) {
  double sum = 0.0;
  for (int k = 0; k < count; ++k) sum = sum + weights[k];
  for (int k = 0; k < count; ++k) weights[k] = weights[k] / sum;
}

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
  return convolve1D(convolve1D(src, kernel.data(), size, true), kernel.data(), size, false);
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

}  // namespace reference
