// How the rows of a diffusion kernel are assigned to lanes, and where pixels store the shares of
// their errors. diffusion_kernels.cc explains the algorithm.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_IMAGE_DIFFUSION_RING_H
#define KORVEL_IMAGE_DIFFUSION_RING_H

#include <cstddef>
#include <cstdint>

#include "image/diffusion/diffusion_plan.h"
#include "lanes/lanes.h"

namespace KORVEL_TARGET {

constexpr size_t kBlock = 8;  // columns that a lane processes at a time; their bits are one byte

namespace {  // code compiled for a wide processor stays in its object file

// Iterates over the rows: the lane that takes each, and the block with which it begins.
class RowStarts {
 public:
  RowStarts(size_t rowStep, size_t rows) : rowStep_(rowStep), rows_(rows) {}

  size_t row() const { return row_; }
  size_t lane() const { return place_ % kLanes; }
  size_t block() const { return place_ / kLanes; }
  bool isAt(size_t block) const { return block == place_ / kLanes && row_ < rows_; }
  bool isOver() const { return row_ == rows_; }

  void next() {
    ++row_;
    place_ += rowStep_;
  }

 private:
  size_t rowStep_;
  size_t rows_;
  size_t row_ = 0;
  size_t place_ = 0;
};

// The shares that pixels have stored for the rows below, kept until they are read. For each share
// and each column of a block there is one stream of bytes, indexed by place. Streams are cut into
// runs, so that the distances between the streams of a run are known at compile time. After each
// run there is a copy of the next run's first vector, because rows above are read across vectors.
template <const DiffusionKernel& kKernel>
class ShareRing {
 public:
  static constexpr DiffusionPlan kPlan = planOf(kKernel);
  static_assert(isExact(kPlan, kKernel));
  static_assert(kPlan.reach < static_cast<int>(kBlock), "shares come from neighbouring blocks");

  // Places from one row to the next: odd, so that neighbouring rows get different lanes; enough for
  // the row and as many empty columns as the kernel reaches; and so many that a block's shares from
  // above were all stored in earlier blocks.
  static size_t rowStepFor(size_t width) {
    const size_t blocks = (width + static_cast<size_t>(kPlan.reach) + kBlock - 1) / kBlock;
    return (blocks < 2 * kLanes ? 2 * kLanes : blocks) | 1;
  }

  static size_t bytesFor(size_t rowStep) { return runsFor(rowStep) * kRunBytes; }

  ShareRing(uint8_t* memory, size_t rowStep)
      : first_(memory), end_(memory + bytesFor(rowStep)), here_(spotOf(0)) {
    __builtin_memset(first_, 0, bytesFor(rowStep));
    const size_t places = runsFor(rowStep) * kRun;
    for (size_t i = 0; i < kPlan.rows; ++i) {
      after_[i] = spotOf(places - (i + 1) * rowStep - kLanes);
      before_[i] = after_[i].at;
      advance(after_[i]);
      above_[i] = after_[i].at;
      advance(after_[i]);
    }
  }

  // The shares that the pixels `kDy` rows above have stored for a column, counted from the current
  // block's first one; the column may be in the block before it or after it.
  template <size_t kShare, int kDy, int kColumn>
  KORVEL_INLINE SignedBytes taken() const {
    constexpr size_t kOffset = offsetOf(kShare, static_cast<size_t>(kColumn + 8) % kBlock);
    if constexpr (kColumn < 0) return load<SignedBytes>(before_[kDy - 1] + kOffset);
    if constexpr (kColumn >= 8) return load<SignedBytes>(after_[kDy - 1].at + kOffset);
    return load<SignedBytes>(above_[kDy - 1] + kOffset);
  }

  template <size_t kShare, size_t kColumn>
  KORVEL_INLINE void leave(SignedBytes shares) {
    store(here_.at + offsetOf(kShare, kColumn), shares);
  }

  // Moves on to the next block.
  KORVEL_INLINE void advance() {
    if (here_.at + kRun == here_.end) copyAfterPreviousRun();
    advance(here_);
    for (size_t i = 0; i < kPlan.rows; ++i) {
      before_[i] = above_[i];
      above_[i] = after_[i].at;
      advance(after_[i]);
    }
  }

 private:
  static constexpr size_t kRun = 8 * kLanes;       // bytes of a stream in a run
  static constexpr size_t kPitch = kRun + kLanes;  // bytes from stream to stream
  static constexpr size_t kStreams = kPlan.shares * kBlock;
  static constexpr size_t kRunBytes = kStreams * kPitch;

  // An address in the first stream, and where its run ends.
  struct Spot {
    uint8_t* at;
    uint8_t* end;
  };

  static size_t runsFor(size_t rowStep) {
    return (kPlan.rows * rowStep + 3 * kLanes + kRun - 1) / kRun;
  }

  static constexpr size_t offsetOf(size_t share, size_t column) {
    return (column * kPlan.shares + share) * kPitch;
  }

  Spot spotOf(size_t place) const {
    uint8_t* run = first_ + place / kRun * kRunBytes;
    return {run + place % kRun, run + kRun};
  }

  KORVEL_INLINE void advance(Spot& spot) const {
    spot.at += kLanes;
    if (spot.at < spot.end) return;
    spot.at += kRunBytes - kRun;
    spot.end += kRunBytes;
    if (spot.at < end_) return;
    spot.at -= end_ - first_;
    spot.end -= end_ - first_;
  }

  KORVEL_INLINE void copyAfterPreviousRun() {
    uint8_t* run = (here_.at == first_ ? end_ : here_.at) - kRunBytes;
    for (size_t i = 0; i < kStreams; ++i) {
      store(run + i * kPitch + kRun, load<Bytes>(here_.at + i * kPitch));
    }
  }

  uint8_t* first_;
  uint8_t* end_;
  Spot here_;
  uint8_t* before_[kPlan.rows];  // these three by distance in rows
  uint8_t* above_[kPlan.rows];
  Spot after_[kPlan.rows];
};

}  // namespace

}  // namespace KORVEL_TARGET

#endif
