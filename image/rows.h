// Rows of grey bytes and of bits, as fast as the machine goes: plain kernels, nothing allocated.
// Each does what its plain form does (*_literal.cc), byte for byte, on every target.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_IMAGE_ROWS_H
#define KORVEL_IMAGE_ROWS_H

#include <cstddef>
#include <cstdint>

#include "lanes/target.h"

// Counts are pixels. Nothing outside the counted bytes is read or written; `from` and `to` do not
// overlap unless it says so.
struct ImageRows {
  // Reverses the order of the bytes.
  void (*reverse)(const uint8_t* from, size_t count, uint8_t* to);
};

const ImageRows& imageRows(Target target);  // an available one
const ImageRows& imageRows();               // the chosen target's

#endif
