// Finds the stencil kernels of a target.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/tattoo_kernels.h"

// In diffusion_rows.cc and blur_rows.cc, which are compiled once for each target.
#define KORVEL_DECLARE(enumerator, name)                                                          \
  namespace name {                                                                                \
  void diffuse(const StencilStripe& stripe);                                                      \
  void blur(const BlurWeights& weights, const uint16_t* const* rows, size_t count, uint16_t* to); \
  void weigh(const uint16_t* own, const uint16_t* blurred, size_t count, float alpha, float beta, \
             uint8_t* to);                                                                        \
  void tone(const uint8_t* from, size_t count, const uint8_t* levels, uint16_t* to);              \
  constexpr TattooKernels kTattooKernels = {diffuse, blur, weigh, tone};                          \
  }
KORVEL_EACH_TARGET(KORVEL_DECLARE)
#undef KORVEL_DECLARE

const TattooKernels& tattooKernels(Target target) {
  switch (target) {
#define KORVEL_FIND(enumerator, name) \
  case Target::enumerator:            \
    return name::kTattooKernels;
    KORVEL_EACH_TARGET(KORVEL_FIND)
#undef KORVEL_FIND
    default:
      return portable::kTattooKernels;
  }
}

const TattooKernels& tattooKernels() { return tattooKernels(chosenTarget()); }
