// The barcodes that the tests print: one example of each symbology, encoded by zint. A symbol is a
// grid of modules; how large a module is and where it is printed is decided elsewhere.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_BARCODES_SYMBOLS_H
#define KORVEL_TESTS_BARCODES_SYMBOLS_H

#include <string>
#include <vector>

struct Symbology {
  const char* name;
  int zintNumber;
  const char* data;
  const char* answer;  // what every reader's answer contains
  int rowModules;      // height of a row of modules; 0 for linear symbols
  bool zbar;           // which readers know it
  bool dmtx;
  bool zxing;
};

const std::vector<Symbology>& symbologies();

struct Symbol {
  const Symbology* symbology = nullptr;
  std::vector<std::string> rows;  // '1' is a dark module; rows of equal length
  int columns() const { return rows.empty() ? 0 : static_cast<int>(rows[0].size()); }
  // In modules. Linear symbols are as high as 15 of them.
  int height() const;
};

// Encoded by zint, one process per symbology. No rows when zint fails.
Symbol encode(const Symbology& symbology);

#endif
