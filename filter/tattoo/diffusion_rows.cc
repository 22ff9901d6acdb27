// The kernel of the stencil quantiser: many rows side by side.
// Lanes are rows, each a few columns behind the row above, on which it depends.
// SPDX-License-Identifier: Apache-2.0
//
// A row is one chain: a pixel waits for its left neighbour's error, some 14 cycles, in which the
// processor could do ten times as much. Rows depend on each other only through the shares that are
// handed down, which reach two columns ahead. So two vectors of rows run side by side, lane r at
// column t - 8r in step t, and their chains overlap. Every pixel still adds the same terms in the
// same order as in the reference implementation: the shares from the row above by ascending column,
// then from two to the left, then from the left, then its level. A share is weight * error,
// rounded, then added, as when it is pushed. Leaving out the zero that the reference starts with
// changes no bit, because a level is never -0.
//
// The lag of 8 columns is also a block: 8 steps in which each lane passes over 8 aligned bytes of
// its row. Levels are loaded and pixels stored in blocks; nothing is looked up within one. The
// shares of the last lane wait in a row of floats for the first lane of the next stripe.
//
// The kernel takes about 6.5 instructions per pixel with 8 lanes per vector, 17 with 4. Narrow
// pages are processed in the same way, although most of their lanes are idle: beside the page,
// errors are held at zero, and rows below it are written to a row that nobody reads.
#include "lanes/lanes.h"
#include "tattoo/tattoo_kernels.h"

