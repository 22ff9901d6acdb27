// Finds the diffusion kernels of a target.
// SPDX-License-Identifier: Apache-2.0
#include "image/diffusion/diffusion_rows.h"

#define KORVEL_DECLARE(enumerator, name)     \
  namespace name {                           \
  extern const DiffusionRows kDiffusionRows; \
  }
KORVEL_EACH_TARGET(KORVEL_DECLARE)
#undef KORVEL_DECLARE

const DiffusionRows& diffusionRows(Target target) {
  switch (target) {
#define KORVEL_FIND(enumerator, name) \
  case Target::enumerator:            \
    return name::kDiffusionRows;
    KORVEL_EACH_TARGET(KORVEL_FIND)
#undef KORVEL_FIND
    default:
      return portable::kDiffusionRows;
  }
}

const DiffusionRows& diffusionRows() { return diffusionRows(chosenTarget()); }
