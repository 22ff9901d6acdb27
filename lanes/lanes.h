// Vectors of 16 or 32 bytes and the few operations on them that the language lacks.
// Kernels are written against it once and compiled once for each target (lanes/target.h).
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_LANES_LANES_H
#define KORVEL_LANES_LANES_H

#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <immintrin.h>
#elif defined(__ARM_NEON) && defined(__aarch64__)
#include <arm_neon.h>
#endif

// The build names the target whose namespace the kernels live in; a header checked alone is
// portable.
#ifndef KORVEL_TARGET
#define KORVEL_TARGET portable
#define KORVEL_TARGET_IS_PORTABLE 1
#endif
#ifndef KORVEL_LANES
#define KORVEL_LANES 16
#endif

// Everything here has the target's namespace and is inlined: a function compiled for a wide
// machine must never stand in for one of the same name on a narrow machine (WideObjects).
#define KORVEL_INLINE [[gnu::always_inline]] inline

namespace KORVEL_TARGET {

constexpr size_t kLanes = KORVEL_LANES;  // bytes of a vector

// + - * & | ^ ~ << >> work lane by lane, comparisons give lanes of all ones or zero, and
// `mask ? a : b` chooses by lane. The element types are those of the language.
using Bytes = uint8_t __attribute__((vector_size(KORVEL_LANES)));
using SignedBytes = int8_t __attribute__((vector_size(KORVEL_LANES)));
using Words = uint16_t __attribute__((vector_size(KORVEL_LANES)));
using SignedWords = int16_t __attribute__((vector_size(KORVEL_LANES)));
using Ints = int32_t __attribute__((vector_size(KORVEL_LANES)));
using Longs = int64_t __attribute__((vector_size(KORVEL_LANES)));
using Floats = float __attribute__((vector_size(KORVEL_LANES)));
using Doubles = double __attribute__((vector_size(KORVEL_LANES)));

template <class Vector>
constexpr size_t kLanesOf = sizeof(Vector) / sizeof(Vector{}[0]);

template <class Value>
struct Plain {
  using Type = Value;
};

template <class Value>
struct Plain<Value&> : Plain<Value> {};

template <class Vector>
using LaneOf = typename Plain<decltype(Vector{}[0])>::Type;

// Any address, aligned or not.
template <class Vector>
KORVEL_INLINE Vector load(const void* from) {
  Vector vector;
  __builtin_memcpy(&vector, from, sizeof vector);
  return vector;
}

template <class Vector>
KORVEL_INLINE void store(void* to, Vector vector) {
  __builtin_memcpy(to, &vector, sizeof vector);
}

// 16 bytes from `low`; a 32-byte vector takes its upper half from `high`.
KORVEL_INLINE Bytes loadHalves(const uint8_t* low, [[maybe_unused]] const uint8_t* high) {
  Bytes vector;
  __builtin_memcpy(&vector, low, 16);
  if constexpr (kLanes == 32) {
    __builtin_memcpy(reinterpret_cast<uint8_t*>(&vector) + 16, high, 16);
  }
  return vector;
}

// 8 bytes from `low` in the lower part of the first half, of a 32-byte vector 8 bytes from `high`
// in the lower part of the second; the upper parts are zero.
KORVEL_INLINE Bytes loadEights(const uint8_t* low, [[maybe_unused]] const uint8_t* high) {
  Longs vector{};
  int64_t eight;
  __builtin_memcpy(&eight, low, 8);
  vector[0] = eight;
  if constexpr (kLanes == 32) {
    __builtin_memcpy(&eight, high, 8);
    vector[kLanesOf<Longs> / 2] = eight;
  }
  return reinterpret_cast<Bytes>(vector);
}

// The same value in every lane.
template <class Vector, class Value>
KORVEL_INLINE Vector splat(Value value) {
  return Vector{} + static_cast<LaneOf<Vector>>(value);
}

// The same bits as lanes of another type.
template <class To, class From>
KORVEL_INLINE To as(From vector) {
  static_assert(sizeof(To) == sizeof(From));
  return reinterpret_cast<To>(vector);
}

namespace shuffles {

template <size_t... I>
struct Indexes {};

template <size_t N, size_t... I>
struct UpTo : UpTo<N - 1, N - 1, I...> {};

template <size_t... I>
struct UpTo<0, I...> {
  using Type = Indexes<I...>;
};

// Lane i of two vectors interleaved within each 16-byte half, from its lower or upper part.
template <class Vector>
constexpr size_t interleaved(size_t i, bool upper) {
  constexpr size_t kHalf = 16 / sizeof(Vector{}[0]);
  const size_t inHalf = i % kHalf;
  const size_t from = i - inHalf + inHalf / 2 + (upper ? kHalf / 2 : 0);
  return from + (inHalf % 2 == 0 ? 0 : kLanesOf<Vector>);
}

template <bool kUpper, class Vector, size_t... I>
KORVEL_INLINE Vector interleave(Vector a, Vector b, Indexes<I...> /*lanes*/) {
  return __builtin_shufflevector(a, b, interleaved<Vector>(I, kUpper)...);
}

template <class Vector, size_t... I>
KORVEL_INLINE Vector reversed(Vector a, Indexes<I...> /*lanes*/) {
  return __builtin_shufflevector(a, a, (sizeof...(I) - 1 - I)...);
}

}  // namespace shuffles

// a0 b0 a1 b1 ... of the lower (upper) part of each 16-byte half: a transposition's step.
template <class Vector>
KORVEL_INLINE Vector interleaveLow(Vector a, Vector b) {
  return shuffles::interleave<false>(a, b, typename shuffles::UpTo<kLanesOf<Vector>>::Type{});
}

template <class Vector>
KORVEL_INLINE Vector interleaveHigh(Vector a, Vector b) {
  return shuffles::interleave<true>(a, b, typename shuffles::UpTo<kLanesOf<Vector>>::Type{});
}

// Last lane first.
KORVEL_INLINE Bytes reverse(Bytes bytes) {
#if defined(__SSE2__) && !defined(__SSSE3__)
  // Bytes swapped in words, then words reversed: there is no byte shuffle here.
  const auto words = as<Words>(bytes);
  const Words swapped = (words << 8) | (words >> 8);
  return as<Bytes>(shuffles::reversed(swapped, shuffles::UpTo<kLanesOf<Words>>::Type{}));
#else
  return shuffles::reversed(bytes, shuffles::UpTo<kLanes>::Type{});
#endif
}

// Sum held within -128..127.
KORVEL_INLINE SignedBytes addSaturated(SignedBytes a, SignedBytes b) {
#if defined(KORVEL_TARGET_IS_PORTABLE)
  SignedBytes sum{};
  for (size_t i = 0; i < kLanes; ++i) {
    const int exact = a[i] + b[i];
    sum[i] = static_cast<int8_t>(exact < -128 ? -128 : exact > 127 ? 127 : exact);
  }
  return sum;
#elif defined(__AVX2__) && KORVEL_LANES == 32
  return as<SignedBytes>(_mm256_adds_epi8(as<__m256i>(a), as<__m256i>(b)));
#elif defined(__SSE2__)
  return as<SignedBytes>(_mm_adds_epi8(as<__m128i>(a), as<__m128i>(b)));
#else
  return as<SignedBytes>(vqaddq_s8(as<int8x16_t>(a), as<int8x16_t>(b)));
#endif
}

// -number where the mask's lane is all ones, the number itself where it is zero.
KORVEL_INLINE SignedBytes negatedWhere(Bytes mask, SignedBytes numbers) {
#if defined(__AVX2__) && KORVEL_LANES == 32
  return as<SignedBytes>(_mm256_sign_epi8(as<__m256i>(numbers), as<__m256i>(mask | 1)));
#else
  const auto minus = as<SignedBytes>(mask);
  return (numbers ^ minus) - minus;
#endif
}

// Upper 16 bits of the 32-bit products.
KORVEL_INLINE Words multiplyHigh(Words a, Words b) {
#if defined(KORVEL_TARGET_IS_PORTABLE)
  Words product{};
  for (size_t i = 0; i < kLanesOf<Words>; ++i) {
    product[i] = static_cast<uint16_t>((uint32_t{a[i]} * b[i]) >> 16);
  }
  return product;
#elif defined(__AVX2__) && KORVEL_LANES == 32
  return as<Words>(_mm256_mulhi_epu16(as<__m256i>(a), as<__m256i>(b)));
#elif defined(__SSE2__)
  return as<Words>(_mm_mulhi_epu16(as<__m128i>(a), as<__m128i>(b)));
#else
  const auto x = as<uint16x8_t>(a);
  const auto y = as<uint16x8_t>(b);
  const uint32x4_t low = vmull_u16(vget_low_u16(x), vget_low_u16(y));
  const uint32x4_t high = vmull_high_u16(x, y);
  return as<Words>(vuzp2q_u16(vreinterpretq_u16_u32(low), vreinterpretq_u16_u32(high)));
#endif
}

// Words of the bytes in the lower (upper) part of each 16-byte half. packWords is the way back.
KORVEL_INLINE Words widenLow(Bytes bytes) {
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  return as<Words>(interleaveLow(Bytes{}, bytes));
#else
  return as<Words>(interleaveLow(bytes, Bytes{}));
#endif
}

KORVEL_INLINE Words widenHigh(Bytes bytes) {
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  return as<Words>(interleaveHigh(Bytes{}, bytes));
#else
  return as<Words>(interleaveHigh(bytes, Bytes{}));
#endif
}

// Bytes of signed words, held within 0..255, `low` in the lower part of each 16-byte half.
KORVEL_INLINE Bytes packWords(SignedWords low, SignedWords high) {
#if defined(KORVEL_TARGET_IS_PORTABLE)
  Bytes bytes{};
  for (size_t i = 0; i < kLanes; ++i) {
    const size_t word = i / 16 * 8 + i % 8;
    const int level = i % 16 < 8 ? low[word] : high[word];
    bytes[i] = static_cast<uint8_t>(level < 0 ? 0 : level > 255 ? 255 : level);
  }
  return bytes;
#elif defined(__AVX2__) && KORVEL_LANES == 32
  return as<Bytes>(_mm256_packus_epi16(as<__m256i>(low), as<__m256i>(high)));
#elif defined(__SSE2__)
  return as<Bytes>(_mm_packus_epi16(as<__m128i>(low), as<__m128i>(high)));
#else
  return as<Bytes>(vqmovun_high_s16(vqmovun_s16(as<int16x8_t>(low)), as<int16x8_t>(high)));
#endif
}

// Words of ints, held within -32768..32767, in the order that packWords has.
KORVEL_INLINE SignedWords packInts(Ints low, Ints high) {
#if defined(KORVEL_TARGET_IS_PORTABLE)
  SignedWords words{};
  for (size_t i = 0; i < kLanesOf<Words>; ++i) {
    const size_t at = i / 8 * 4 + i % 4;
    const int value = i % 8 < 4 ? low[at] : high[at];
    words[i] = static_cast<int16_t>(value < -32768 ? -32768 : value > 32767 ? 32767 : value);
  }
  return words;
#elif defined(__AVX2__) && KORVEL_LANES == 32
  return as<SignedWords>(_mm256_packs_epi32(as<__m256i>(low), as<__m256i>(high)));
#elif defined(__SSE2__)
  return as<SignedWords>(_mm_packs_epi32(as<__m128i>(low), as<__m128i>(high)));
#else
  return as<SignedWords>(vqmovn_high_s32(vqmovn_s32(as<int32x4_t>(low)), as<int32x4_t>(high)));
#endif
}

// Ints of the words in the lower (upper) part of each 16-byte half; the words are below 2^15.
KORVEL_INLINE Ints widenLow(SignedWords words) {
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  return as<Ints>(interleaveLow(SignedWords{}, words));
#else
  return as<Ints>(interleaveLow(words, SignedWords{}));
#endif
}

KORVEL_INLINE Ints widenHigh(SignedWords words) {
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  return as<Ints>(interleaveHigh(SignedWords{}, words));
#else
  return as<Ints>(interleaveHigh(words, SignedWords{}));
#endif
}

KORVEL_INLINE Floats toFloats(Ints ints) { return __builtin_convertvector(ints, Floats); }

// Truncates toward zero; the floats fit into ints.
KORVEL_INLINE Ints toInts(Floats floats) { return __builtin_convertvector(floats, Ints); }

// One bit a lane, lane 0 in the top bit of the first byte: kLanes / 8 bytes. Lanes of the mask
// are all ones or zero.
KORVEL_INLINE void storeBits(uint8_t* to, Bytes mask) {
#if defined(KORVEL_TARGET_IS_PORTABLE)
  for (size_t i = 0; i < kLanes; i += 8) {
    unsigned int bits = 0;
    for (size_t k = 0; k < 8; ++k) bits = bits << 1 | (mask[i + k] & 1u);
    to[i / 8] = static_cast<uint8_t>(bits);
  }
#else
  constexpr uint64_t kPlaces = 0x0102040810204080;  // low byte first: lane 0 is worth 128
  const Bytes places = as<Bytes>(splat<Longs>(static_cast<int64_t>(kPlaces)));
#if defined(__AVX2__) && KORVEL_LANES == 32
  const auto sums = as<Longs>(_mm256_sad_epu8(as<__m256i>(mask & places), __m256i{}));
#elif defined(__SSE2__)
  const auto sums = as<Longs>(_mm_sad_epu8(as<__m128i>(mask & places), __m128i{}));
#else
  const auto sums = as<Longs>(vpaddlq_u32(vpaddlq_u16(vpaddlq_u8(as<uint8x16_t>(mask & places)))));
#endif
  for (size_t i = 0; i < kLanesOf<Longs>; ++i) to[i] = static_cast<uint8_t>(sums[i]);
#endif
}

// The way back: lane i is all ones where bit i, counted from the top of the first byte, is set.
KORVEL_INLINE Bytes loadBits(const uint8_t* from) {
#if defined(KORVEL_TARGET_IS_PORTABLE)
  Bytes mask{};
  for (size_t i = 0; i < kLanes; ++i) {
    mask[i] = (from[i / 8] >> (7 - i % 8) & 1) != 0 ? uint8_t{0xFF} : uint8_t{0};
  }
  return mask;
#else
  constexpr uint64_t kPlaces = 0x0102040810204080;
  constexpr uint64_t kEachByte = 0x0101010101010101;
  Longs spread{};
  for (size_t i = 0; i < kLanesOf<Longs>; ++i) {
    spread[i] = static_cast<int64_t>(kEachByte * from[i]);
  }
  const Bytes places = as<Bytes>(splat<Longs>(static_cast<int64_t>(kPlaces)));
  return as<Bytes>((as<Bytes>(spread) & places) == places);
#endif
}

}  // namespace KORVEL_TARGET

#endif
