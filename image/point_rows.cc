// Row kernels whose pixels do not depend on each other.
// A vector at a time; what is left of a row goes byte by byte.
// SPDX-License-Identifier: Apache-2.0
#include "image/rows.h"
#include "lanes/lanes.h"

namespace KORVEL_TARGET {

namespace {

void reverseRow(const uint8_t* from, size_t count, uint8_t* to) {
  size_t left = count;
  for (; left >= kLanes; left -= kLanes, to += kLanes) {
    store(to, reverse(load<Bytes>(from + left - kLanes)));
  }
  while (left != 0) *to++ = from[--left];
}

}  // namespace

extern const ImageRows kImageRows;
const ImageRows kImageRows = {reverseRow};

}  // namespace KORVEL_TARGET
