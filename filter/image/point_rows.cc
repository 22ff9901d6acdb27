// Row kernels in which no pixel depends on another one.
// They work vector by vector; a comparison gives lanes of all ones or zero, of which the bits are
// kept. A vector costs a few instructions, so memory sets the pace. The rest of a row, or a whole
// narrow row, is copied to one more vector that is padded with zeros.
// SPDX-License-Identifier: Apache-2.0
#include "image/image_kernels.h"
#include "lanes/lanes.h"

namespace KORVEL_TARGET {

namespace {

constexpr size_t kBitBytes = kLanes / 8;  // bytes of a vector's bits

KORVEL_INLINE size_t bytesFor(size_t bits) { return (bits + 7) / 8; }

// `count` bytes, fewer than a vector has; the other lanes are zero.
KORVEL_INLINE Bytes loadPart(const uint8_t* from, size_t count) {
  uint8_t bytes[kLanes] = {};
  __builtin_memcpy(bytes, from, count);
  return load<Bytes>(bytes);
}

KORVEL_INLINE void storePart(uint8_t* to, Bytes vector, size_t count) {
  uint8_t bytes[kLanes];
  store(bytes, vector);
  __builtin_memcpy(to, bytes, count);
}

KORVEL_INLINE void storePartBits(uint8_t* to, Bytes mask, size_t count) {
  uint8_t bits[kBitBytes];
  storeBits(bits, mask);
  __builtin_memcpy(to, bits, bytesFor(count));
}

// Stores the bits of `test`, which gives a mask for a vector of pixels, and zero for zeros.
template <class Test>
KORVEL_INLINE void storeBitsOf(Test test, const uint8_t* from, size_t count, uint8_t* to) {
  size_t x = 0;
  for (; x + 8 * kLanes <= count; x += 8 * kLanes) {
    Bytes masks[8];
    for (size_t i = 0; i < 8; ++i) masks[i] = test(load<Bytes>(from + x + i * kLanes));
    storeBits(to + x / 8, masks);
  }
  for (; x + kLanes <= count; x += kLanes) storeBits(to + x / 8, test(load<Bytes>(from + x)));
  if (x != count) storePartBits(to + x / 8, test(loadPart(from + x, count - x)), count - x);
}

// Compares bytes with a threshold for each column, four in turn. Processors compare signed bytes;
// with the top bit inverted the order is the same.
struct IsAbove {
  SignedBytes limits;

  KORVEL_INLINE Bytes operator()(Bytes pixels) const {
    return as<Bytes>(as<SignedBytes>(pixels ^ 0x80) > limits);
  }
};

KORVEL_INLINE IsAbove above(const uint8_t* thresholds) {
  int32_t four = 0;
  __builtin_memcpy(&four, thresholds, sizeof four);
  return IsAbove{as<SignedBytes>(as<Bytes>(splat<Ints>(four)) ^ 0x80)};
}

void bitsAbove(const uint8_t* from, size_t count, const uint8_t* thresholds, uint8_t* to) {
  storeBitsOf(above(thresholds), from, count, to);
}

void bytesAbove(const uint8_t* from, size_t count, const uint8_t* thresholds, uint8_t* to) {
  const IsAbove isAbove = above(thresholds);
  size_t x = 0;
  for (; x + kLanes <= count; x += kLanes) store(to + x, isAbove(load<Bytes>(from + x)) & 1);
  if (x != count) storePart(to + x, isAbove(loadPart(from + x, count - x)) & 1, count - x);
}

void bitsOfInk(const uint8_t* from, size_t count, uint8_t* to) {
  storeBitsOf([](Bytes pixels) { return as<Bytes>(pixels != 0); }, from, count, to);
}

void bytesOfBits(const uint8_t* from, size_t count, uint8_t* to) {
  size_t x = 0;
  for (; x + kLanes <= count; x += kLanes) store(to + x, loadBits(from + x / 8) & 1);
  if (x == count) return;
  uint8_t bits[kBitBytes] = {};
  __builtin_memcpy(bits, from + x / 8, bytesFor(count - x));
  storePart(to + x, loadBits(bits) & 1, count - x);
}

// Applies `change` to each vector of bytes.
template <class Change>
KORVEL_INLINE void changeBytes(Change change, uint8_t* bytes, size_t count) {
  size_t x = 0;
  for (; x + kLanes <= count; x += kLanes) store(bytes + x, change(load<Bytes>(bytes + x)));
  if (x != count) storePart(bytes + x, change(loadPart(bytes + x, count - x)), count - x);
}

void raiseOnes(uint8_t* bytes, size_t count, bool complemented) {
  const auto flip = splat<Bytes>(complemented ? 0xFF : 0);
  changeBytes([flip](Bytes some) { return (some | as<Bytes>(some == 1)) ^ flip; }, bytes, count);
}

void complement(uint8_t* bytes, size_t count) {
  changeBytes([](Bytes some) { return ~some; }, bytes, count);
}

void lookUp(uint8_t* bytes, size_t count, const uint8_t* table) {
  size_t x = 0;
  for (; x + 8 <= count; x += 8) {
    uint64_t eight = 0;
    __builtin_memcpy(&eight, bytes + x, 8);
    uint64_t found = 0;
    for (int i = 0; i < 64; i += 8) found |= uint64_t{table[eight >> i & 0xFF]} << i;
    __builtin_memcpy(bytes + x, &found, 8);
  }
  for (; x < count; ++x) bytes[x] = table[bytes[x]];
}

void reverseRow(const uint8_t* from, size_t count, uint8_t* to) {
  size_t x = 0;
  for (; x + kLanes <= count; x += kLanes) {
    store(to + count - x - kLanes, reverse(load<Bytes>(from + x)));
  }
  if (x == count) return;
  if (count >= kLanes) {
    store(to, reverse(load<Bytes>(from + count - kLanes)));  // some pixels a second time
    return;
  }
  for (; x < count; ++x) to[count - 1 - x] = from[x];
}

}  // namespace

extern const ImageKernels kImageKernels;
const ImageKernels kImageKernels = {
    bitsAbove, bytesAbove, bitsOfInk, bytesOfBits, raiseOnes, complement, lookUp, reverseRow,
};

}  // namespace KORVEL_TARGET
