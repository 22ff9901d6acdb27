// The stencil library's operations in their plain form, one pixel at a time.
// They are what the fast forms must agree with; the filter does not link them. Grey conversion and
// tone curve have one form only.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_LITERAL_H
#define KORVEL_TATTOO_LITERAL_H

#include "tattoo/qm_image.h"

// Each is what the function of the same name outside is (filters.h, diffusion.h, pipelines.h).
namespace literal {

int thresh_global_moments(const QMImage& grey);
QMImage convolve1D(const QMImage& src, const double* kernel, int size, bool horizontal);
QMImage enh_gaussian_filter_fast(const QMImage& src, int size, double sigma);
QMImage add_Weighted(const QMImage& src, const QMImage& blurred, float amount);
QMImage enh_unsharp_mask(const QMImage& src, float amount, int size);
QMImage edf_cus(const QMImage& grey, int threshold);
QMImage qmTattooDithering(const QMImage& src);
QMImage qmTattooDitheringZ4(const QMImage& src);

}  // namespace literal

#endif
