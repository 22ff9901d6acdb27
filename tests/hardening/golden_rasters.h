// The raster streams of the golden jobs, with their options, for tests that damage them.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_HARDENING_GOLDEN_RASTERS_H
#define KORVEL_TESTS_HARDENING_GOLDEN_RASTERS_H

#include <cstddef>
#include <string>
#include <vector>

struct GoldenRaster {
  std::string name;
  size_t number = 0;  // its place among them
  std::string ppd;    // "label" or "stencil"
  std::string options;
  std::string bytes;
  std::vector<size_t> pageStarts;  // offset of each page's header
};

// In alphabetical order. Model names are left out, so that no job waits for a printer.
std::vector<GoldenRaster> goldenRasters();

constexpr size_t kRasterHeaderBytes = 1796;

#endif
