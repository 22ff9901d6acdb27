// Error diffusion with as many rows in flight as a vector has bytes.
// One page of code for all kernels; the bits are those of the plain form.
// SPDX-License-Identifier: Apache-2.0

// A row of error diffusion is one chain: a pixel waits for the errors of the two before it. So
// lanes are rows, each far enough behind the row above. Numbered by
//
//   place = row * rowStep + block * kLanes    (a block is eight columns)
//
// every block of the page has a place of its own. A vector is kLanes neighbouring places, vector
// after vector is worked off, column by column: the lane is the place modulo kLanes, and each lane
// goes on with another row when one ends. The block above lies rowStep places before, whatever the
// lane, so one load brings all lanes the shares of a neighbour above (ShareRing). Nothing begins
// or ends at a group of rows; the page's edges are columns that have no error.
//
// The plain form pushes: a pixel adds its shares to those after it, and each sum is held within
// 0..255 at once. The order of these additions decides, so it is kept: a pixel starts with its
// grey and takes from the row farthest above first, each row left to right, its own row last.
// Levels are kept less 128. Then the sum is held by one saturating addition, and white is
// "above 0". The magnitude of the error is the level itself below white (0..128), its complement
// above; its shares are cut off toward zero, so they are made of the magnitude, by a product or
// by shifts (diffusion_plan.h), and negated where white.
//
// A step is a column of kLanes pixels. Jarvis-Judice-Ninke needs some 60 operations for it, and
// 15 more fetch the grey, collect the bits and steer; about 25 cycles for 16 or 32 pixels. The
// chain from pixel to pixel is 12 cycles long; what comes from above is added one column ahead,
// and the next block is fetched meanwhile, so that it waits for nothing else.
//
// Narrow pages go the same way. A row takes 2 * kLanes + 1 blocks at least, so a page narrower
// than that costs what a page of that width costs: still some hundred times less than the plain
// form at a hundred columns, which is why there is no second way for them.
#include "image/diffusion/diffusion_dispatch.h"
#include "image/diffusion/diffusion_feed_and_drain.h"
#include "image/diffusion/diffusion_plan.h"
#include "image/diffusion/diffusion_ring.h"
#include "lanes/lanes.h"

namespace KORVEL_TARGET {

namespace {

template <size_t kCount>
using UpTo = typename shuffles::UpTo<kCount>::Type;

using shuffles::Indexes;

// Eight columns at a time of all lanes: the arithmetic.
template <const DiffusionKernel& kKernel>
class Diffusion {
 public:
  Diffusion(uint8_t* memory, size_t rowStep) : ring_(memory, rowStep) {}

  KORVEL_INLINE void start(DiffusionFeed& feed) { fetchFirst(feed, UpTo<kBlock>{}); }

  // The bits of the current block; its grey has been fetched before, the next one's is fetched.
  KORVEL_INLINE Bytes halftone(DiffusionFeed& feed, const OpenColumns& open) {
    const Bytes bits = halftoneColumns(feed, open, UpTo<kBlock>{});
    ring_.advance();
    return bits;
  }

 private:
  static constexpr const DiffusionPlan& kPlan = ShareRing<kKernel>::kPlan;
  using Sources = UpTo<kPlan.sources>;
  using Shares = UpTo<kPlan.shares>;

  template <size_t... kPart>
  KORVEL_INLINE void fetchFirst(DiffusionFeed& feed, Indexes<kPart...> /*parts*/) {
    Tile tile;
    (feed.fetch<kPart>(tile), ...);
    sum_ = as<SignedBytes>(feed.column<0>());
  }

  template <size_t... kColumn>
  KORVEL_INLINE Bytes halftoneColumns(DiffusionFeed& feed, const OpenColumns& open,
                                      Indexes<kColumn...> /*columns*/) {
    Tile tile;
    Bytes bits{};
    ((feed.fetch<kColumn>(tile), step<kColumn>(feed, open, bits)), ...);
    return bits;
  }

  template <size_t kColumn>
  KORVEL_INLINE void step(const DiffusionFeed& feed, const OpenColumns& open, Bytes& bits) {
    const SignedBytes next = sumFromAbove<kColumn + 1>(feed.column<kColumn + 1>(), Sources{});
    settle<kColumn>(sum_, open.mask(kColumn), bits, Sources{}, Shares{});
    sum_ = next;
  }

  template <size_t kColumn, size_t... kSource>
  KORVEL_INLINE SignedBytes sumFromAbove(Bytes grey, Indexes<kSource...> /*sources*/) const {
    auto sum = as<SignedBytes>(grey);
    (addFromAbove<kSource, kColumn>(sum), ...);
    return sum;
  }

