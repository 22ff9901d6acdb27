// The table behind enh_piecewise_gamma, for those who replace levels while they read them.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_TONE_CURVE_H
#define KORVEL_TATTOO_TONE_CURVE_H

#include <cstdint>

struct ToneTable {
  uint8_t levels[256];
};

// Arguments as of enh_piecewise_gamma.
ToneTable toneTable(int threshold, float gammaLow, float gammaHigh);

#endif
