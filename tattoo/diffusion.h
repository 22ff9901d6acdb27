// Error diffusion for stencils: a kernel of its own and a correction at white edges.
// Made to leave lone dots out of white areas next to black ones.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_DIFFUSION_H
#define KORVEL_TATTOO_DIFFUSION_H

#include "tattoo/qm_image.h"

// True exactly when 0 <= x < width and 0 <= y < height.
bool isWithinBounds(int x, int y, int width, int height);

// Quantises a grey image to 0 and 255: white where level plus error is above `threshold`
// (which may be -1). Rows top to bottom, each left to right.
QMImage edf_cus(const QMImage& grey, int threshold);

#endif
