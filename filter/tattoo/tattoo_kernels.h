// The kernels of the stencil halftones, one set for each SIMD target. They allocate nothing.
// On every target they give the bits of the reference implementation (tattoo_reference.h).
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_TATTOO_KERNELS_H
#define KORVEL_TATTOO_TATTOO_KERNELS_H

#include <cstddef>
#include <cstdint>

#include "lanes/target.h"

// The most rows that one call of TattooKernels::diffuse quantises: a multiple of the rows that
// any target quantises side by side (checked in diffusion_rows.cc).
constexpr int kStencilRows = 16;

// The taps of the stencil halftones' mask, for which TattooKernels::blur is fastest.
constexpr int kMaskTaps = 11;

// Up to kStencilRows rows of a page, and the state that one stripe hands to the next.
struct StencilStripe {
  const uint8_t* from;  // grey levels of the first row
  size_t fromStride;    // bytes between rows
  uint8_t* to;          // becomes 0 and 255
  size_t toStride;
  int rows;      // 1..kStencilRows, fewer than that only at the page's end
  int firstRow;  // of the page
  int width;     // of the page, pixels
  int height;
  float threshold;
  float* shares;     // by column: error shares from the row above; zeros before the first stripe
  uint8_t* whites;   // by eight columns: which pixels of the row above are white
  uint8_t* nowhere;  // `width` bytes, written in place of rows below the page
};

// The columns beside the page that the lanes of `diffuse` also visit, at most (checked in
// diffusion_rows.cc).
constexpr int kColumnsBeside = 160;

// Elements of `shares` and of `whites`.
constexpr size_t stencilColumns(int width) { return static_cast<size_t>(width) + kColumnsBeside; }

// A blur's weights, and whole numbers in their place for the estimate (tattoo/blur.h).
struct BlurWeights {
  const double* taps;  // `count` of them, an odd number
  size_t count;
  const int16_t* steps;  // taps[k] * 2^shift, rounded, up to the middle one, then 0; may be null
  int shift;
  int32_t rounding;  // a half and the estimate's bound, times 2^shift
  int32_t doubt;     // a remainder below it leaves the level open
};

// The step of the kernels that work on words: a multiple of any target's (checked in blur_rows.cc).
constexpr size_t kWordsAtOnce = 32;

// Counts are pixels; levels are 0..255 in words. Words are read and written up to `count` rounded
// up to kWordsAtOnce, bytes up to `count`.
struct TattooKernels {
  void (*diffuse)(const StencilStripe& stripe);
  // to[x] = low 8 bits of my_round of the sum of taps[k] * rows[k][x], k ascending, in double.
  // rows[count] is a row of zeros.
  void (*blur)(const BlurWeights& weights, const uint16_t* const* rows, size_t count, uint16_t* to);
  // to[x] = own[x] * alpha + blurred[x] * beta in float, rounded by my_round, clamped to 0..255.
  void (*weigh)(const uint16_t* own, const uint16_t* blurred, size_t count, float alpha, float beta,
                uint8_t* to);
  // to[x] = levels[from[x]]; `levels` has 256 entries. Writes `count` words.
  void (*tone)(const uint8_t* from, size_t count, const uint8_t* levels, uint16_t* to);
};

const TattooKernels& tattooKernels(Target target);  // of an available target
const TattooKernels& tattooKernels();               // of the chosen target

#endif
