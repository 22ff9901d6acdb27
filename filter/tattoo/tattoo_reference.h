// The reference implementation of the stencil library, over whole images, pixel by pixel.
// It defines the correct result: the filter's row-by-row code must give the same bytes on every
// processor. Only tests, benchmarks and fuzz targets link it.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_TATTOO_REFERENCE_H
#define KORVEL_TATTOO_TATTOO_REFERENCE_H

#include "tattoo/qm_image.h"

// Images have one byte per pixel, arguments are not checked, and kernel sizes are odd.
namespace reference {

int thresh_global_moments(const QMImage& grey);

// Bends the levels below and from `threshold` on with an exponent each, in place;
// 0, threshold and 255 stay.
void enh_piecewise_gamma(QMImage& grey, int threshold, float gammaLow, float gammaHigh);

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

// True exactly when 0 <= x < width and 0 <= y < height.
bool isWithinBounds(int x, int y, int width, int height);

// Quantises a grey image to 0 and 255: white where level plus error is above `threshold`
// (which may be -1). Rows top to bottom, each left to right.
QMImage edf_cus(const QMImage& grey, int threshold);

// The two stencil halftones, for images of any layout (pipelines.h).
QMImage qmTattooDithering(const QMImage& src);
QMImage qmTattooDitheringZ4(const QMImage& src);

}  // namespace reference

#endif