namespace KORVEL_TARGET {

namespace {

constexpr int kLag = 8;
constexpr size_t kFloats = kLanesOf<Floats>;
constexpr size_t kVectors = 2;  // as many chains as registers hold
constexpr int kRows = static_cast<int>(kVectors * kFloats);
constexpr int kLeader = kLag * (kRows - 1);  // columns from the last lane to the first

static_assert(kStencilRows % kRows == 0, "a stripe in the middle of a page fills all lanes");
// The first lane reaches 2 columns beyond the page, rounded up to a block, plus kLeader; shares are
// stored kLag elements further on.
static_assert(kLag + 2 + (kLag - 1) + kLeader <= kColumnsBeside, "shares and whites have room");

// Shares of an error, by the neighbour that it comes from.
constexpr float kFromAboveLeft = -0.111078f;
constexpr float kFromAbove = 0.243191f;
constexpr float kFromAboveRight = 0.128835f;
constexpr float kFromAboveFarRight = 0.226194f;
constexpr float kFromFarLeft = -0.052926f;
constexpr float kFromLeft = 0.505786f;

// How much a white pixel falls short of 255 for one black neighbour; for two, exactly twice as
// much.
constexpr float kBlackNeighbourShare = 0.1427f;
constexpr float kLack = 255.0f - 255.0f * (1.0f - kBlackNeighbourShare);
static_assert(255.0f - kLack == 255.0f * (1.0f - kBlackNeighbourShare));
static_assert(255.0f - kLack - kLack ==
              255.0f * (1.0f - (kBlackNeighbourShare + kBlackNeighbourShare)));

// The state that one vector of lanes keeps from step to step.
struct Lanes {
  Ints offset;  // columns behind lane 0, negative
  Ints lack;    // the bits of kLack, or of 0 in the page's first and last row
  Floats error1{};
  Floats error2{};
  Floats error3{};
  Ints left{};       // whether the pixel before is white
  Ints above{};      // white pixels of the row above, one bit for each column of the block
  Ints bits{};       // white pixels of the block so far, the last one lowest
  Ints levels[2]{};  // four bytes each, in their order
};

struct Stripe {
  Lanes lanes[kVectors];
  Floats shares[kLag][kVectors]{};  // to hand down, by column modulo kLag
  Floats threshold;
  const uint8_t* from[kRows];
  uint8_t* to[kRows];
};

// The shift that brings the byte at this place of an int to its low end.
constexpr int bitsBefore(size_t place) {
  return static_cast<int>(__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__ ? 3 - place : place) * 8;
}

KORVEL_INLINE Ints within(Ints mask, Ints x, int first, int end) {
  return mask & as<Ints>(x >= first) & as<Ints>(x < end);
}

// Column `t` of lane 0 and the columns of the others. `k` is the step within the block.
template <bool kAtEdge>
KORVEL_INLINE void step(Stripe& stripe, size_t v, size_t k, const StencilStripe& page, int t) {
  Lanes& lanes = stripe.lanes[v];
  const Floats before =
      v == 0 ? splat<Floats>(page.shares[kLag + t]) : stripe.shares[k][v == 0 ? 0 : v - 1];
  const Floats above = shiftUp(before, stripe.shares[k][v]);
  const Ints level = lanes.levels[k / 4] >> bitsBefore(k % 4) & 255;

  Floats value = above + lanes.error2 * kFromFarLeft;
  value = value + lanes.error1 * kFromLeft;
  value = value + toFloats(level);

  const auto white = as<Ints>(value > stripe.threshold);
  const auto blackAbove = as<Ints>((lanes.above & (128 >> k)) == 0);
  Ints lack = lanes.lack;
  if constexpr (kAtEdge) lack = within(lack, lanes.offset + t, 1, page.width - 1);
  const Floats lessAbove = 255.0f - as<Floats>(lack & blackAbove);
  const Floats whole = lessAbove - as<Floats>(lack & ~lanes.left);
  Floats error = value - as<Floats>(as<Ints>(whole) & white);
  if constexpr (kAtEdge) {
    error = as<Floats>(within(as<Ints>(error), lanes.offset + t, 0, page.width));
  }

  // For the column two to the left, of which this is the last source.
  Floats share = lanes.error3 * kFromAboveLeft;
  share = share + lanes.error2 * kFromAbove;
  share = share + lanes.error1 * kFromAboveRight;
  share = share + error * kFromAboveFarRight;
  stripe.shares[(k + kLag - 2) % kLag][v] = share;

  lanes.error3 = lanes.error2;
  lanes.error2 = lanes.error1;
  lanes.error1 = error;
  lanes.left = white;
  lanes.bits = lanes.bits + lanes.bits - white;
}

// How many of the block's columns from x on are on the page.
template <bool kAtEdge>
KORVEL_INLINE size_t columnsSeen(int x, int width) {
  if (!kAtEdge) return kLag;
  if (x < 0 || x >= width) return 0;
  return static_cast<size_t>(width - x < kLag ? width - x : kLag);
}

template <bool kAtEdge>
KORVEL_INLINE int64_t eightLevels(const Stripe& stripe, int r, int column, int width) {
  const int x = column - kLag * r;
  const size_t count = columnsSeen<kAtEdge>(x, width);
  int64_t levels = 0;
  if (count != 0) __builtin_memcpy(&levels, stripe.from[r] + x, count);
  return levels;
}

// Turns rows of eight bytes into lanes of four and four.
template <bool kAtEdge>
KORVEL_INLINE void takeLevels(Stripe& stripe, size_t v, int column, int width) {
  Longs even{};
  Longs odd{};
  for (size_t i = 0; i < kLanesOf<Longs>; ++i) {
    const int r = static_cast<int>(v * kFloats + 2 * i);
    even[i] = eightLevels<kAtEdge>(stripe, r, column, width);
    odd[i] = eightLevels<kAtEdge>(stripe, r + 1, column, width);
  }
  const auto low = as<Longs>(interleaveLow(as<Ints>(even), as<Ints>(odd)));
  const auto high = as<Longs>(interleaveHigh(as<Ints>(even), as<Ints>(odd)));
  stripe.lanes[v].levels[0] = as<Ints>(interleaveLow(low, high));
  stripe.lanes[v].levels[1] = as<Ints>(interleaveHigh(low, high));
}

// Eight bytes of 0 or 255 for eight bits, the top one first.
struct Pixels {
  uint8_t bytes[256][kLag];
};

constexpr Pixels pixelsOfBits() {
  Pixels pixels{};
  for (int bits = 0; bits < 256; ++bits) {
    for (int x = 0; x < kLag; ++x) pixels.bytes[bits][x] = (bits & 128 >> x) != 0 ? 255 : 0;
  }
  return pixels;
}

constexpr Pixels kPixels = pixelsOfBits();

template <bool kAtEdge>
KORVEL_INLINE void putPixels(const Stripe& stripe, int column, int width) {
  for (int r = 0; r < kRows; ++r) {
    const auto lane = static_cast<size_t>(r);
    const int bits = stripe.lanes[lane / kFloats].bits[lane % kFloats];
    const int x = column - kLag * r;
    const size_t count = columnsSeen<kAtEdge>(x, width);
    if (count != 0) __builtin_memcpy(stripe.to[r] + x, kPixels.bytes[bits], count);
  }
}

template <bool kAtEdge>
KORVEL_INLINE void runBlock(Stripe& stripe, const StencilStripe& page, int column) {
  for (size_t v = 0; v < kVectors; ++v) takeLevels<kAtEdge>(stripe, v, column, page.width);
#pragma GCC unroll 8
  for (size_t k = 0; k < kLag; ++k) {
    for (size_t v = 0; v < kVectors; ++v) {
      step<kAtEdge>(stripe, v, k, page, column + static_cast<int>(k));
    }
  }
  putPixels<kAtEdge>(stripe, column, page.width);
}

// The white pixels of the previous block become those above the next lane. The last lanes come
// first, because this clears their own.
KORVEL_INLINE void handBitsDown(Stripe& stripe, int whitesAbove) {
  for (size_t v = kVectors; v-- > 0;) {
    const Ints before = v == 0 ? splat<Ints>(whitesAbove) : stripe.lanes[v == 0 ? 0 : v - 1].bits;
    stripe.lanes[v].above = shiftUp(before, stripe.lanes[v].bits);
    stripe.lanes[v].bits = Ints{};
  }
}

// Stores the last lane's shares and white pixels for the next stripe. The shares of a block's last
// two columns are complete only in the next block.
KORVEL_INLINE void keepLastRow(const Stripe& stripe, const StencilStripe& page, int column) {
  float* shares = page.shares + kLag + column;
  for (int k = 0; k < kLag; ++k) {
    shares[k < kLag - 2 ? k : k - kLag] = stripe.shares[k][kVectors - 1][kFloats - 1];
  }
  const int bits = stripe.lanes[kVectors - 1].bits[kFloats - 1];
  page.whites[column / kLag] = static_cast<uint8_t>(bits);
}

KORVEL_INLINE void begin(Stripe& stripe, const StencilStripe& page) {
  stripe.threshold = splat<Floats>(page.threshold);
  for (int r = 0; r < kRows; ++r) {
    const bool isSeen = r < page.rows;
    const auto row = static_cast<size_t>(isSeen ? r : page.rows - 1);
    stripe.from[r] = page.from + row * page.fromStride;
    stripe.to[r] = isSeen ? page.to + row * page.toStride : page.nowhere;

    const auto lane = static_cast<size_t>(r);
    Lanes& lanes = stripe.lanes[lane / kFloats];
    const int y = page.firstRow + r;
    const Floats lack = splat<Floats>(y > 0 && y < page.height - 1 ? kLack : 0.0f);
    lanes.lack[lane % kFloats] = as<Ints>(lack)[0];
    lanes.offset[lane % kFloats] = -kLag * r;
  }
}

KORVEL_INLINE void diffuseTogether(const StencilStripe& page) {
  Stripe stripe;
  begin(stripe, page);
  // Two columns beyond the last one, because shares are completed two columns later.
  const int end = (page.width + 2 + kLag - 1) / kLag * kLag + kLeader;
  for (int column = 0; column < end; column += kLag) {
    handBitsDown(stripe, page.whites[column / kLag]);
    const int last = column - kLeader;
    if (last < 1 || column + kLag > page.width - 1) {
      runBlock<true>(stripe, page, column);
    } else {
      runBlock<false>(stripe, page, column);
    }
    if (last >= 0) keepLastRow(stripe, page, last);
  }
}

}  // namespace

// As many rows at a time as there are lanes.
void diffuse(const StencilStripe& stripe) {
  StencilStripe part = stripe;
  for (int row = 0; row < stripe.rows; row += kRows) {
    part.from = stripe.from + static_cast<size_t>(row) * stripe.fromStride;
    part.to = stripe.to + static_cast<size_t>(row) * stripe.toStride;
    part.rows = stripe.rows - row < kRows ? stripe.rows - row : kRows;
    part.firstRow = stripe.firstRow + row;
    diffuseTogether(part);
  }
}

}  // namespace KORVEL_TARGET
