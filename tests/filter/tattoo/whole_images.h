// The stencil library's row-by-row code, run over whole images: what the filter links, in the shape
// of the reference implementation.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_FILTER_TATTOO_WHOLE_IMAGES_H
#define KORVEL_TESTS_FILTER_TATTOO_WHOLE_IMAGES_H

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <vector>

#include "tattoo/blur.h"
#include "tattoo/diffusion.h"
#include "tattoo/qm_image.h"
#include "tattoo/sharpen.h"
#include "tattoo/tattoo_kernels.h"

// A tone table that leaves every level as it is.
inline const uint8_t* sameTone() {
  static const std::vector<uint8_t> levels = [] {
    std::vector<uint8_t> all(256);
    std::iota(all.begin(), all.end(), uint8_t{0});
    return all;
  }();
  return levels.data();
}

inline bool hasPixels(const QMImage& image) { return image.width > 0 && image.height > 0; }

inline QMImage diffused(const QMImage& grey, int threshold) {
  QMImage out(grey.width, grey.height, QM_IMG_GRAY);
  if (!hasPixels(grey)) return out;
  const auto stride = static_cast<size_t>(grey.width);
  StencilDiffusion diffusion(grey.width, grey.height, threshold, out.data, stride);
  for (int y = 0; y < grey.height; y += kStencilRows) {
    diffusion.next(grey.data + static_cast<size_t>(y) * stride);
  }
  return out;
}

inline QMImage blurred(const QMImage& grey, const BlurKernel& across, const BlurKernel& down) {
  QMImage out(grey.width, grey.height, QM_IMG_GRAY);
  if (!hasPixels(grey)) return out;
  BlurredRows rows(grey, across, down, sameTone());
  for (int y = 0; y < grey.height; ++y) {
    const uint16_t* levels = rows.next().blurred;
    std::transform(levels, levels + grey.width, out.data + y * grey.width,
                   [](uint16_t level) { return static_cast<uint8_t>(level); });
  }
  return out;
}

inline QMImage convolved(const QMImage& grey, const std::vector<double>& taps, bool horizontal) {
  constexpr double kOneTap = 1.0;
  const BlurKernel along(taps.data(), static_cast<int>(taps.size()));
  const BlurKernel nothing(&kOneTap, 1);
  return horizontal ? blurred(grey, along, nothing) : blurred(grey, nothing, along);
}

inline QMImage sharpened(const QMImage& grey, float amount, int size) {
  QMImage out(grey.width, grey.height, QM_IMG_GRAY);
  if (!hasPixels(grey)) return out;
  SharpRows rows(grey, amount, size, sameTone());
  for (int y = 0; y < grey.height; ++y) rows.next(out.data + y * grey.width);
  return out;
}

// All pixels as one row. `amount` is 1 for 100 percent.
inline QMImage weighed(const QMImage& own, const QMImage& blur, float amount) {
  QMImage out(own.width, own.height, QM_IMG_GRAY);
  const size_t padded = (own.size() + kWordsAtOnce - 1) / kWordsAtOnce * kWordsAtOnce;
  std::vector<uint16_t> ownLevels(padded);
  std::vector<uint16_t> blurLevels(padded);
  std::copy_n(own.data, own.size(), ownLevels.begin());
  std::copy_n(blur.data, blur.size(), blurLevels.begin());
  tattooKernels().weigh(ownLevels.data(), blurLevels.data(), own.size(), 1.0f + amount, -amount,
                        out.data);
  return out;
}

#endif
