// The two stencil halftones, from a page to black and white.
// They differ in the tone curve: a fixed knee and gentle bends, or the page's own threshold.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_PIPELINES_H
#define KORVEL_TATTOO_PIPELINES_H

#include "tattoo/qm_image.h"

// Both return a new grey image of the page's size whose every byte is 0 or 255; an image without
// area comes back as a copy. The page is only read.
QMImage qmTattooDithering(const QMImage& src);
QMImage qmTattooDitheringZ4(const QMImage& src);

#endif
