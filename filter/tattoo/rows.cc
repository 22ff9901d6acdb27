// Finds the row kernels of a target.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/rows.h"

// diffusion_rows.cc and blur_rows.cc, once a target.
#define KORVEL_DECLARE(enumerator, name)                                                          \
  namespace name {                                                                                \
  void diffuse(const StencilStripe& stripe);                                                      \
  void blur(const BlurWeights& weights, const uint16_t* const* rows, size_t count, uint16_t* to); \
  void weigh(const uint16_t* own, const uint16_t* blurred, size_t count, float alpha, float beta, \
             uint8_t* to);                                                                        \
  void widen(const uint8_t* from, size_t count, uint16_t* to);                                    \
  void narrow(const uint16_t* from, size_t count, uint8_t* to);                                   \
  constexpr TattooRows kTattooRows = {diffuse, blur, weigh, widen, narrow};                       \
  }
KORVEL_EACH_TARGET(KORVEL_DECLARE)
#undef KORVEL_DECLARE

const TattooRows& tattooRows(Target target) {
  switch (target) {
#define KORVEL_FIND(enumerator, name) \
  case Target::enumerator:            \
    return name::kTattooRows;
    KORVEL_EACH_TARGET(KORVEL_FIND)
#undef KORVEL_FIND
    default:
      return portable::kTattooRows;
  }
}

const TattooRows& tattooRows() { return tattooRows(chosenTarget()); }
