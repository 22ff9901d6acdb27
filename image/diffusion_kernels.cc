// Error diffusion with as many rows in flight as a vector has lanes.
// SPDX-License-Identifier: Apache-2.0
#include "image/diffusion_plan.h"
#include "image/diffusion_rows.h"
#include "lanes/lanes.h"

namespace KORVEL_TARGET {

namespace {

constexpr size_t kBlock = 8;  // columns
constexpr size_t kRun = 8;
constexpr size_t kPitch = (kRun + 1) * kLanes;

// n vectors as one array, its two halves interleaved: one turn of the index bits.
template <size_t kCount>
KORVEL_INLINE void shuffleOnce(Bytes (&v)[kCount]) {
  Bytes old[kCount];
  for (size_t i = 0; i < kCount; ++i) old[i] = v[i];
  for (size_t i = 0; i < kCount / 2; ++i) {
    v[2 * i] = interleaveLow(old[i], old[i + kCount / 2]);
    v[2 * i + 1] = interleaveHigh(old[i], old[i + kCount / 2]);
  }
}

struct RowStart {
  size_t row = 0;
  size_t place = 0;
  size_t block() const { return place / kLanes; }
  size_t lane() const { return place % kLanes; }
  void next(size_t rowStep) {
    ++row;
    place += rowStep;
  }
};

struct Feed {
  alignas(kLanes) uint8_t open[kBlock][kLanes]{};
  alignas(kLanes) uint8_t tail[kLanes][kBlock]{};
  const uint8_t* at[kLanes];
  size_t step[kLanes]{};

  Feed() {
    for (size_t lane = 0; lane < kLanes; ++lane) at[lane] = tail[lane];
  }

  void openColumns(size_t lane, size_t count) {
    for (size_t i = 0; i < kBlock; ++i) open[i][lane] = i < count ? uint8_t{0xFF} : uint8_t{0};
  }
  void begin(size_t lane, const uint8_t* row) {
    at[lane] = row;
    step[lane] = kBlock;
    openColumns(lane, kBlock);
  }
  void lastBlock(size_t lane, const uint8_t* from, size_t count) {
    for (size_t i = 0; i < count; ++i) tail[lane][i] = from[i];
    at[lane] = tail[lane];
    step[lane] = 0;
    openColumns(lane, count);
  }

  KORVEL_INLINE void take(Bytes (&tile)[kBlock]) {
    for (size_t i = 0; i < kBlock; ++i) {
      const Bytes upper = loadEights(at[i], at[(i + 16) % kLanes]);
      const Bytes lower = loadEights(at[i + 8], at[(i + 24) % kLanes]);
      tile[i] = interleaveLow(upper, lower) ^ splat<Bytes>(0x80);
    }
    shuffleOnce(tile);
    shuffleOnce(tile);
    shuffleOnce(tile);
    for (size_t lane = 0; lane < kLanes; ++lane) at[lane] += step[lane];
  }
};

struct Drain {
  alignas(kLanes) uint8_t raw[kBlock][kLanes]{};
  uint8_t* groups;
  size_t count;
  size_t group = 0;

  KORVEL_INLINE void flush() {
    Bytes v[kBlock];
    for (size_t i = 0; i < kBlock; ++i) v[i] = load<Bytes>(raw[i]);
    shuffleOnce(v);
    shuffleOnce(v);
    shuffleOnce(v);
    for (size_t i = 0; i < kBlock; ++i) store(groups + (group * kBlock + i) * kLanes, v[i]);
  }
  KORVEL_INLINE void put(size_t block, Bytes bits) {
    store(raw[block % kBlock], bits);
    if (block % kBlock == kBlock - 1) {
      flush();
      group = group + 1 == count ? 0 : group + 1;
    }
  }
  void finish(const RowStart& start, size_t now, uint8_t* to, size_t width) {
    flush();
    const size_t place =
        start.lane() % 16 / 2 * kLanes + start.lane() / 16 * 16 + start.lane() % 2 * 8;
    size_t at = start.block();
    const size_t end = at + (width + 7) / 8;
    size_t g = (group + count - (now / kBlock - at / kBlock)) % count;
    while (at < end) {
      const uint8_t* from = groups + g * kBlock * kLanes + place;
      const size_t first = at % kBlock;
      const size_t some = kBlock - first < end - at ? kBlock - first : end - at;
      if (some == kBlock) {
        __builtin_memcpy(to, from, kBlock);
      } else {
        for (size_t i = 0; i < some; ++i) to[i] = from[first + i];
      }
      to += some;
      at += some;
      g = g + 1 == count ? 0 : g + 1;
    }
    if (width % 8 != 0) to[-1] = static_cast<uint8_t>(to[-1] & (0xFF00 >> (width % 8)));
  }
};

template <const DiffusionKernel& kKernel>
struct Flow {
  static constexpr DiffusionPlan kPlan = planOf(kKernel);
  static_assert(isExact(kPlan, kKernel));
  static constexpr size_t kRunBytes = kPlan.shares * kBlock * kPitch;

