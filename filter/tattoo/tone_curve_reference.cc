// Threshold and tone curve over whole images. The levels are counted and replaced one by one; how
// the threshold follows from the counts, and the curve's 256 levels, have one implementation only.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/tone_curve.h"

#include "tattoo/filters.h"
#include "tattoo/tattoo_reference.h"

namespace reference {

int thresh_global_moments(const QMImage& grey) {
  int histogram[256] = {};
  for (size_t i = 0; i < grey.size(); ++i) ++histogram[grey.data[i]];
  return momentThreshold(histogram, grey.width * grey.height);
}

void enh_piecewise_gamma(QMImage& grey, int threshold, float gammaLow, float gammaHigh) {
  const ToneTable table = toneTable(threshold, gammaLow, gammaHigh);
  for (size_t i = 0; i < grey.size(); ++i) grey.data[i] = table.levels[grey.data[i]];
}

}  // namespace reference
