// Error diffusion of whole grey pages to bits, for each SIMD target. It allocates nothing.
// On every target the bits are those of the reference implementation (cximage_reference.h).
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_IMAGE_DIFFUSION_DISPATCH_H
#define KORVEL_IMAGE_DIFFUSION_DISPATCH_H

#include <cstddef>
#include <cstdint>

#include "lanes/target.h"

// A grey page and where its bits go, leftmost pixel in the top bit, 1 for white. Nothing outside
// the pixels is read; of `bits` the bytes that hold pixels are written, their spare bits 0.
struct DiffusionPage {
  const uint8_t* grey;
  size_t greyStride;  // bytes between rows
  uint8_t* bits;      // does not overlap the grey rows
  size_t bitsStride;  // bytes between rows
  size_t width;       // pixels, not 0
  size_t height;      // rows, not 0
};

// One kernel of image/dither_tables.h.
struct DiffusionMethod {
  size_t (*scratchBytes)(size_t width);
  void (*halftone)(const DiffusionPage& page, uint8_t* scratch);  // scratch in any state
};

struct DiffusionKernels {
  DiffusionMethod floydSteinberg;
  DiffusionMethod burkes;
  DiffusionMethod stucki;
  DiffusionMethod jarvisJudiceNinke;
  DiffusionMethod sierra;
  DiffusionMethod stevensonArce;
};

const DiffusionKernels& diffusionKernels(Target target);  // an available one
const DiffusionKernels& diffusionKernels();               // the chosen target's

#endif
