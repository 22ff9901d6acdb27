// Enhancement filters for grey images, from which the stencil halftones are composed.
// But for cvtGray all take one byte per pixel. No argument is checked; kernel sizes are odd.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_FILTERS_H
#define KORVEL_TATTOO_FILTERS_H

#include "tattoo/qm_image.h"

// Grey conversion by 0.299 red + 0.587 green + 0.114 blue; a fourth byte is ignored.
QMImage cvtGray(const QMImage& src);

// Moment-preserving threshold (W.-H. Tsai: Moment-preserving thresholding, 1985), summed in
// single precision. Returns 0..255; 128 when the discriminant is negative or no finite number
// (one grey level, and many almost solid pages); -1 when no level passes.
int thresh_global_moments(const QMImage& grey);

// Bends the levels below and from `threshold` on with an exponent each, in place;
// 0, threshold and 255 stay.
void enh_piecewise_gamma(QMImage& grey, int threshold, float gammaLow, float gammaHigh);

// Fills `out` with `size` normalised weights.
void generateGaussianKernel1D(int size, double sigma, double* out);

// One pass of a separable filter; edge pixels repeat beyond the border.
QMImage convolve1D(const QMImage& src, const double* kernel, int size, bool horizontal);

// Gaussian blur in two passes with an 8-bit image between them.
QMImage enh_gaussian_filter_fast(const QMImage& src, int size, double sigma);

// Fills `out` with size * size normalised weights, row after row.
void generateGaussianKernel(int size, double sigmaX, double sigmaY, double* out);

// Gaussian blur in one two-dimensional pass.
QMImage enh_gaussian_filter(const QMImage& src, int size, double sigmaX, double sigmaY);

// src + amount * (src - blurred), rounded and clamped; both images have the same size.
QMImage add_Weighted(const QMImage& src, const QMImage& blurred, float amount);

// Unsharp mask: `amount` percent of the detail above a Gaussian of sigma 3.
QMImage enh_unsharp_mask(const QMImage& src, float amount, int size);

#endif
