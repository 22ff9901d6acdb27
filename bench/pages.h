// The benchmark pages: the same bytes on every machine.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_BENCH_PAGES_H
#define KORVEL_BENCH_PAGES_H

#include <cstdint>
#include <vector>

// Grey rows without padding; 0 is paper.
struct GreyPage {
  int width;
  int height;
  std::vector<uint8_t> pixels;
};

// Letters, a grey ramp, a noisy photograph and white paper.
GreyPage mixedPage(int width, int height);

// A sheet of A4 at 300 dots per inch, and a 4 by 6 inch label at 203.
const GreyPage& a4Page();
const GreyPage& labelPage();

#endif
