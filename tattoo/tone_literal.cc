// Grey conversion, threshold and tone curve in their plain form.
// The law for the forms that count and replace many pixels at a time.
// SPDX-License-Identifier: Apache-2.0
#include <cmath>

#include "tattoo/literal.h"
#include "tattoo/numeric.h"

namespace literal {

namespace {

constexpr float kRedWeight = 0.299f;
constexpr float kGreenWeight = 0.587f;
constexpr float kBlueWeight = 0.114f;

unsigned char greyOf(const unsigned char* pixel, QM_IMG_COLOR color) {
  if (color == QM_IMG_GRAY) return pixel[0];
  const bool blueFirst = color == QM_IMG_BGR || color == QM_IMG_BGRA;
  const float first = (blueFirst ? kBlueWeight : kRedWeight) * static_cast<float>(pixel[0]);
  const float second = kGreenWeight * static_cast<float>(pixel[1]);
  const float third = (blueFirst ? kRedWeight : kBlueWeight) * static_cast<float>(pixel[2]);
  const float sum = first + second;
  return static_cast<unsigned char>(my_round(sum + third));
}

}  // namespace

QMImage cvtGray(const QMImage& src) {
  QMImage grey(src.width, src.height, QM_IMG_GRAY);
  const unsigned char* pixel = src.data;
  for (size_t i = 0; i < grey.size(); ++i, pixel += src.channels) {
    grey.data[i] = greyOf(pixel, src.color);
  }
  return grey;
}

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

namespace {

unsigned char bentLevel(int v, int threshold, float gammaLow, float gammaHigh) {
  if (v < threshold) {
    const auto knee = static_cast<float>(threshold);
    const float bent = my_pow(static_cast<float>(v) / knee, gammaLow);
    return static_cast<unsigned char>(static_cast<int>(bent * knee));  // truncates, low 8 bits
  }
  // A knee on the last level leaves a segment of no length: white stays white.
  if (threshold == 255) return 255;
  const auto span = static_cast<float>(255 - threshold);
  const float bent = my_pow(static_cast<float>(v - threshold) / span, gammaHigh);
  const float level = bent * span + static_cast<float>(threshold);
  return static_cast<unsigned char>(static_cast<int>(level));
}

}  // namespace

void enh_piecewise_gamma(QMImage& grey, int threshold, float gammaLow, float gammaHigh) {
  unsigned char table[256];
  for (int v = 0; v < 256; ++v) table[v] = bentLevel(v, threshold, gammaLow, gammaHigh);
  for (size_t i = 0; i < grey.size(); ++i) grey.data[i] = table[grey.data[i]];
}

}  // namespace literal
