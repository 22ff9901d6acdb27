// The two stencil halftones, from a page to black and white.
// They differ in the tone curve: a fixed knee and gentle bends, or the page's own threshold.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_PIPELINES_H
#define KORVEL_TATTOO_PIPELINES_H

#include "tattoo/qm_image.h"

// Both return a new grey image of the page's size in which every byte is 0 or 255; an image without
// area is returned as a copy. The page is only read.
QMImage qmTattooDithering(const QMImage& src);
QMImage qmTattooDitheringZ4(const QMImage& src);

// The same for grey pixels in memory of the caller: rows of `grey.width` bytes, 0 or 255, are
// written to `to`, `stride` bytes apart. `to` does not overlap the page, which is not empty.
void qmTattooDitherRows(const GreyRows& grey, unsigned char* to, size_t stride);
void qmTattooDitherRowsZ4(const GreyRows& grey, unsigned char* to, size_t stride);

#endif
