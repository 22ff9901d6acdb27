// How many times as fast as the reference implementation the filter's code promises to be, measured
// in the same run on an A4 page.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_BENCH_TARGETS_H
#define KORVEL_BENCH_TARGETS_H

// A promise is kept when the least ratio over all repetitions reaches it. With `orCopy`, being no
// slower than a copy of as many bytes also keeps it.
struct Promise {
  const char* what;  // name of the benchmark, without its form
  double narrow;     // times as fast with 128-bit vectors
  double wide;       // with 256-bit vectors
  bool orCopy = false;
};

constexpr double kAsCopy = 0.0;  // nothing but the copy counts

constexpr Promise kPromises[] = {
    {"Burkes", 140, 220},
    {"Stucki", 120, 200},
    {"Jarvis-Judice-Ninke", 120, 200},
    {"Sierra", 140, 220},
    {"Stevenson-Arce", 100, 170},
    {"threshold", kAsCopy, kAsCopy, true},
    {"ordered 4x4", kAsCopy, kAsCopy, true},
    {"Bayer", kAsCopy, kAsCopy, true},
    {"stencil diffusion", 10, 16},
    {"unsharp mask", 12, 20},
    {"light", 10, 10, true},
    {"turn", 10, 10, true},
    {"mirror", 10, 10, true},
    {"negative", 10, 10, true},
    {"depth", 10, 10, true},
    {"pack", 10, 10, true},
    {"page, Jarvis-Judice-Ninke", 40, 40},
    {"page, ordered 4x4", 8, 8},
    {"page, stencil", 10, 10},
};

#endif
