// How much wider or narrower the printed elements of a symbol are than its modules say, in dots.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_BARCODES_BAR_GROWTH_H
#define KORVEL_TESTS_BARCODES_BAR_GROWTH_H

#include "tests/barcodes/printed_page.h"
#include "tests/barcodes/symbol_sheet.h"

struct Growth {
  double sum = 0;  // of the dark elements
  double least = 0;
  double most = 0;
  double worst = 0;  // the largest difference of any element, dark or light
  long elements = 0;
  long merged = 0;  // rows of modules whose elements have merged
  double mean() const { return elements == 0 ? 0 : sum / static_cast<double>(elements); }
  void add(double darkGrowth);
};

// Measures every row of modules through its middle, along the row.
void measure(const DotPage& page, const PlacedSymbol& placed, Growth* growth);

#endif
