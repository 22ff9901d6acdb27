// The moment-preserving threshold from levels counted one by one.
// The law for the form that counts eight at a time; what follows the count is the same.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/literal.h"
#include "tattoo/moments.h"

int literal::thresh_global_moments(const QMImage& grey) {
  int histogram[256] = {};
  for (size_t i = 0; i < grey.size(); ++i) ++histogram[grey.data[i]];
  return momentThreshold(histogram, grey.width * grey.height);
}
