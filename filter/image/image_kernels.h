// The kernels of the palette image for single rows, one set for each SIMD target. They allocate
// nothing. On every target they give the bytes of the reference implementation
// (cximage_reference.h). SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_IMAGE_IMAGE_KERNELS_H
#define KORVEL_IMAGE_IMAGE_KERNELS_H

#include <cstddef>
#include <cstdint>

#include "lanes/target.h"

// Counts are pixels. Nothing outside the counted pixels is read or written; `from` and `to` do not
// overlap unless stated otherwise. Bits: the leftmost pixel is the top bit, rows start and end on a
// byte, unused bits are written as zero and ignored when read.
struct ImageKernels {
  // Sets bit x where from[x] > thresholds[x % 4].
  void (*bitsAbove)(const uint8_t* from, size_t count, const uint8_t* thresholds, uint8_t* to);

  // Writes 1 where from[x] > thresholds[x % 4], else 0.
  void (*bytesAbove)(const uint8_t* from, size_t count, const uint8_t* thresholds, uint8_t* to);

  // Sets the bit of every byte that is not 0. `to` may be at or before `from`: the write position
  // never passes the read position.
  void (*bitsOfInk)(const uint8_t* from, size_t count, uint8_t* to);

  // Bits to bytes of 0 and 1. The bits may be the last bytes of the row that is written: the write
  // position never passes the read position.
  void (*bytesOfBits)(const uint8_t* from, size_t count, uint8_t* to);

  // Raises every 1 to 255 in place, then complements every byte if `complemented`.
  void (*raiseOnes)(uint8_t* bytes, size_t count, bool complemented);

  // Complements every byte in place.
  void (*complement)(uint8_t* bytes, size_t count);

  // Replaces every byte v by table[v]; `table` has 256 entries.
  void (*lookUp)(uint8_t* bytes, size_t count, const uint8_t* table);

  // Reverses the order of the bytes.
  void (*reverse)(const uint8_t* from, size_t count, uint8_t* to);
};

const ImageKernels& imageKernels(Target target);  // of an available target
const ImageKernels& imageKernels();               // of the chosen target

#endif
