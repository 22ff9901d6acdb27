// How grey pixels reach the lanes of a diffusion kernel, and how its bits leave them.
// Lanes are rows at different columns; both ways turn blocks of eight columns by interleaving.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_IMAGE_DIFFUSION_FEED_AND_DRAIN_H
#define KORVEL_IMAGE_DIFFUSION_FEED_AND_DRAIN_H

#include <cstddef>
#include <cstdint>

#include "image/diffusion/diffusion_dispatch.h"
#include "image/diffusion/diffusion_ring.h"
#include "lanes/lanes.h"

namespace KORVEL_TARGET {

namespace {  // what is compiled for a wide machine stays in its object

using Tile = Bytes[kBlock];

// Interleaves the first half of the tile's bytes with the second, within each 16-byte half of the
// vectors: the index of every byte, written in bits, turns by one place.
KORVEL_INLINE void turnOnce(Tile& tile) {
  Tile turned;
  for (size_t i = 0; i < kBlock / 2; ++i) {
    turned[2 * i] = interleaveLow(tile[i], tile[i + kBlock / 2]);
    turned[2 * i + 1] = interleaveHigh(tile[i], tile[i + kBlock / 2]);
  }
  for (size_t i = 0; i < kBlock; ++i) tile[i] = turned[i];
}

// Fetches the grey of every lane's next block and turns it into one vector a column. A lane
// without a row stands still on a block of its own.
class DiffusionFeed {
 public:
  DiffusionFeed(const DiffusionPage& page, size_t rowStep)
      : page_(page), begun_(rowStep, page.height), ended_(rowStep, page.height) {
    for (size_t lane = 0; lane < kLanes; ++lane) at_[lane] = tail_[lane];
  }

  // Leads the lanes to this block, which is fetched next. Blocks come in order, from 0 on.
  KORVEL_INLINE void steer(size_t block) {
    if (begun_.isAt(block)) {
      at_[begun_.lane()] = page_.grey + begun_.row() * page_.greyStride;
      pace_[begun_.lane()] = kBlock;
      begun_.next();
    }
    if (ended_.isAt(block - page_.width / kBlock)) {
      endRow(ended_.lane(), page_.grey + ended_.row() * page_.greyStride);
      ended_.next();
    }
  }

  // A fetch is made in kBlock parts, so that it can be spread over the work on the block before.
  // The last part replaces that block's columns.
  template <size_t kPart>
  KORVEL_INLINE void fetch(Tile& tile) {
    if constexpr (kPart < 4) {
      takeLanes(tile, 2 * kPart);
      takeLanes(tile, 2 * kPart + 1);
    } else if constexpr (kPart != 6) {
      turnOnce(tile);
    }
    if constexpr (kPart == kBlock - 1) {
      for (size_t i = 0; i < kBlock; ++i) store(columns_[i], tile[i]);
      for (size_t lane = 0; lane < kLanes; ++lane) at_[lane] += pace_[lane];
    }
  }

  // Grey levels of all lanes, less 128. The column behind the last is the next block's first.
  template <size_t kColumn>
  KORVEL_INLINE Bytes column() const {
    return load<Bytes>(columns_[kColumn % kBlock]);
  }

 private:
  KORVEL_INLINE void takeLanes(Tile& tile, size_t lane) const {
    const Bytes one = loadEights(at_[lane], at_[(lane + 16) % kLanes]);
    const Bytes other = loadEights(at_[lane + 8], at_[(lane + 24) % kLanes]);
    tile[lane] = interleaveLow(one, other) ^ splat<Bytes>(0x80);
  }

  // The row's last pixels, fewer than a block, are read from a copy: nothing behind them is ours.
  void endRow(size_t lane, const uint8_t* row) {
    const size_t count = page_.width % kBlock;
    for (size_t i = 0; i < count; ++i) tail_[lane][i] = row[page_.width - count + i];
    at_[lane] = tail_[lane];
    pace_[lane] = 0;
  }

