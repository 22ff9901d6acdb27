// Barcodes drawn with filled rectangles keep the widths of their bars, and every reader reads them.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/barcodes/bar_growth.h"
#include "tests/barcodes/code_readers.h"

namespace {

constexpr double kOffsets[] = {0, 0.25, 0.5, 0.75};
constexpr double kReadableMm = 0.25;

std::vector<Symbol> allSymbols() {
  std::vector<Symbol> symbols;
  for (const Symbology& symbology : symbologies()) symbols.push_back(encode(symbology));
  return symbols;
}

std::string described(const PlacedSymbol& placed) {
  return std::string(placed.symbol->symbology->name) + ", " + std::to_string(placed.module) +
         " dots per module, at " + std::to_string(placed.left) + ", " + std::to_string(placed.top);
}

class Barcodes : public testing::TestWithParam<unsigned> {};

INSTANTIATE_TEST_SUITE_P(At, Barcodes, testing::Values(203U, 300U),
                         [](const auto& each) { return std::to_string(each.param) + "Dpi"; });

TEST_P(Barcodes, KeepTheirBarsAndAreReadByAll) {
  const unsigned dpi = GetParam();
  const std::vector<Symbol> symbols = allSymbols();
  SymbolSheet sheet(dpi, 612, 1440);
  for (const Symbol& symbol : symbols) {
    ASSERT_GT(symbol.columns(), 10) << symbol.symbology->name;
    for (int module = 2; module <= 6; ++module) {
      for (const double offset : kOffsets) sheet.add(symbol, module, offset);
    }
  }
  const std::vector<DotPage> pages = printed({"label-" + std::to_string(dpi),
                                              sheet.pdf({"black", "", "0 g"}),
                                              "application/pdf",
                                              {"PageSize=" + sheet.pageSize()}});
  ASSERT_EQ(pages.size(), sheet.symbols().back().page + 1);

  Growth all;
  for (const PlacedSymbol& placed : sheet.symbols()) {
    Growth growth;
    measure(pages[placed.page], placed, &growth);
    EXPECT_EQ(growth.merged, 0) << described(placed);
    EXPECT_LE(growth.worst, 0.5) << described(placed);
    measure(pages[placed.page], placed, &all);
  }
  EXPECT_GT(all.elements, 10000);
  EXPECT_NEAR(all.mean(), 0, 0.05);

  int readable = 0;
  for (const Vote& vote : votesOn(pages, sheet)) {
    if (vote.symbol->module * 25.4 / dpi < kReadableMm) continue;
    EXPECT_TRUE(vote.read) << vote.reader << " cannot read " << described(*vote.symbol);
    ++readable;
  }
  EXPECT_EQ(readable, dpi == 203 ? 18 * 20 : 18 * 16);  // zbar 7, libdmtx 1, zxing-cpp 10
  RecordProperty("growth", std::to_string(all.mean()));
}

}  // namespace
