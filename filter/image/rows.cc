// Finds the row kernels of a target.
// SPDX-License-Identifier: Apache-2.0
#include "image/rows.h"

#define KORVEL_DECLARE(enumerator, name) \
  namespace name {                       \
  extern const ImageRows kImageRows;     \
  }
KORVEL_EACH_TARGET(KORVEL_DECLARE)
#undef KORVEL_DECLARE

const ImageRows& imageRows(Target target) {
  switch (target) {
#define KORVEL_FIND(enumerator, name) \
  case Target::enumerator:            \
    return name::kImageRows;
    KORVEL_EACH_TARGET(KORVEL_FIND)
#undef KORVEL_FIND
    default:
      return portable::kImageRows;
  }
}

const ImageRows& imageRows() { return imageRows(chosenTarget()); }
