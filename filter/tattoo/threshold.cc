// The moment-preserving threshold: two levels that keep the first three moments of the histogram.
// Single-precision sums, ascending: on almost solid pages the last bits decide.
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <cstdint>
#include <cstring>

#include "tattoo/filters.h"
#include "tattoo/numeric.h"

namespace {

constexpr int kLevels = 256;
constexpr int kFallbackThreshold = 128;
constexpr size_t kAtOnce = 8;
constexpr uint64_t kEachByte = 0x0101010101010101;

// Eight counters per level, so that a pixel need not wait until its neighbour has been counted.
using Counters = int[kAtOnce][kLevels];

// Eight equal pixels are counted at once: most of a page is paper.
void countRow(const uint8_t* levels, size_t count, Counters& counters) {
  static_assert(kAtOnce == sizeof(uint64_t));
  for (; count >= kAtOnce; count -= kAtOnce, levels += kAtOnce) {
    uint64_t eight;
    std::memcpy(&eight, levels, sizeof eight);
    if (eight == kEachByte * (eight & 0xFF)) {
      counters[0][eight & 0xFF] += int{kAtOnce};
      continue;
    }
    for (size_t i = 0; i < kAtOnce; ++i) ++counters[i][eight >> 8 * i & 0xFF];
  }
  for (size_t i = 0; i < count; ++i) ++counters[0][levels[i]];
}

void countLevels(const GreyRows& grey, int* histogram) {
  Counters counters = {};
  for (int y = 0; y < grey.height; ++y) {
    countRow(grey.row(y), static_cast<size_t>(grey.width), counters);
  }
  for (int level = 0; level < kLevels; ++level) {
    for (const auto& counter : counters) histogram[level] += counter[level];
  }
}

void levelShares(const int* histogram, int pixels, float* share) {
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

int thresh_global_moments(const GreyRows& grey) {
  int histogram[kLevels] = {};
  countLevels(grey, histogram);
  return momentThreshold(histogram, grey.width * grey.height);
}

int momentThreshold(const int (&histogram)[kLevels], int pixels) {
  float share[kLevels];
  levelShares(histogram, pixels, share);

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
