// Each vector operation against scalar arithmetic, lane by lane.
// Compiled once for each target, so nothing of the standard library is used here.
// SPDX-License-Identifier: Apache-2.0
#include "tests/filter/lanes/lane_checks.h"

#include "lanes/lanes.h"

namespace KORVEL_TARGET {

namespace {

// Lane i of a vector of the numbers from `first` on, `step` apart.
template <class Vector>
Vector ramp(int first, int step) {
  Vector vector{};
  for (size_t i = 0; i < kLanesOf<Vector>; ++i) {
    vector[i] = static_cast<LaneOf<Vector>>(first + static_cast<int>(i) * step);
  }
  return vector;
}

int held(int value, int low, int high) { return value < low ? low : value > high ? high : value; }

// Which lane of a, then b, is in lane i of an interleaved vector of `size` byte lanes.
template <class Vector>
bool interleaves() {
  constexpr size_t kHalf = 16 / sizeof(Vector{}[0]);
  const auto a = ramp<Vector>(0, 1);
  const auto b = ramp<Vector>(64, 1);
  const Vector low = interleaveLow(a, b);
  const Vector high = interleaveHigh(a, b);
  for (size_t i = 0; i < kLanesOf<Vector>; ++i) {
    const size_t from = i / kHalf * kHalf + i % kHalf / 2;
    const Vector& source = i % 2 == 0 ? a : b;
    if (low[i] != source[from] || high[i] != source[from + kHalf / 2]) return false;
  }
  return true;
}

bool loadsHalves() {
  uint8_t low[16];
  uint8_t high[16];
  for (int i = 0; i < 16; ++i) {
    low[i] = static_cast<uint8_t>(i);
    high[i] = static_cast<uint8_t>(100 + i);
  }
  const Bytes both = loadHalves(low, high);
  for (size_t i = 0; i < kLanes; ++i) {
    if (both[i] != (i < 16 ? low[i] : high[i - 16])) return false;
  }
  return true;
}

bool shiftsUp() {
  const auto before = ramp<Ints>(100, 1);
  const Ints shifted = shiftUp(before, ramp<Ints>(3, 5));
  for (size_t i = 0; i < kLanesOf<Ints>; ++i) {
    const int want = i == 0 ? before[kLanesOf<Ints> - 1] : 3 + 5 * (static_cast<int>(i) - 1);
    if (shifted[i] != want) return false;
  }
  return true;
}

bool loadsEights() {
  uint8_t bytes[16];
  for (int i = 0; i < 16; ++i) bytes[i] = static_cast<uint8_t>(1 + i);
  const Bytes both = loadEights(bytes, bytes + 8);
  for (size_t i = 0; i < kLanes; ++i) {
    const size_t want = i % 16 >= 8 ? 0 : 1 + i % 16 + (i < 16 ? 0 : 8);
    if (both[i] != want) return false;
  }
  return true;
}

bool negatesWhereTold() {
  for (int first = -128; first <= 127; ++first) {
    const auto numbers = ramp<SignedBytes>(first, 1);
    Bytes mask{};
    for (size_t i = 0; i < kLanes; i += 2) mask[i] = 0xFF;
    const SignedBytes have = negatedWhere(mask, numbers);
    for (size_t i = 0; i < kLanes; ++i) {
      const int want = i % 2 == 0 ? -numbers[i] : numbers[i];
      if (have[i] != static_cast<int8_t>(want)) return false;
    }
  }
  return true;
}

bool reversesBytes() {
  const Bytes turned = reverse(ramp<Bytes>(3, 5));
  for (size_t i = 0; i < kLanes; ++i) {
    if (turned[i] != static_cast<uint8_t>(3 + 5 * static_cast<int>(kLanes - 1 - i))) return false;
  }
  return true;
}

bool addsSaturated() {
  for (int a = -128; a <= 127; ++a) {
    for (int b = -128; b <= 127; ++b) {
      const SignedBytes sum = addSaturated(splat<SignedBytes>(a), splat<SignedBytes>(b));
      for (size_t i = 0; i < kLanes; ++i) {
        if (sum[i] != held(a + b, -128, 127)) return false;
      }
    }
  }
  return true;
}

bool multipliesHigh() {
  for (uint32_t a = 0; a < 65536; a += 17) {
    for (uint32_t b = 0; b < 65536; b += 1021) {
      const Words product = multiplyHigh(splat<Words>(a), splat<Words>(b));
      for (size_t i = 0; i < kLanesOf<Words>; ++i) {
        if (product[i] != (a * b) >> 16) return false;
      }
    }
  }
  return true;
}

bool multipliesPairs() {
  for (int a = -32768; a <= 32767; a += 77) {
    for (int b = -32767; b <= 32767; b += 4369) {
      const auto left = ramp<SignedWords>(a, 11);  // wraps
      const auto right = ramp<SignedWords>(b, -7);
      const Ints sums = multiplyPairs(left, right);
      for (size_t i = 0; i < kLanesOf<Ints>; ++i) {
        const int want = left[2 * i] * right[2 * i] + left[2 * i + 1] * right[2 * i + 1];
        if (sums[i] != want) return false;
      }
    }
  }
  return true;
}

bool findsAnySet() {
  if (anySet(Bytes{})) return false;
  for (size_t i = 0; i < kLanes; ++i) {
    Bytes mask{};
    mask[i] = 0xFF;
    if (!anySet(mask)) return false;
  }
  return true;
}

bool widensAndPacksBytes() {
  const auto bytes = ramp<Bytes>(250, 7);
  const Words low = widenLow(bytes);
  const Words high = widenHigh(bytes);
  const Bytes back = packWords(as<SignedWords>(low), as<SignedWords>(high));
  for (size_t i = 0; i < kLanes; ++i) {
    const size_t word = i / 16 * 8 + i % 8;
    if ((i % 16 < 8 ? low : high)[word] != bytes[i] || back[i] != bytes[i]) return false;
  }
  return true;
}

bool packsWordsHeld() {
  for (int value = -32768; value <= 32767; ++value) {
    const auto words = splat<SignedWords>(value);
    const Bytes bytes = packWords(words, words);
    for (size_t i = 0; i < kLanes; ++i) {
      if (bytes[i] != held(value, 0, 255)) return false;
    }
  }
  return true;
}

bool widensAndPacksInts() {
  const auto words = ramp<SignedWords>(5, 2000);
  const Ints low = widenLow(words);
  const Ints high = widenHigh(words);
  const SignedWords back = packInts(low, high);
  const SignedWords clipped = packInts(splat<Ints>(-70000), splat<Ints>(70000));
  for (size_t i = 0; i < kLanesOf<Words>; ++i) {
    const size_t at = i / 8 * 4 + i % 4;
    if ((i % 8 < 4 ? low : high)[at] != words[i] || back[i] != words[i]) return false;
    if (clipped[i] != (i % 8 < 4 ? -32768 : 32767)) return false;
  }
  return true;
}

bool convertsFloats() {
  const auto ints = ramp<Ints>(-300, 97);
  const Floats floats = toFloats(ints);
  const Ints truncated = toInts(floats + 0.75f);
  for (size_t i = 0; i < kLanesOf<Ints>; ++i) {
    const int value = ints[i];
    if (floats[i] != static_cast<float>(value)) return false;
    if (truncated[i] != (value < 0 ? value + 1 : value)) return false;
  }
  return true;
}

bool storesAndLoadsBits() {
  for (unsigned int pattern = 0; pattern < 65536; pattern += 3) {
    Bytes mask{};
    for (size_t i = 0; i < kLanes; ++i) {
      mask[i] = (pattern >> (i % 16) & 1u) != 0 ? uint8_t{0xFF} : uint8_t{0};
    }
    uint8_t bits[kLanes / 8];
    storeBits(bits, mask);
    const Bytes back = loadBits(bits);
    for (size_t i = 0; i < kLanes; ++i) {
      const bool set = (bits[i / 8] & 128u >> (i % 8)) != 0;
      if (set != (mask[i] != 0) || back[i] != mask[i]) return false;
    }
  }
  return true;
}

// Eight masks that differ in every place: bit i of mask k is set where i * 7 + k * 5 has
// its third bit set.
bool storesBitsOfEightMasks() {
  Bytes masks[8]{};
  for (size_t k = 0; k < 8; ++k) {
    for (size_t i = 0; i < kLanes; ++i) {
      masks[k][i] = ((i * 7 + k * 5) & 4) != 0 ? uint8_t{0xFF} : uint8_t{0};
    }
  }
  uint8_t bits[kLanes];
  storeBits(bits, masks);
  for (size_t x = 0; x < 8 * kLanes; ++x) {
    const bool set = (bits[x / 8] & 128u >> (x % 8)) != 0;
    if (set != (masks[x / kLanes][x % kLanes] != 0)) return false;
  }
  return true;
}

constexpr LaneCheck kChecks[] = {
    {"interleave bytes", interleaves<Bytes>},
    {"interleave words", interleaves<Words>},
    {"interleave ints", interleaves<Ints>},
    {"interleave longs", interleaves<Longs>},
    {"load halves", loadsHalves},
    {"load eights", loadsEights},
    {"negated where", negatesWhereTold},
    {"shift up", shiftsUp},
    {"reverse", reversesBytes},
    {"add saturated", addsSaturated},
    {"multiply high", multipliesHigh},
    {"multiply pairs", multipliesPairs},
    {"any set", findsAnySet},
    {"widen and pack bytes", widensAndPacksBytes},
    {"pack words held within bytes", packsWordsHeld},
    {"widen and pack ints", widensAndPacksInts},
    {"convert floats", convertsFloats},
    {"store and load bits", storesAndLoadsBits},
    {"store the bits of eight masks", storesBitsOfEightMasks},
};

}  // namespace

extern const LaneChecks kLaneChecks;
const LaneChecks kLaneChecks = {kChecks, sizeof kChecks / sizeof kChecks[0]};

}  // namespace KORVEL_TARGET
