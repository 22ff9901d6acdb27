// Finds the image kernels of a target.
// SPDX-License-Identifier: Apache-2.0
#include "image/image_kernels.h"

#define KORVEL_DECLARE(enumerator, name)   \
  namespace name {                         \
  extern const ImageKernels kImageKernels; \
  }
KORVEL_EACH_TARGET(KORVEL_DECLARE)
#undef KORVEL_DECLARE

const ImageKernels& imageKernels(Target target) {
  switch (target) {
#define KORVEL_FIND(enumerator, name) \
  case Target::enumerator:            \
    return name::kImageKernels;
    KORVEL_EACH_TARGET(KORVEL_FIND)
#undef KORVEL_FIND
    default:
      return portable::kImageKernels;
  }
}

const ImageKernels& imageKernels() { return imageKernels(chosenTarget()); }
