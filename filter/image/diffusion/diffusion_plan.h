// How an error kernel is computed with vectors, derived from its taps at compile time: the shares
// of the error, how each is divided, and the order in which they are added.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_IMAGE_DIFFUSION_PLAN_H
#define KORVEL_IMAGE_DIFFUSION_PLAN_H

#include <cstddef>
#include <cstdint>

#include "image/dither_tables.h"
#include "lanes/lanes.h"

namespace KORVEL_TARGET {

namespace {  // code compiled for a wide processor stays in its object file

// The share of an error for one weight, without its sign: error * weight / divisor. It is either
// the upper half of a product, or another value shifted, since
// floor(floor(x) / 2) = floor(x / 2).
struct DiffusionShare {
  static constexpr size_t kOfError = 99;

  uint32_t weight;
  uint32_t factor;  // the 65536-fold quotient, rounded up; 0 where a shift is enough
  size_t shifted;   // the share that is shifted, an earlier one, or kOfError
  int shift;
};

// A pixel takes the share from the pixel `dx` columns before and `dy` rows above.
struct DiffusionSource {
  int dx;
  int dy;
  size_t share;
};

constexpr size_t kMostShares = 8;  // of any kernel; indexing beyond it does not compile

// Sources are in the order in which the scan reaches them: rows from above, each left to right.
struct DiffusionPlan {
  size_t shares;
  size_t sources;
  size_t rows;  // above the current one
  int reach;    // columns to either side
  DiffusionShare share[kMostShares];
  DiffusionSource source[16];
};

constexpr uint32_t quotientInShifts(uint32_t larger, uint32_t smaller) {
  for (uint32_t shift = 1; shift < 8; ++shift) {
    if (smaller << shift == larger) return shift;
  }
  return 0;
}

constexpr DiffusionShare shareOf(uint32_t weight, uint32_t divisor, const DiffusionPlan& plan) {
  if (const uint32_t shift = quotientInShifts(divisor, weight)) {
    return {weight, 0, DiffusionShare::kOfError, static_cast<int>(shift)};
  }
  for (size_t i = 0; i < plan.shares; ++i) {
    if (const uint32_t shift = quotientInShifts(plan.share[i].weight, weight)) {
      return {weight, 0, i, static_cast<int>(shift)};
    }
  }
  return {weight, (65536 * weight + divisor - 1) / divisor, 0, 0};
}

// Shares are listed from the largest weight down.
constexpr DiffusionPlan planOf(const DiffusionKernel& kernel) {
  DiffusionPlan plan{};
  for (uint32_t weight = 255; weight > 0; --weight) {
    for (const DiffusionTap& tap : kernel.taps) {
      if (tap.weight != weight) continue;
      plan.share[plan.shares] = shareOf(weight, static_cast<uint32_t>(kernel.divisor), plan);
      ++plan.shares;
      break;
    }
  }
  for (int dy = 3; dy >= 0; --dy) {
    for (int dx = 3; dx >= -3; --dx) {
      for (const DiffusionTap& tap : kernel.taps) {
        if (tap.dx != dx || tap.dy != dy) continue;
        size_t share = 0;
        while (plan.share[share].weight != tap.weight) ++share;
        plan.source[plan.sources++] = {dx, dy, share};
        if (static_cast<size_t>(dy) > plan.rows) plan.rows = static_cast<size_t>(dy);
        if (dx > plan.reach) plan.reach = dx;
        if (-dx > plan.reach) plan.reach = -dx;
      }
    }
  }
  return plan;
}

// Whether every tap has become a source, those in the same row one or two columns to the left, and
// every share is exact for every possible error.
constexpr bool isExact(const DiffusionPlan& plan, const DiffusionKernel& kernel) {
  constexpr uint32_t kLargestError = 128;
  if (plan.sources != kernel.taps.size()) return false;
  for (size_t i = 0; i < plan.sources; ++i) {
    const DiffusionSource& source = plan.source[i];
    if (source.dy == 0 && (source.dx < 1 || source.dx > 2)) return false;
  }
  for (uint32_t error = 0; error <= kLargestError; ++error) {
    uint32_t shares[kMostShares]{};
    for (size_t i = 0; i < plan.shares; ++i) {
      const DiffusionShare& share = plan.share[i];
      const bool ofError = share.shifted == DiffusionShare::kOfError;
      shares[i] = share.factor != 0 ? (error * share.factor) >> 16
                                    : (ofError ? error : shares[share.shifted]) >> share.shift;
      if (shares[i] != error * share.weight / static_cast<uint32_t>(kernel.divisor)) return false;
      if (shares[i] > 127 || share.factor > 65535) return false;
    }
  }
  return true;
}

}  // namespace

}  // namespace KORVEL_TARGET

#endif
