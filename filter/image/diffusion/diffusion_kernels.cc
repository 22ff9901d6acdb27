// Error diffusion with as many rows in flight as a vector has bytes.
// One implementation for all kernels; the bits are those of the reference implementation.
// SPDX-License-Identifier: Apache-2.0

// A row of error diffusion is one chain: a pixel waits for the errors of the two before it. So
// lanes are rows, each far enough behind the row above. If they are numbered by
//
//   place = row * rowStep + block * kLanes    (a block is eight columns)
//
// every block of the page has a place of its own. A vector is kLanes neighbouring places, and
// vectors are processed one after another, column by column: the lane is the place modulo kLanes,
// and each lane continues with another row when one ends. The block above is rowStep places earlier
// in every lane, so one load gives all lanes the shares of a neighbour above (ShareRing). Rows are
// not processed in groups; the page's edges are columns that have no error.
//
// The reference implementation pushes: a pixel adds its shares to the pixels after it, and each sum
// is clamped to 0..255 at once. The result depends on the order of these additions, so it is kept:
// a pixel starts with its grey and adds the shares from the row farthest above first, each row left
// to right, its own row last. Levels are stored less 128, so that one saturating addition clamps
// the sum, and white is "above 0". The magnitude of the error is the level itself below white
// (0..128) and its complement above. Shares are truncated toward zero, so they are computed from
// the magnitude, by a product or by shifts (diffusion_plan.h), and negated where white.
//
// A step is a column of kLanes pixels. Jarvis-Judice-Ninke takes some 60 operations for it, and 15
// more load the grey, collect the bits and move on: about 25 cycles for 16 or 32 pixels. The chain
// from pixel to pixel is 12 cycles long. Shares from above are added one column ahead, and the next
// block is loaded in the meantime, so that the chain waits for nothing else.
//
// Narrow pages are processed in the same way. A row takes at least 2 * kLanes + 1 blocks, so a
// narrower page costs as much as one of that width. At a hundred columns this is still some hundred
// times faster than the reference implementation.
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

  // Returns the bits of the current block, which has been fetched before, and fetches the next one.
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

// Lanes are loaded one block ahead of the arithmetic, and a row is closed one block after its last
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
