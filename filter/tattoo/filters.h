// Filters for grey images of which the stencil halftones are composed.
// No argument is checked; kernel sizes are odd.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_FILTERS_H
#define KORVEL_TATTOO_FILTERS_H

#include "tattoo/qm_image.h"

// Grey conversion by 0.299 red + 0.587 green + 0.114 blue; a fourth byte is ignored.
QMImage cvtGray(const QMImage& src);

// Moment-preserving threshold (W.-H. Tsai: Moment-preserving thresholding, 1985), summed in
// single precision. Returns 0..255; 128 when the discriminant is negative or not finite
// (one grey level, and many almost solid pages); -1 when no level passes.
int thresh_global_moments(const GreyRows& grey);

// The same threshold of `pixels` pixels, of which `histogram[v]` have level v.
int momentThreshold(const int (&histogram)[256], int pixels);

// Fills `out` with `size` normalised weights.
void generateGaussianKernel1D(int size, double sigma, double* out);

#endif
