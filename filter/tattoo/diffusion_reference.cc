// The stencil quantiser over whole images: each pixel's error is pushed to its neighbours.
// SPDX-License-Identifier: Apache-2.0
#include <vector>

#include "tattoo/tattoo_reference.h"

namespace reference {

namespace {

struct Tap {
  int dx;
  int dy;
  float weight;
};

// clang-format off: the layout shows where each tap is.
// Sums to 0.940002, two taps negative: part of each error is dropped (DiffusionTaps).
constexpr Tap kTaps[] = {
    /*                                                  */ {1, 0, 0.505786f},
    {2, 0, -0.052926f},
    {-2, 1, 0.226194f},
    {-1, 1, 0.128835f},
    {0, 1, 0.243191f},
    {1, 1, -0.111078f},
};
// clang-format on

constexpr float kBlackNeighbourShare = 0.1427f;

// Share of white that pixel (x, y), just decided white, lacks for black pixels left and above.
float missingWhite(const QMImage& out, int x, int y) {
  const bool onBorder = y < 1 || x < 1 || y >= out.height - 1 || x >= out.width - 1;
  if (onBorder) return 0.0f;
  const int i = y * out.width + x;
  float missing = 0.0f;
  if (out.data[i - 1] == 0) missing = kBlackNeighbourShare + missing;
  if (out.data[i - out.width] == 0) missing = kBlackNeighbourShare + missing;
  return missing;
}

}  // namespace

bool isWithinBounds(int x, int y, int width, int height) {
  return x >= 0 && x < width && y >= 0 && y < height;
}

QMImage edf_cus(const QMImage& grey, int threshold) {
  const int width = grey.width;
  const int height = grey.height;
  QMImage out(width, height, QM_IMG_GRAY);
  std::vector<std::vector<float>> errors(static_cast<size_t>(height),
                                         std::vector<float>(static_cast<size_t>(width), 0.0f));
  const auto errorAt = [&errors](int x, int y) -> float& {
    return errors[static_cast<size_t>(y)][static_cast<size_t>(x)];
  };

  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const int i = y * width + x;
      const float value = errorAt(x, y) + static_cast<float>(grey.data[i]);
      const bool white = value > static_cast<float>(threshold);
      out.data[i] = white ? 255 : 0;
      const float error = white ? value - 255.0f * (1.0f - missingWhite(out, x, y)) : value;
      for (const Tap& tap : kTaps) {
        if (!isWithinBounds(x + tap.dx, y + tap.dy, width, height)) continue;
        const float share = tap.weight * error;
        errorAt(x + tap.dx, y + tap.dy) += share;
      }
    }
  }
  return out;
}

}  // namespace reference