  struct Cursor {
    uint8_t* at;
    uint8_t* end;
    void advance(const Flow& flow) {
      at += kLanes;
      if (at < end) return;
      at += kRunBytes - kRun * kLanes;
      end += kRunBytes;
      if (at < flow.ringEnd) return;
      at -= flow.ringEnd - flow.ring;
      end -= flow.ringEnd - flow.ring;
    }
  };

  uint8_t* ring;
  uint8_t* ringEnd;
  Cursor here;
  uint8_t* before[kPlan.rows];
  uint8_t* above[kPlan.rows];
  Cursor after[kPlan.rows];
  SignedBytes past[2][kPlan.shares];

  static size_t rowStep(size_t width) {
    size_t blocks = (width + static_cast<size_t>(kPlan.reach) + kBlock - 1) / kBlock;
    if (blocks < 2 * kLanes) blocks = 2 * kLanes;
    return blocks | 1;
  }
  static size_t runs(size_t step) {
    return (kPlan.rows * step + 3 * kLanes + kRun * kLanes - 1) / (kRun * kLanes);
  }

  Cursor cursor(size_t place) const {
    const size_t run = kRun * kLanes;
    uint8_t* start = ring + place / run * kRunBytes;
    return {start + place % run, start + run};
  }

  Flow(uint8_t* memory, size_t step) : ring(memory), ringEnd(memory + runs(step) * kRunBytes) {
    const size_t places = runs(step) * kRun * kLanes;
    __builtin_memset(ring, 0, static_cast<size_t>(ringEnd - ring));
    here = cursor(0);
    for (size_t i = 0; i < kPlan.rows; ++i) {
      after[i] = cursor((places - (i + 1) * step - kLanes) % places);
      before[i] = after[i].at;
      after[i].advance(*this);
      above[i] = after[i].at;
      after[i].advance(*this);
    }
    for (auto& c : past)
      for (auto& s : c) s = SignedBytes{};
  }

  static constexpr size_t stream(size_t share, size_t column) {
    return (column * kPlan.shares + share) * kPitch;
  }

  template <size_t kSource, size_t kColumn>
  KORVEL_INLINE SignedBytes from() const {
    constexpr DiffusionSource source = kPlan.source[kSource];
    if constexpr (source.dy == 0) {
      return past[source.dx - 1][source.share];
    } else {
      constexpr int column = static_cast<int>(kColumn) - source.dx;
      constexpr size_t row = static_cast<size_t>(source.dy - 1);
      constexpr size_t offset = stream(source.share, static_cast<size_t>(column + 8) % 8);
      if constexpr (column < 0) return load<SignedBytes>(before[row] + offset);
      if constexpr (column >= 8) return load<SignedBytes>(after[row].at + offset);
      return load<SignedBytes>(above[row] + offset);
    }
  }

  template <size_t kShare>
  KORVEL_INLINE static void makeShare(Bytes error, Words low, Words high, Bytes* shares) {
    constexpr DiffusionShare share = kPlan.share[kShare];
    if constexpr (share.factor != 0) {
      const auto factor = splat<Words>(share.factor);
      shares[kShare] = packWords(as<SignedWords>(multiplyHigh(low, factor)),
                                 as<SignedWords>(multiplyHigh(high, factor)));
    } else {
      Bytes of = error;
      if constexpr (share.shifted != DiffusionShare::kOfError) of = shares[share.shifted];
      shares[kShare] = as<Bytes>(as<Words>(of) >> share.shift) & splat<Bytes>(0xFF >> share.shift);
    }
  }

