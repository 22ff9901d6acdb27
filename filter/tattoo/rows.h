// Rows of the stencil halftones, as fast as the machine goes: plain kernels, nothing allocated.
// Each does what its plain form does (*_literal.cc), to the bit, on every target.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_ROWS_H
#define KORVEL_TATTOO_ROWS_H

#include <cstddef>
#include <cstdint>

#include "lanes/target.h"

// Most rows that one call of TattooRows::diffuse quantises, a multiple of any target's lanes.
constexpr int kStencilRows = 16;

// Up to kStencilRows rows of a page, and what its stripes hand from one to the next.
struct StencilStripe {
  const uint8_t* from;  // grey levels of the first row
  size_t fromStride;    // bytes between rows
  uint8_t* to;          // becomes 0 and 255
  size_t toStride;
  int rows;      // 1..kStencilRows, fewer than that only at the page's end
  int firstRow;  // where the stripe begins on the page
  int width;     // of the page, pixels
  int height;
  float threshold;
  float* shares;     // by column: what the row above leaves; zeros before the first stripe
  uint8_t* whites;   // by eight columns: which pixels of the row above are white
  uint8_t* nowhere;  // `width` bytes, written in place of rows below the page
};

// Elements of `shares` and of `whites`: the lanes also run over columns beside the page.
constexpr size_t stencilColumns(int width) { return static_cast<size_t>(width) + 160; }

// A blur's weights as they are, and as whole numbers for the estimate (tattoo/blur.h).
struct BlurWeights {
  const double* taps;  // `count` of them, an odd number
  size_t count;
  const int16_t* steps;  // taps[k] * 2^shift, rounded: up to the middle one and a zero; or null
  int shift;
  int32_t rounding;  // a half and the estimate's bound, times 2^shift
  int32_t doubt;     // a remainder below it leaves the level open
};

// Counts are pixels; levels are 0..255 in words. The words read and written are `count` rounded
// up to kWordsAtOnce; bytes are exactly as many as counted.
struct TattooRows {
  void (*diffuse)(const StencilStripe& stripe);
  // to[x] = low 8 bits of my_round of the sum of taps[k] * rows[k][x], k ascending, in double.
  // rows[count] is a row of zeros.
  void (*blur)(const BlurWeights& weights, const uint16_t* const* rows, size_t count, uint16_t* to);
  // to[x] = own[x] * alpha + blurred[x] * beta in float, rounded by my_round, held within 0..255.
  void (*weigh)(const uint16_t* own, const uint16_t* blurred, size_t count, float alpha, float beta,
                uint8_t* to);
  void (*widen)(const uint8_t* from, size_t count, uint16_t* to);
  void (*narrow)(const uint16_t* from, size_t count, uint8_t* to);
};

constexpr size_t kWordsAtOnce = 32;

const TattooRows& tattooRows(Target target);  // an available one
const TattooRows& tattooRows();               // the chosen target's

#endif
