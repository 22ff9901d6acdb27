// The arithmetic of the moment-preserving threshold, for those who count the levels themselves.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_MOMENTS_H
#define KORVEL_TATTOO_MOMENTS_H

// `histogram[v]` of `pixels` pixels have level v. Returns what thresh_global_moments does.
int momentThreshold(const int (&histogram)[256], int pixels);

#endif
