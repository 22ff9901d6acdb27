// The two-segment tone curve: one exponent below a knee, another from it on.
// Built as a table of 256 levels.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/tone_curve.h"

#include "tattoo/numeric.h"

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

ToneTable toneTable(int threshold, float gammaLow, float gammaHigh) {
  ToneTable table;
  for (int v = 0; v < 256; ++v) {
    table.levels[v] = bentLevel(v, threshold, gammaLow, gammaHigh);
  }
  return table;
}
