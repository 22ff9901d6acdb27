// The kernels of the unsharp mask: tone curve, separable blur, weighted sum.
// An estimate in whole numbers decides nearly every pixel of a blur, a sum of doubles the rest.
// SPDX-License-Identifier: Apache-2.0
//
// The reference implementation sums doubles in the order of the taps. Only the whole part of that
// sum reaches the page, so an estimate with a known bound gives the same level unless a rounding
// boundary is within the bound. Only then the doubles are summed as in the reference. The bound is
// derived in tattoo/blur.cc.
//
// A kernel is symmetric, so levels are added in pairs first. One multiplication of 16-bit lanes
// takes two pairs and adds their products in 32 bits: the mask's eleven taps need three. Across,
// tap k is the same row k pixels further on; down, it is another row. One loop does both.
//
// A pass takes about 3 instructions per pixel with 8 ints per vector, 9 with 4. In noise, one pixel
// in 120 is summed again, which adds two; on flat paper and inside strokes none is. Rows are
// padded, so a narrow page costs 32 pixels per row.
#include "lanes/lanes.h"
#include "tattoo/numeric.h"
#include "tattoo/tattoo_kernels.h"

namespace KORVEL_TARGET {

namespace {

constexpr size_t kWords = kLanesOf<Words>;

static_assert(kWordsAtOnce % (2 * kWords) == 0, "blurRow reads and writes whole steps of words");
static_assert(kWordsAtOnce % kLanes == 0, "weighRow reads whole vectors of bytes");

// The reference implementation's sum and rounding.
uint16_t exactLevel(const BlurWeights& weights, const uint16_t* const* rows, size_t x) {
  double acc = 0.0;
  for (size_t k = 0; k < weights.count; ++k) {
    acc = static_cast<double>(rows[k][x]) * weights.taps[k] + acc;
  }
  return static_cast<uint8_t>(my_round(static_cast<float>(acc)));  // low 8 bits, no clamp
}

// Sums the levels that the mask marks with the exact weights. There are few of them.
[[gnu::noinline]] void settle(const BlurWeights& weights, const uint16_t* const* rows, size_t x,
                              SignedWords open, uint16_t* to) {
  constexpr size_t kFew = sizeof(uint64_t) / sizeof(uint16_t);
  uint16_t isOpen[kWords];
  store(isOpen, open);
  for (size_t i = 0; i < kWords; i += kFew) {
    uint64_t few;
    __builtin_memcpy(&few, isOpen + i, sizeof few);
    if (few == 0) continue;
    for (size_t k = i; k < i + kFew; ++k) {
      if (isOpen[k] != 0) to[k] = exactLevel(weights, rows, x + k);
    }
  }
}

// Tap k and its mirror image, which neither the middle tap nor the one that completes its pair has.
KORVEL_INLINE SignedWords pairSum(const uint16_t* const* rows, size_t count, size_t k, size_t x) {
  const size_t middle = count / 2;
  const auto first = load<SignedWords>((k <= middle ? rows[k] : rows[count]) + x);
  return k < middle ? first + load<SignedWords>(rows[count - 1 - k] + x) : first;
}

// The steps of taps k and k + 1 in turns.
KORVEL_INLINE SignedWords twoSteps(const BlurWeights& weights, size_t k) {
  int32_t both;
  __builtin_memcpy(&both, weights.steps + k, sizeof both);
  return as<SignedWords>(splat<Ints>(both));
}

// Two vectors of words at a time. A tap count that is known at compile time unrolls the loop.
template <size_t kCount>
KORVEL_INLINE void blurRow(const BlurWeights& given, const uint16_t* const* rows, size_t count,
                           uint16_t* to) {
  const BlurWeights weights = given;
  const size_t taps = kCount != 0 ? kCount : weights.count;
  const Ints remainder = splat<Ints>((1 << weights.shift) - 1);
  const Ints doubt = splat<Ints>(weights.doubt);
  for (size_t x = 0; x < count; x += 2 * kWords) {
    Ints sums[4];
    for (Ints& sum : sums) sum = splat<Ints>(weights.rounding);
    for (size_t k = 0; k <= taps / 2; k += 2) {
      const SignedWords steps = twoSteps(weights, k);
      for (size_t half = 0; half < 2; ++half) {
        const SignedWords a = pairSum(rows, taps, k, x + half * kWords);
        const SignedWords b = pairSum(rows, taps, k + 1, x + half * kWords);
        sums[2 * half] += multiplyPairs(interleaveLow(a, b), steps);
        sums[2 * half + 1] += multiplyPairs(interleaveHigh(a, b), steps);
      }
    }
    for (size_t half = 0; half < 2; ++half) {
      const Ints* sum = sums + 2 * half;
      uint16_t* levels = to + x + half * kWords;
      store(levels, packInts(sum[0] >> weights.shift, sum[1] >> weights.shift));
      const auto low = as<Ints>((sum[0] & remainder) < doubt);
      const auto high = as<Ints>((sum[1] & remainder) < doubt);
      if (anySet(as<Bytes>(low | high))) {
        settle(weights, rows, x + half * kWords, packInts(low, high), levels);
      }
    }
  }
}

// Up to this factor, a sum of whole multiples of levels fits in words and is exact in float too.
constexpr float kMostInWords = 64.0f;
static_assert(2 * 255 * kMostInWords <= 32767.0f);

bool fitsInWords(float factor) {
  if (!(factor >= -kMostInWords && factor <= kMostInWords)) return false;
  return static_cast<float>(static_cast<int>(factor)) == factor;
}

KORVEL_INLINE Ints rounded(Floats x) {
  return toInts(x + (x >= 0.0f ? splat<Floats>(0.5f) : splat<Floats>(-0.5f)));
}

struct WholeSum {
  SignedWords alpha;
  SignedWords beta;

