// Finds the diffusion kernels of a target.
// SPDX-License-Identifier: Apache-2.0
#include "image/diffusion/diffusion_dispatch.h"

#define KORVEL_DECLARE(enumerator, name)           \
  namespace name {                                 \
  extern const DiffusionKernels kDiffusionKernels; \
  }
KORVEL_EACH_TARGET(KORVEL_DECLARE)
#undef KORVEL_DECLARE

const DiffusionKernels& diffusionKernels(Target target) {
  switch (target) {
#define KORVEL_FIND(enumerator, name) \
  case Target::enumerator:            \
    return name::kDiffusionKernels;
    KORVEL_EACH_TARGET(KORVEL_FIND)
#undef KORVEL_FIND
    default:
      return portable::kDiffusionKernels;
  }
}

const DiffusionKernels& diffusionKernels() { return diffusionKernels(chosenTarget()); }
