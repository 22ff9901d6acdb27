// The two-segment tone curve of the stencil halftones, as a table of levels.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_TONE_CURVE_H
#define KORVEL_TATTOO_TONE_CURVE_H

#include <cstdint>

struct ToneTable {
  uint8_t levels[256];
};

// Bends the levels below and from `threshold` on with an exponent each; 0, threshold and 255 stay.
ToneTable toneTable(int threshold, float gammaLow, float gammaHigh);

#endif