  KORVEL_INLINE SignedWords operator()(SignedWords own, SignedWords blurred) const {
    return own * alpha + blurred * beta;
  }
};

struct FloatSum {
  Floats alpha;
  Floats beta;

  KORVEL_INLINE Ints half(Ints own, Ints blurred) const {
    return rounded(toFloats(own) * alpha + toFloats(blurred) * beta);
  }
  KORVEL_INLINE SignedWords operator()(SignedWords own, SignedWords blurred) const {
    return packInts(half(widenLow(own), widenLow(blurred)),
                    half(widenHigh(own), widenHigh(blurred)));
  }
};

// 8 words from each of two places, 16 apart, so that packing leaves bytes in their order.
KORVEL_INLINE SignedWords loadWords(const uint16_t* from) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(from);
  return as<SignedWords>(loadHalves(bytes, bytes + 32));
}

template <class Sum>
KORVEL_INLINE void weighRow(const uint16_t* own, const uint16_t* blurred, size_t count, Sum sum,
                            uint8_t* to) {
  for (size_t x = 0; x < count; x += kLanes) {
    const SignedWords low = sum(loadWords(own + x), loadWords(blurred + x));
    const SignedWords high = sum(loadWords(own + x + 8), loadWords(blurred + x + 8));
    const Bytes levels = packWords(low, high);
    const size_t left = count - x;
    if (left >= kLanes) {
      store(to + x, levels);
    } else {
      __builtin_memcpy(to + x, &levels, left);
    }
  }
}

}  // namespace

void blur(const BlurWeights& weights, const uint16_t* const* rows, size_t count, uint16_t* to) {
  if (weights.steps == nullptr) {
    for (size_t x = 0; x < count; ++x) to[x] = exactLevel(weights, rows, x);
  } else if (weights.count == kMaskTaps) {
    blurRow<kMaskTaps>(weights, rows, count, to);
  } else {
    blurRow<0>(weights, rows, count, to);
  }
}

void weigh(const uint16_t* own, const uint16_t* blurred, size_t count, float alpha, float beta,
           uint8_t* to) {
  if (fitsInWords(alpha) && fitsInWords(beta)) {
    const WholeSum sum = {splat<SignedWords>(alpha), splat<SignedWords>(beta)};
    weighRow(own, blurred, count, sum, to);
  } else {
    weighRow(own, blurred, count, FloatSum{splat<Floats>(alpha), splat<Floats>(beta)}, to);
  }
}

// Pixels equal to their neighbours, such as paper, are looked up eight at a time.
void tone(const uint8_t* from, size_t count, const uint8_t* levels, uint16_t* to) {
  constexpr size_t kAtOnce = sizeof(uint64_t);
  constexpr uint64_t kEachByte = 0x0101010101010101;
  size_t x = 0;
  for (; x + kAtOnce <= count; x += kAtOnce) {
    uint64_t eight;
    __builtin_memcpy(&eight, from + x, kAtOnce);
    if (eight == kEachByte * (eight & 0xFF)) {
      const uint64_t four = 0x0001000100010001 * uint64_t{levels[eight & 0xFF]};
      __builtin_memcpy(to + x, &four, sizeof four);
      __builtin_memcpy(to + x + kAtOnce / 2, &four, sizeof four);
      continue;
    }
    for (size_t i = 0; i < kAtOnce; ++i) to[x + i] = levels[from[x + i]];
  }
  for (; x < count; ++x) to[x] = levels[from[x]];
}

}  // namespace KORVEL_TARGET
