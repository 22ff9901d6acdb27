// The matrices and error kernels of the classic halftones, as data.
// Kernels list their taps in the order in which the neighbours are updated.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_IMAGE_DITHER_TABLES_H
#define KORVEL_IMAGE_DITHER_TABLES_H

#include <cstdint>
#include <span>

// Ordered dither on 16 levels; row y mod 4, column x mod 4.
constexpr int32_t kOrderedMatrix[4][4] = {
    {0, 8, 2, 10},
    {12, 4, 14, 6},
    {3, 11, 1, 9},
    {15, 7, 13, 5},
};

// One neighbour of the current pixel and its share of the error; dy grows with stored rows.
struct DiffusionTap {
  int8_t dx;
  int8_t dy;
  uint8_t weight;
};

// Taps whose weights sum to the divisor.
struct DiffusionKernel {
  int32_t divisor;
  std::span<const DiffusionTap> taps;
};

// clang-format off: the layout shows where each tap is.
// R. W. Floyd, L. Steinberg: An adaptive algorithm for spatial grey scale, 1976.
constexpr DiffusionTap kFloydSteinbergTaps[] = {
    /*                  */ {1, 0, 7},
    {-1, 1, 3},
    {0, 1, 5},
    {1, 1, 1},
};

// D. Burkes: Presentation of the Burkes error filter, 1988.
constexpr DiffusionTap kBurkesTaps[] = {
    /*                               */ {1, 0, 8},
    {2, 0, 4},
    {-2, 1, 2},
    {-1, 1, 4},
    {0, 1, 8},
    {1, 1, 4},
    {2, 1, 2},
};

// P. Stucki: MECCA, a multiple-error correcting computation algorithm, 1981.
constexpr DiffusionTap kStuckiTaps[] = {
    /*                               */ {1, 0, 8},
    {2, 0, 4},
    {-2, 1, 2},
    {-1, 1, 4},
    {0, 1, 8},
    {1, 1, 4},
    {2, 1, 2},
    {-2, 2, 1},
    {-1, 2, 2},
    {0, 2, 4},
    {1, 2, 2},
    {2, 2, 1},
};

// J. F. Jarvis, C. N. Judice, W. H. Ninke: A survey of techniques for the display of continuous
// tone pictures on bilevel displays, 1976.
constexpr DiffusionTap kJarvisJudiceNinkeTaps[] = {
    /*                               */ {1, 0, 7},
    {2, 0, 5},
    {-2, 1, 3},
    {-1, 1, 5},
    {0, 1, 7},
    {1, 1, 5},
    {2, 1, 3},
    {-2, 2, 1},
    {-1, 2, 3},
    {0, 2, 5},
    {1, 2, 3},
    {2, 2, 1},
};

// F. Sierra: three-row filter, 1989.
constexpr DiffusionTap kSierraTaps[] = {
    /*                               */ {1, 0, 5},
    {2, 0, 3},
    {-2, 1, 2},
    {-1, 1, 4},
    {0, 1, 5},
    {1, 1, 4},
    {2, 1, 2},
    /*       */ {-1, 2, 2},
    {0, 2, 3},
    {1, 2, 2},
};

// R. L. Stevenson, G. R. Arce: Binary display of hexagonally sampled continuous-tone images, 1985.
constexpr DiffusionTap kStevensonArceTaps[] = {
    /*                                   */ {2, 0, 32},
    {-3, 1, 12},
    {-1, 1, 26},
    {1, 1, 30},
    {3, 1, 16},
    /*   */ {-2, 2, 12},
    {0, 2, 26},
    {2, 2, 12},
    {-3, 3, 5},
    {-1, 3, 12},
    {1, 3, 12},
    {3, 3, 5},
};
// clang-format on

constexpr DiffusionKernel kFloydSteinberg{16, kFloydSteinbergTaps};
constexpr DiffusionKernel kBurkes{32, kBurkesTaps};
constexpr DiffusionKernel kStucki{42, kStuckiTaps};
constexpr DiffusionKernel kJarvisJudiceNinke{48, kJarvisJudiceNinkeTaps};
constexpr DiffusionKernel kSierra{32, kSierraTaps};
constexpr DiffusionKernel kStevensonArce{200, kStevensonArceTaps};

#endif