  template <size_t kSource, size_t kColumn>
  KORVEL_INLINE void addFromAbove(SignedBytes& sum) const {
    constexpr DiffusionSource kFrom = kPlan.source[kSource];
    if constexpr (kFrom.dy != 0) {
      constexpr int kItsColumn = static_cast<int>(kColumn) - kFrom.dx;
      sum = addSaturated(sum, ring_.template taken<kFrom.share, kFrom.dy, kItsColumn>());
    }
  }

  template <size_t kSource>
  KORVEL_INLINE void addFromBefore(SignedBytes& sum) const {
    constexpr DiffusionSource kFrom = kPlan.source[kSource];
    if constexpr (kFrom.dy == 0) sum = addSaturated(sum, past_[kFrom.dx - 1][kFrom.share]);
  }

  // Decides the pixels of a column and leaves their shares. Where `open` is zero there is none.
  template <size_t kColumn, size_t... kSource, size_t... kShare>
  KORVEL_INLINE void settle(SignedBytes level, Bytes open, Bytes& bits,
                            Indexes<kSource...> /*sources*/, Indexes<kShare...> /*shares*/) {
    (addFromBefore<kSource>(level), ...);
    const auto white = as<Bytes>(level > 0);
    bits = bits + bits - white;
    const Bytes error = (as<Bytes>(level) ^ splat<Bytes>(0x80) ^ white) & open;
    const Words low = widenLow(error);
    const Words high = widenHigh(error);
    Bytes shares[kPlan.shares];
    (divide<kShare>(error, low, high, shares), ...);
    ((past_[1][kShare] = past_[0][kShare]), ...);
    ((past_[0][kShare] = negatedWhere(white, as<SignedBytes>(shares[kShare]))), ...);
    (ring_.template leave<kShare, kColumn>(past_[0][kShare]), ...);
  }

  template <size_t kShare>
  KORVEL_INLINE static void divide(Bytes error, Words low, Words high, Bytes* shares) {
    constexpr DiffusionShare kHow = kPlan.share[kShare];
    if constexpr (kHow.factor != 0) {
      const auto factor = splat<Words>(kHow.factor);
      shares[kShare] = packWords(as<SignedWords>(multiplyHigh(low, factor)),
                                 as<SignedWords>(multiplyHigh(high, factor)));
    } else {
      Bytes larger = error;
      if constexpr (kHow.shifted != DiffusionShare::kOfError) larger = shares[kHow.shifted];
      shares[kShare] =
          as<Bytes>(as<Words>(larger) >> kHow.shift) & splat<Bytes>(0xFF >> kHow.shift);
    }
  }

  ShareRing<kKernel> ring_;
  SignedBytes past_[2][kPlan.shares]{};  // of the pixels one and two columns before
  SignedBytes sum_{};                    // of the next pixels, without those
};

template <const DiffusionKernel& kKernel>
size_t scratchBytes(size_t width) {
  const size_t rowStep = ShareRing<kKernel>::rowStepFor(width);
  return ShareRing<kKernel>::bytesFor(rowStep) + DiffusionDrain::bytesFor(rowStep) + kLanes;
}

// Lanes are fed one block ahead of the arithmetic, and a row is closed one block after its last
// pixels.
template <const DiffusionKernel& kKernel>
void halftone(const DiffusionPage& page, uint8_t* scratch) {
  scratch += -reinterpret_cast<uintptr_t>(scratch) % kLanes;
  const size_t rowStep = ShareRing<kKernel>::rowStepFor(page.width);
  Diffusion<kKernel> diffusion(scratch, rowStep);
  DiffusionDrain drain(scratch + ShareRing<kKernel>::bytesFor(rowStep), rowStep);
  DiffusionFeed feed(page, rowStep);
  OpenColumns open;
  feed.steer(0);
  diffusion.start(feed);

  const size_t whole = page.width / kBlock;
  RowStarts opened(rowStep, page.height);
  RowStarts closed(rowStep, page.height);
  for (size_t block = 0;; ++block) {
    if (closed.isAt(block - whole - 1)) {
      open.set(closed.lane(), 0);
      drain.finish(closed, block, page.bits + closed.row() * page.bitsStride, page.width);
      closed.next();
      if (closed.isOver()) return;
    }
    if (opened.isAt(block)) {
      open.set(opened.lane(), kBlock);
      opened.next();
    }
    if (closed.isAt(block - whole)) open.set(closed.lane(), page.width % kBlock);
    feed.steer(block + 1);
    drain.put(block, diffusion.halftone(feed, open));
  }
}

template <const DiffusionKernel& kKernel>
constexpr DiffusionMethod kMethod = {scratchBytes<kKernel>, halftone<kKernel>};

}  // namespace

extern const DiffusionKernels kDiffusionKernels;
const DiffusionKernels kDiffusionKernels = {kMethod<kFloydSteinberg>, kMethod<kBurkes>,
                                            kMethod<kStucki>,         kMethod<kJarvisJudiceNinke>,
                                            kMethod<kSierra>,         kMethod<kStevensonArce>};

}  // namespace KORVEL_TARGET
