// Grey conversion of the stencil library.
// The weights are those of video luma, as single-precision constants.
// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "tattoo/filters.h"
#include "tattoo/numeric.h"

namespace {

constexpr float kRedWeight = 0.299f;
constexpr float kGreenWeight = 0.587f;
constexpr float kBlueWeight = 0.114f;

unsigned char greyOf(const unsigned char* pixel, QM_IMG_COLOR color) {
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
  if (src.channels == 1) {
    std::memcpy(grey.data, src.data, grey.size());
    return grey;
  }
  const unsigned char* pixel = src.data;
  for (size_t i = 0; i < grey.size(); ++i, pixel += src.channels) {
    grey.data[i] = greyOf(pixel, src.color);
  }
  return grey;
}