  template <size_t kColumn, size_t... kSource, size_t... kShare>
  KORVEL_INLINE void step(Bytes grey, const Feed& feed, Bytes& bits, shuffles::Indexes<kSource...>,
                          shuffles::Indexes<kShare...>) {
    auto value = as<SignedBytes>(grey);
    ((value = addSaturated(value, from<kSource, kColumn>())), ...);
    const auto white = as<Bytes>(value > 0);
    bits = bits + bits - white;
    const Bytes error =
        ((as<Bytes>(value) ^ splat<Bytes>(0x80)) ^ white) & load<Bytes>(feed.open[kColumn]);
    Bytes shares[kPlan.shares];
    const Words low = widenLow(error);
    const Words high = widenHigh(error);
    (makeShare<kShare>(error, low, high, shares), ...);
    ((past[1][kShare] = past[0][kShare]), ...);
    ((past[0][kShare] = as<SignedBytes>((shares[kShare] ^ white) - white)), ...);
    (store(here.at + stream(kShare, kColumn), past[0][kShare]), ...);
  }

  template <size_t... kColumn>
  KORVEL_INLINE Bytes block(Feed& feed, shuffles::Indexes<kColumn...>) {
    using Sources = typename shuffles::UpTo<kPlan.sources>::Type;
    using Shares = typename shuffles::UpTo<kPlan.shares>::Type;
    Bytes tile[kBlock];
    feed.take(tile);
    Bytes bits{};
    (step<kColumn>(tile[kColumn], feed, bits, Sources{}, Shares{}), ...);
    return bits;
  }

  KORVEL_INLINE void advance() {
    if (here.at + kRun * kLanes == here.end) repeatInMargin();
    here.advance(*this);
    for (size_t i = 0; i < kPlan.rows; ++i) {
      before[i] = above[i];
      above[i] = after[i].at;
      after[i].advance(*this);
    }
  }

  // The first block of a run stands behind the run before it, too.
  void repeatInMargin() {
    uint8_t* run = here.at == ring ? ringEnd - kRunBytes : here.at - kRunBytes;
    for (size_t i = 0; i < kPlan.shares * kBlock; ++i) {
      store(run + i * kPitch + kRun * kLanes, load<Bytes>(here.at + i * kPitch));
    }
  }
};

template <const DiffusionKernel& kKernel>
size_t scratchBytes(size_t width) {
  using F = Flow<kKernel>;
  const size_t step = F::rowStep(width);
  return F::runs(step) * F::kRunBytes + (step / kBlock + 3) * kBlock * kLanes + kLanes;
}

template <const DiffusionKernel& kKernel>
void halftone(const DiffusionPage& page, uint8_t* scratch) {
  using F = Flow<kKernel>;
  scratch += -reinterpret_cast<uintptr_t>(scratch) % kLanes;
  const size_t step = F::rowStep(page.width);
  F flow(scratch, step);
  Feed feed;
  Drain drain;
  drain.groups = flow.ringEnd;
  drain.count = step / kBlock + 3;
  RowStart starts;
  RowStart ends;
  const size_t whole = page.width / kBlock;
  for (size_t block = 0;; ++block) {
    if (block == ends.block() + whole + 1) {
      feed.openColumns(ends.lane(), 0);
      drain.finish(ends, block, page.bits + ends.row * page.bitsStride, page.width);
      ends.next(step);
      if (ends.row == page.height) return;
    }
    if (block == starts.block() && starts.row < page.height) {
      feed.begin(starts.lane(), page.grey + starts.row * page.greyStride);
      starts.next(step);
    }
    if (block == ends.block() + whole) {
      feed.lastBlock(ends.lane(), page.grey + ends.row * page.greyStride + whole * kBlock,
                     page.width % kBlock);
    }
    drain.put(block, flow.block(feed, typename shuffles::UpTo<kBlock>::Type{}));
    flow.advance();
  }
}

template <const DiffusionKernel& kKernel>
constexpr DiffusionMethod kMethod = {scratchBytes<kKernel>, halftone<kKernel>};

}  // namespace

extern const DiffusionRows kDiffusionRows;
const DiffusionRows kDiffusionRows = {kMethod<kFloydSteinberg>, kMethod<kBurkes>,
                                      kMethod<kStucki>,         kMethod<kJarvisJudiceNinke>,
                                      kMethod<kSierra>,         kMethod<kStevensonArce>};

}  // namespace KORVEL_TARGET
