// Rows of a separable blur, and of the weighted sum that makes an unsharp mask of it.
// An estimate in whole numbers settles nearly every pixel; the double sum settles the rest.
// SPDX-License-Identifier: Apache-2.0
//
// The plain form sums doubles in the order of the taps. What reaches the page is that sum's whole
// part only, so an estimate with a known bound gives the same level unless a rounding boundary lies
// within the bound; then, and only then, the sum is made as the plain form makes it. The bound is
// derived in tattoo/blur.cc.
//
// A kernel is the same from both ends, so levels are added in pairs first. Two pairs go into one
// multiplication of 16-bit lanes that adds their products to 32 bits: the mask's eleven taps take
// three. Across, tap k is the same row k pixels on; down, it is another row. One loop does both.
//
// About 4 instructions a pixel with 4 ints a vector, 2 with 8, and one pixel in 120 of noise to be
// summed again; on flat paper and inside strokes none. Rows are padded: a narrow page costs 32
// pixels a row.
#include "lanes/lanes.h"
#include "tattoo/numeric.h"
#include "tattoo/rows.h"

namespace KORVEL_TARGET {

namespace {

constexpr size_t kWords = kLanesOf<Words>;

// As the plain form sums and rounds it.
uint16_t exactLevel(const BlurWeights& weights, const uint16_t* const* rows, size_t x) {
  double acc = 0.0;
  for (size_t k = 0; k < weights.count; ++k) {
    acc = static_cast<double>(rows[k][x]) * weights.taps[k] + acc;
  }
  return static_cast<uint8_t>(my_round(static_cast<float>(acc)));  // low 8 bits, no clamp
}

// Taps k and its mirror image; the middle one, and what fills up its pair, have none.
KORVEL_INLINE SignedWords pairSum(const uint16_t* const* rows, size_t count, size_t k, size_t x) {
  const size_t middle = count / 2;
  const auto first = load<SignedWords>((k <= middle ? rows[k] : rows[count]) + x);
  return k < middle ? first + load<SignedWords>(rows[count - 1 - k] + x) : first;
}

// Two words' worth of lanes, `kLanes` pixels. A count known when compiled unrolls the taps.
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
      const auto both = interleaveLow(splat<SignedWords>(weights.steps[k]),
                                      splat<SignedWords>(weights.steps[k + 1]));
      for (size_t half = 0; half < 2; ++half) {
        const SignedWords a = pairSum(rows, taps, k, x + half * kWords);
        const SignedWords b = pairSum(rows, taps, k + 1, x + half * kWords);
        sums[2 * half] += multiplyPairs(interleaveLow(a, b), both);
        sums[2 * half + 1] += multiplyPairs(interleaveHigh(a, b), both);
      }
    }
    Ints open[4];
    for (size_t i = 0; i < 4; ++i) open[i] = as<Ints>((sums[i] & remainder) < doubt);
    for (size_t half = 0; half < 2; ++half) {
      store(to + x + half * kWords,
            packInts(sums[2 * half] >> weights.shift, sums[2 * half + 1] >> weights.shift));
    }
    if (anySet(as<Bytes>(open[0] | open[1] | open[2] | open[3]))) {
      uint16_t isOpen[2 * kWords];
      store(isOpen, packInts(open[0], open[1]));
      store(isOpen + kWords, packInts(open[2], open[3]));
      for (size_t i = 0; i < 2 * kWords; ++i) {
        if (isOpen[i] != 0) to[x + i] = exactLevel(weights, rows, x + i);
      }
    }
  }
}

constexpr size_t kMaskTaps = 11;  // of the stencil halftones' mask

// A sum of whole multiples is a whole number that float holds, so words do.
constexpr float kMostInWords = 64.0f;

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

// 16 words from each of two places, so that packing leaves bytes in their order.
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

void widen(const uint8_t* from, size_t count, uint16_t* to) {
  for (size_t x = 0; x < count; ++x) to[x] = from[x];
}

void narrow(const uint16_t* from, size_t count, uint8_t* to) {
  for (size_t x = 0; x < count; ++x) to[x] = static_cast<uint8_t>(from[x]);
}

}  // namespace KORVEL_TARGET
