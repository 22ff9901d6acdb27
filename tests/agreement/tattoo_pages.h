// Pages on which the stencil halftones are compared with the reference implementation, and a
// comparison that reports the first difference.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_AGREEMENT_TATTOO_PAGES_H
#define KORVEL_TESTS_AGREEMENT_TATTOO_PAGES_H

#include <cstdint>
#include <cstring>
#include <random>
#include <sstream>
#include <string>

#include "tattoo/qm_image.h"

// What a page may look like.
enum class Look { kNoise, kRamp, kText, kNearFlat, kFewLevels, kFlat };

constexpr Look kLooks[] = {Look::kNoise,    Look::kRamp,      Look::kText,
                           Look::kNearFlat, Look::kFewLevels, Look::kFlat};

inline uint8_t levelAt(Look look, int x, int y, unsigned int first, std::mt19937& random) {
  switch (look) {
    case Look::kNoise:
      return static_cast<uint8_t>(random());
    case Look::kRamp:
      return static_cast<uint8_t>(first + static_cast<unsigned int>(x + y / 3));
    case Look::kText:  // strokes five rows high with soft ends
      if (y % 9 >= 5 || (static_cast<unsigned int>(x / 3) * 7919u + first) % 5u < 2u) return 255;
      return x % 3 == 2 ? 130 : 0;
    case Look::kNearFlat:
      return static_cast<uint8_t>(random() % 31 == 0 ? first + 1 : first);
    case Look::kFewLevels:
      return static_cast<uint8_t>(random() % 3 * 127);
    default:
      return static_cast<uint8_t>(first);
  }
}

inline QMImage pageOf(Look look, int width, int height, std::mt19937& random) {
  QMImage page(width, height, QM_IMG_GRAY);
  const unsigned int first = static_cast<unsigned int>(random()) % 256;
  size_t i = 0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) page.data[i++] = levelAt(look, x, y, first, random);
  }
  return page;
}

// Empty when both are the same image; else the first difference in words.
inline std::string difference(const QMImage& have, const QMImage& want) {
  std::ostringstream text;
  if (have.width != want.width || have.height != want.height || have.color != want.color ||
      have.channels != want.channels) {
    text << "an image of another shape";
    return text.str();
  }
  for (size_t i = 0; i < want.size(); ++i) {
    if (have.data[i] == want.data[i]) continue;
    text << want.width << " x " << want.height << ", byte " << i << ": have " << int{have.data[i]}
         << ", want " << int{want.data[i]};
    return text.str();
  }
  return {};
}

#endif
