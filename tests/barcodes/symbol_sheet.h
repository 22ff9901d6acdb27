// A document of many barcodes: where each one is, in dots of the printer, and the PDF that draws it
// with filled rectangles. Positions are exact fractions of dots; they do not depend on any
// rasteriser. SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_BARCODES_SYMBOL_SHEET_H
#define KORVEL_TESTS_BARCODES_SYMBOL_SHEET_H

#include <string>
#include <vector>

#include "tests/barcodes/symbols.h"

// How modules are painted: an operator of PDF for the ground around the symbol, and one for its
// modules.
struct Paint {
  const char* name;
  const char* ground;  // "1 g"; empty for bare paper
  const char* bars;    // "0 g"
  // The ground is drawn dark and the light modules are painted onto it.
  bool lightOnDark = false;
};

struct PlacedSymbol {
  const Symbol* symbol = nullptr;
  double module = 0;  // dots
  double left = 0;    // dots from the page's upper left corner, of the first module
  double top = 0;
  size_t page = 0;
  double quiet() const { return 10 * module; }
  double width() const { return symbol->columns() * module; }
  double height() const { return symbol->height() * module; }
};

class SymbolSheet {
 public:
  // Pages of whole points; `dpi` dots per inch.
  SymbolSheet(unsigned dpi, int widthPoints, int heightPoints);

  // Places a symbol with its quiet zone at the next free position, which is a whole dot, moved by
  // `offset` dots in both directions.
  void add(const Symbol& symbol, double module, double offset);

  const std::vector<PlacedSymbol>& symbols() const { return symbols_; }
  // "Custom.612x1440"
  std::string pageSize() const;
  int heightDots() const { return height_; }

  enum class Turn { kUpright, kLying };
  // Lying pages are drawn turned by 90 degrees and described by /Rotate, as programs do that print
  // landscape labels.
  std::string pdf(const Paint& paint, Turn turn = Turn::kUpright) const;
  // Every symbol as a picture of one bit per pixel and one pixel per module, stretched to its size.
  std::string pdfOfImages() const;

 private:
  std::string content(size_t page, const Paint& paint) const;
  std::string document(const std::vector<std::string>& contents, Turn turn) const;

  double dotsPerPoint_;
  int widthPoints_;
  int heightPoints_;
  int width_;   // dots, cut off
  int height_;  // dots
  int x_ = 0;   // the next free place
  int y_ = 0;
  int shelf_ = 0;  // height of the symbols that are side by side there
  size_t page_ = 0;
  std::vector<PlacedSymbol> symbols_;
};

#endif
