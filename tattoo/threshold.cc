// The moment-preserving threshold: two levels that keep the first three moments of the histogram.
// Single-precision sums, ascending: on almost solid pages the last bits decide.
// SPDX-License-Identifier: Apache-2.0
#include <cmath>

#include "tattoo/filters.h"
#include "tattoo/numeric.h"

namespace {

constexpr int kLevels = 256;
constexpr int kFallbackThreshold = 128;

void levelShares(const QMImage& grey, float* share) {
  int histogram[kLevels] = {};
  for (size_t i = 0; i < grey.size(); ++i) ++histogram[grey.data[i]];
  const int pixels = grey.width * grey.height;
  for (int i = 0; i < kLevels; ++i) {
    share[i] = static_cast<float>(histogram[i]) / static_cast<float>(pixels);
  }
}

// First level at which the pixels up to it are more than `fraction` of all, or -1.
int levelAbove(float fraction, const float* share) {
  float cumulated = 0.0f;
  for (int i = 0; i < kLevels; ++i) {
    cumulated = share[i] + cumulated;
    if (cumulated > fraction) return i;
  }
  return -1;
}

}  // namespace

int thresh_global_moments(const QMImage& grey) {
  float share[kLevels];
  levelShares(grey, share);

  const float m0 = 1.0f;
  float m1 = 0.0f;
  float m2 = 0.0f;
  float m3 = 0.0f;
  for (int i = 0; i < kLevels; ++i) {
    m1 = m1 + static_cast<float>(i) * share[i];
    m2 = m2 + static_cast<float>(i * i) * share[i];
    m3 = m3 + static_cast<float>(i * i * i) * share[i];
  }

  const float cd = m0 * m2 - m1 * m1;
  const float c0 = (-m2 * m2 + m1 * m3) / cd;
  const float c1 = (m0 * -m3 + m2 * m1) / cd;
  const auto disc =
      static_cast<float>(static_cast<double>(c1 * c1) - 4.0 * static_cast<double>(c0));
  // A histogram of one level, and in single precision many that are close to one, has no
  // discriminant at all; its root would never end.
  if (!std::isfinite(disc) || 0.0f > disc) return kFallbackThreshold;

  const float root = my_sqrt(disc);
  const float z0 = 0.5f * (-c1 - root);
  const float z1 = 0.5f * (-c1 + root);
  const float p0 = (z1 - m1) / (z1 - z0);
  return levelAbove(p0, share);
}
