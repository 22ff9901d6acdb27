// What barcode readers make of printed symbols: zbar, libdmtx and zxing-cpp, each started once for
// all symbols that it knows.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_BARCODES_CODE_READERS_H
#define KORVEL_TESTS_BARCODES_CODE_READERS_H

#include <string>
#include <vector>

#include "tests/barcodes/printed_page.h"
#include "tests/barcodes/symbol_sheet.h"

struct Vote {
  const PlacedSymbol* symbol;
  std::string reader;
  bool read;
};

// One vote per symbol and reader that knows its symbology. Readers see each symbol with its quiet
// zone, three pixels per dot.
std::vector<Vote> votesOn(const std::vector<DotPage>& pages, const SymbolSheet& sheet);

#endif
