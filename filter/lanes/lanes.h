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
struct Unreferenced {
  using Type = Value;
};

template <class Value>
struct Unreferenced<Value&> : Unreferenced<Value> {};

template <class Vector>
using LaneOf = typename Unreferenced<decltype(Vector{}[0])>::Type;

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
#if KORVEL_LANES == 32
  // Joined in registers: by way of memory the whole load would wait for two stores.
  using Half = int64_t __attribute__((vector_size(16)));
  const auto halves = __builtin_shufflevector(load<Half>(low), load<Half>(high), 0, 1, 2, 3);
  return reinterpret_cast<Bytes>(halves);
#else
  return load<Bytes>(low);
#endif
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
KORVEL_INLINE Vector shiftedUp(Vector before, Vector vector, Indexes<I...> /*lanes*/) {
  return __builtin_shufflevector(before, vector, (sizeof...(I) - 1 + I)...);
}

// The low bytes of two vectors of words, those of `a` in the lower part of each half.
constexpr size_t lowByte(size_t i) {
  const size_t word = i / 16 * 8 + i % 8;
  const size_t byte = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__ ? 1 : 0;
  return 2 * word + byte + (i % 16 < 8 ? 0 : kLanes);
}

template <size_t... I>
KORVEL_INLINE Bytes lowBytes(Bytes a, Bytes b, Indexes<I...> /*lanes*/) {
  return __builtin_shufflevector(a, b, lowByte(I)...);
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

// Each lane takes what the lane before it has, lane 0 what the last lane of `before` has.
template <class Vector>
KORVEL_INLINE Vector shiftUp(Vector before, Vector vector) {
  return shuffles::shiftedUp(before, vector, typename shuffles::UpTo<kLanesOf<Vector>>::Type{});
}

// Last lane first.
KORVEL_INLINE Bytes reverse(Bytes bytes) {
#if defined(__SSE2__) && !defined(__SSSE3__)
  // There is no byte shuffle here: halves, words and at last the bytes of words change places.
  auto words = as<__m128i>(bytes);
  words = _mm_shuffle_epi32(words, _MM_SHUFFLE(1, 0, 3, 2));
  words = _mm_shufflelo_epi16(words, _MM_SHUFFLE(0, 1, 2, 3));
  words = _mm_shufflehi_epi16(words, _MM_SHUFFLE(0, 1, 2, 3));
  return as<Bytes>((as<Words>(words) << 8) | (as<Words>(words) >> 8));
#else
  return shuffles::reversed(bytes, shuffles::UpTo<kLanes>::Type{});
#endif
}

// Sum held within -128..127.
KORVEL_INLINE SignedBytes addSaturated(SignedBytes a, SignedBytes b) {
#if defined(KORVEL_TARGET_IS_PORTABLE)
  const auto sum = as<SignedBytes>(as<Bytes>(a) + as<Bytes>(b));
  const SignedBytes left = (a ^ sum) & (b ^ sum);  // negative where the sum has left its range
  const SignedBytes limit = (a < 0) ^ 127;
  return left < 0 ? limit : sum;
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
  return as<SignedBytes>((as<Bytes>(numbers) ^ mask) - mask);  // 0x80 stays itself
#endif
}

// Upper 16 bits of the 32-bit products.
KORVEL_INLINE Words multiplyHigh(Words a, Words b) {
#if defined(KORVEL_TARGET_IS_PORTABLE)
  using Products = uint32_t __attribute__((vector_size(KORVEL_LANES)));
  const auto x = as<Products>(a);
  const auto y = as<Products>(b);
  const Products one = (x & 0xFFFFu) * (y & 0xFFFFu) >> 16;
  const Products other = (x >> 16) * (y >> 16) & 0xFFFF0000u;
  return as<Words>(one | other);
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

// Each int is the sum of the products of two neighbouring words; it fits.
KORVEL_INLINE Ints multiplyPairs(SignedWords a, SignedWords b) {
#if defined(KORVEL_TARGET_IS_PORTABLE)
  Ints sums{};
  for (size_t i = 0; i < kLanesOf<Ints>; ++i) {
    sums[i] = a[2 * i] * b[2 * i] + a[2 * i + 1] * b[2 * i + 1];
  }
  return sums;
#elif defined(__AVX2__) && KORVEL_LANES == 32
  return as<Ints>(_mm256_madd_epi16(as<__m256i>(a), as<__m256i>(b)));
#elif defined(__SSE2__)
  return as<Ints>(_mm_madd_epi16(as<__m128i>(a), as<__m128i>(b)));
#else
  const auto x = as<int16x8_t>(a);
  const auto y = as<int16x8_t>(b);
  const int32x4_t low = vmull_s16(vget_low_s16(x), vget_low_s16(y));
  return as<Ints>(vpaddq_s32(low, vmull_high_s16(x, y)));
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
  const auto held = [](SignedWords words) {
    const SignedWords raised = words > 0 ? words : SignedWords{};
    return as<Bytes>(raised < 255 ? raised : splat<SignedWords>(255));
  };
  return shuffles::lowBytes(held(low), held(high), shuffles::UpTo<kLanes>::Type{});
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

// What each lane's bit is worth in its byte.
KORVEL_INLINE Bytes bitPlaces() {
  constexpr uint8_t kPlaces[32] = {128, 64, 32, 16, 8, 4, 2, 1, 128, 64, 32, 16, 8, 4, 2, 1,
                                   128, 64, 32, 16, 8, 4, 2, 1, 128, 64, 32, 16, 8, 4, 2, 1};
  return load<Bytes>(kPlaces);
}

// Whether any bit of a mask is set, whose bytes are all ones or zero.
KORVEL_INLINE bool anySet(Bytes mask) {
#if defined(KORVEL_TARGET_IS_PORTABLE)
  const auto longs = as<Longs>(mask);
  int64_t all = 0;
  for (size_t i = 0; i < kLanesOf<Longs>; ++i) all |= longs[i];
  return all != 0;
#elif defined(__AVX2__) && KORVEL_LANES == 32
  return _mm256_movemask_epi8(as<__m256i>(mask)) != 0;
#elif defined(__SSE2__)
  return _mm_movemask_epi8(as<__m128i>(mask)) != 0;
#else
  return vmaxvq_u8(as<uint8x16_t>(mask)) != 0;
#endif
}

// One bit a lane, lane 0 in the top bit of the first byte: kLanes / 8 bytes. Lanes of the mask
// are all ones or zero.
KORVEL_INLINE void storeBits(uint8_t* to, Bytes mask) {
#if defined(KORVEL_TARGET_IS_PORTABLE)
  for (size_t i = 0; i < kLanes; i += 8) {
    unsigned int bits = 0;
    for (size_t k = 0; k < 8; ++k) bits = bits << 1 | (mask[i + k] & 1u);
    to[i / 8] = static_cast<uint8_t>(bits);
  }
#elif defined(__AVX2__) && KORVEL_LANES == 32
  // Lane 0 would get the lowest bit: lanes are turned within their eights.
  const __m256i turned = _mm256_set_epi64x(0x08090A0B0C0D0E0F, 0x0001020304050607,
                                           0x08090A0B0C0D0E0F, 0x0001020304050607);
  const int bits = _mm256_movemask_epi8(_mm256_shuffle_epi8(as<__m256i>(mask), turned));
  __builtin_memcpy(to, &bits, sizeof bits);
#elif defined(__SSE2__)
  const Bytes worth = mask & bitPlaces();
  const __m128i sums = _mm_sad_epu8(as<__m128i>(worth), __m128i{});  // in the first byte of eight
  const int bits = _mm_cvtsi128_si32(_mm_or_si128(sums, _mm_srli_si128(sums, 7)));
  __builtin_memcpy(to, &bits, 2);
#else
  const auto worth = as<uint8x16_t>(mask & bitPlaces());
  to[0] = vaddv_u8(vget_low_u8(worth));
  to[1] = vaddv_u8(vget_high_u8(worth));
#endif
}

// The bits of eight masks, one after the other: kLanes bytes.
KORVEL_INLINE void storeBits(uint8_t* to, const Bytes (&masks)[8]) {
#if defined(KORVEL_TARGET_IS_PORTABLE) || KORVEL_LANES == 32
  for (size_t i = 0; i < 8; ++i) storeBits(to + i * kLanes / 8, masks[i]);
#elif defined(__SSE2__)
  __m128i sums[8];  // two bytes in each, eight apart
  for (size_t i = 0; i < 8; ++i) {
    const Bytes worth = masks[i] & bitPlaces();
    sums[i] = _mm_sad_epu8(as<__m128i>(worth), __m128i{});
  }
  for (size_t i = 0; i < 8; i += 2) sums[i] = _mm_packs_epi32(sums[i], sums[i + 1]);
  const __m128i low = _mm_packs_epi32(sums[0], sums[2]);
  const __m128i high = _mm_packs_epi32(sums[4], sums[6]);
  store(to, _mm_packus_epi16(low, high));
#else
  uint8x16_t sums[8];
  for (size_t i = 0; i < 8; ++i) {
    sums[i] = as<uint8x16_t>(masks[i] & bitPlaces());
  }
  for (size_t apart = 1; apart < 8; apart *= 2) {
    for (size_t i = 0; i < 8; i += 2 * apart) sums[i] = vpaddq_u8(sums[i], sums[i + apart]);
  }
  store(to, sums[0]);
#endif
}

// The way back: lane i is all ones where bit i, counted from the top of the first byte, is set.
KORVEL_INLINE Bytes loadBits(const uint8_t* from) {
#if defined(KORVEL_TARGET_IS_PORTABLE)
  constexpr uint64_t kEachByte = 0x0101010101010101;
  Longs eights{};
  for (size_t i = 0; i < kLanesOf<Longs>; ++i) {
    eights[i] = static_cast<int64_t>(kEachByte * from[i]);
  }
  const auto spread = as<Bytes>(eights);
#elif defined(__AVX2__) && KORVEL_LANES == 32
  int bits = 0;
  __builtin_memcpy(&bits, from, sizeof bits);
  const __m256i byteOfLane =
      _mm256_set_epi64x(0x0303030303030303, 0x0202020202020202, 0x0101010101010101, 0);
  const auto spread = as<Bytes>(_mm256_shuffle_epi8(_mm256_set1_epi32(bits), byteOfLane));
#elif defined(__SSE2__)
  uint16_t bits = 0;
  __builtin_memcpy(&bits, from, sizeof bits);
  __m128i both = _mm_cvtsi32_si128(bits);
  both = _mm_shufflelo_epi16(_mm_unpacklo_epi8(both, both), _MM_SHUFFLE(1, 1, 0, 0));
  const auto spread = as<Bytes>(_mm_shuffle_epi32(both, _MM_SHUFFLE(1, 1, 0, 0)));
#else
  const auto spread = as<Bytes>(vcombine_u8(vdup_n_u8(from[0]), vdup_n_u8(from[1])));
#endif
  return as<Bytes>((spread & bitPlaces()) == bitPlaces());
}

}  // namespace KORVEL_TARGET

#endif
