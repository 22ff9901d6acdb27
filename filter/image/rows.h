// Rows of grey bytes and of bits, as fast as the machine goes: plain kernels, nothing allocated.
// Each does what its plain form does (*_literal.cc), byte for byte, on every target.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_IMAGE_ROWS_H
#define KORVEL_IMAGE_ROWS_H

#include <cstddef>
#include <cstdint>

#include "lanes/target.h"

// Counts are pixels. Nothing outside the counted pixels is read or written; `from` and `to` do not
// overlap unless it says so. Bits: leftmost pixel in the top bit, rows start and end on a byte,
// unused bits are written as zero and read as anything.
struct ImageRows {
  // Sets bit x where from[x] > thresholds[x % 4].
  void (*bitsAbove)(const uint8_t* from, size_t count, const uint8_t* thresholds, uint8_t* to);

  // Sets the bit of every byte that is not 0. `to` may be `from` or lie before it: the write
  // position never passes the read position.
  void (*bitsOfInk)(const uint8_t* from, size_t count, uint8_t* to);

  // Bits to bytes of 0 and 1.
  void (*bytesOfBits)(const uint8_t* from, size_t count, uint8_t* to);

  // Raises every 1 to 255 where it lies; then complements every byte when told to.
  void (*raiseOnes)(uint8_t* bytes, size_t count, bool complemented);

  // Complements every byte where it lies.
  void (*complement)(uint8_t* bytes, size_t count);

  // Replaces every byte v by table[v]; `table` has 256 entries.
  void (*lookUp)(uint8_t* bytes, size_t count, const uint8_t* table);

  // Reverses the order of the bytes.
  void (*reverse)(const uint8_t* from, size_t count, uint8_t* to);
};

const ImageRows& imageRows(Target target);  // an available one
const ImageRows& imageRows();               // the chosen target's

#endif