  const DiffusionPage page_;
  RowStarts begun_;
  RowStarts ended_;
  const uint8_t* at_[kLanes];
  size_t pace_[kLanes]{};
  uint8_t tail_[kLanes][kBlock]{};
  alignas(kLanes) uint8_t columns_[kBlock][kLanes]{};
};

// Which lanes have a pixel in each column of the current block.
class OpenColumns {
 public:
  // The lane has pixels in the first `count` columns from now on.
  void set(size_t lane, size_t count) {
    for (size_t i = 0; i < kBlock; ++i) masks_[i][lane] = i < count ? uint8_t{0xFF} : uint8_t{0};
  }

  KORVEL_INLINE Bytes mask(size_t column) const { return load<Bytes>(masks_[column]); }

 private:
  alignas(kLanes) uint8_t masks_[kBlock][kLanes]{};
};

// Collects the bits of every lane, a byte a block, until a row is complete. Eight blocks are a
// group and stand together, eight bytes a lane.
class DiffusionDrain {
 public:
  static size_t bytesFor(size_t blocksOfARow) { return groupsFor(blocksOfARow) * kGroupBytes; }

  DiffusionDrain(uint8_t* memory, size_t blocksOfARow)
      : first_(memory), end_(memory + bytesFor(blocksOfARow)), group_(memory) {}

  // Blocks come in order, from 0 on.
  KORVEL_INLINE void put(size_t block, Bytes bits) {
    store(latest_[block % kBlock], bits);
    if (block % kBlock != kBlock - 1) return;
    turnLatest();
    group_ += kGroupBytes;
    if (group_ == end_) group_ = first_;
  }

  // Writes a row whose last block has been put; `next` is the block that is put next. Spare bits
  // are 0: behind a row stands black, and no more than the error of one black pixel is added.
  void finish(const RowStarts& row, size_t next, uint8_t* to, size_t width) {
    turnLatest();
    const size_t lane = row.lane();
    const size_t back = (next / kBlock - row.block() / kBlock) * kGroupBytes;
    const size_t room = static_cast<size_t>(end_ - first_);
    const size_t group = static_cast<size_t>(group_ - first_);
    const size_t place = lane % 16 / 2 * kLanes + lane / 16 * 16 + lane % 2 * kBlock;
    const uint8_t* from = first_ + (group >= back ? group - back : group + room - back) + place;

    size_t left = (width + 7) / 8;
    const size_t skipped = row.block() % kBlock;
    const size_t some = kBlock - skipped < left ? kBlock - skipped : left;
    for (size_t i = 0; i < some; ++i) *to++ = from[skipped + i];
    left -= some;
    for (;; left -= kBlock, to += kBlock) {
      from += kGroupBytes;
      from -= from >= end_ ? room : 0;
      if (left < kBlock) break;
      __builtin_memcpy(to, from, kBlock);
    }
    for (size_t i = 0; i < left; ++i) *to++ = from[i];
  }

 private:
  static constexpr size_t kGroupBytes = kBlock * kLanes;

  // A row may begin and end within a group.
  static size_t groupsFor(size_t blocksOfARow) { return blocksOfARow / kBlock + 3; }

  KORVEL_INLINE void turnLatest() {
    Tile tile;
    for (size_t i = 0; i < kBlock; ++i) tile[i] = load<Bytes>(latest_[i]);
    turnOnce(tile);
    turnOnce(tile);
    turnOnce(tile);
    for (size_t i = 0; i < kBlock; ++i) store(group_ + i * kLanes, tile[i]);
  }

  uint8_t* first_;
  uint8_t* end_;
  uint8_t* group_;  // of the latest blocks
  alignas(kLanes) uint8_t latest_[kBlock][kLanes]{};
};

}  // namespace

}  // namespace KORVEL_TARGET

#endif
