// The whole grid: every symbology at many widths and offsets, painted, turned and embedded in the
// ways that label programs use. Writes its figures as a table; docs/barcodes.md shows one run.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>

#include "tests/barcodes/bar_growth.h"
#include "tests/barcodes/code_readers.h"

namespace {

constexpr double kWidthsMm[] = {0.15, 0.17, 0.19, 0.21, 0.25, 0.27,
                                0.30, 0.33, 0.35, 0.40, 0.50, 0.60};
constexpr double kReadableMm = 0.25;
constexpr int kOffsets = 16;  // per dot

struct Variant {
  const char* name;
  Paint paint;
  SymbolSheet::Turn turn;
  bool images;
  int offsetStep;  // of the sixteenths
};

const Variant kVariants[] = {
    {"black", {"", "", "0 g"}, SymbolSheet::Turn::kUpright, false, 1},
    {"dark blue", {"", "", "0 0 0.5 rg"}, SymbolSheet::Turn::kUpright, false, 4},
    {"on light grey", {"", "0.85 g", "0 g"}, SymbolSheet::Turn::kUpright, false, 4},
    {"white on black", {"", "", "0 g", true}, SymbolSheet::Turn::kUpright, false, 4},
    {"lying page", {"", "", "0 g"}, SymbolSheet::Turn::kLying, false, 4},
    {"1-bit image", {"", "", "0 g"}, SymbolSheet::Turn::kUpright, true, 4},
};

struct Share {
  int read = 0;
  int all = 0;
  void add(bool was) {
    read += was ? 1 : 0;
    ++all;
  }
  double percent() const { return all == 0 ? 100 : 100.0 * read / all; }
};

struct Figures {
  Growth growth;
  Share narrow;  // votes below kReadableMm
  Share readable;
  std::vector<std::pair<double, Share>> byWidth;
};

std::string fixed(double value, int decimals) {
  char out[32];
  std::snprintf(out, sizeof out, "%.*f", decimals, value);
  return out;
}

std::string growthText(double value) { return (value < 0 ? "" : "+") + fixed(value, 2); }

std::string share(const Share& share) {
  return std::to_string(share.read) + " of " + std::to_string(share.all) + " (" +
         fixed(share.percent(), 1) + " %)";
}

SymbolSheet sheetOf(const std::vector<Symbol>& symbols, unsigned dpi, int offsetStep) {
  SymbolSheet sheet(dpi, 612, 1440);
  for (const double mm : kWidthsMm) {
    for (const Symbol& symbol : symbols) {
      for (int offset = 0; offset < kOffsets; offset += offsetStep) {
        sheet.add(symbol, mm / 25.4 * dpi, static_cast<double>(offset) / kOffsets);
      }
    }
  }
  return sheet;
}

// What a log needs to know: "zbar cannot read EAN-13 of 2.00 dots: 3 times".
void listUnread(const std::vector<Vote>& votes, unsigned dpi) {
  std::map<std::string, int> unread;
  for (const Vote& vote : votes) {
    const double module = vote.symbol->module;
    if (vote.read || module * 25.4 / dpi < kReadableMm - 0.001) continue;
    ++unread[vote.reader + " cannot read " + vote.symbol->symbol->symbology->name + " of " +
             fixed(module, 2) + " dots"];
  }
  for (const auto& [what, times] : unread) std::printf("%s: %d times\n", what.c_str(), times);
}

void count(const std::vector<Vote>& votes, unsigned dpi, Figures* figures) {
  for (const double mm : kWidthsMm) figures->byWidth.push_back({mm, {}});
  for (const Vote& vote : votes) {
    const double mm = vote.symbol->module * 25.4 / dpi;
    (mm > kReadableMm - 0.001 ? figures->readable : figures->narrow).add(vote.read);
    for (auto& [width, share] : figures->byWidth) {
      if (std::abs(width - mm) < 0.001) share.add(vote.read);
    }
  }
}

Figures run(const Variant& variant, unsigned dpi, const std::vector<Symbol>& symbols) {
  const SymbolSheet sheet = sheetOf(symbols, dpi, variant.offsetStep);
  const std::vector<DotPage> pages =
      printed({"label-" + std::to_string(dpi),
               variant.images ? sheet.pdfOfImages() : sheet.pdf(variant.paint, variant.turn),
               "application/pdf",
               {"PageSize=" + sheet.pageSize()}});
  Figures figures;
  EXPECT_EQ(pages.size(), sheet.symbols().back().page + 1);
  if (pages.size() <= sheet.symbols().back().page) return figures;
  for (const PlacedSymbol& placed : sheet.symbols()) {
    measure(pages[placed.page], placed, &figures.growth);
  }
  const std::vector<Vote> votes = votesOn(pages, sheet);
  listUnread(votes, dpi);
  count(votes, dpi, &figures);
  return figures;
}

// Where the table goes: KORVEL_BARCODE_TABLE, or standard output.
void write(const std::string& table) {
  const char* path = std::getenv("KORVEL_BARCODE_TABLE");
  if (path == nullptr) {
    std::fputs(table.c_str(), stdout);
    return;
  }
  std::ofstream(path) << table;
}

TEST(LongBarcodeGrid, GrowsNoBarAndIsRead) {
  std::vector<Symbol> symbols;
  for (const Symbology& symbology : symbologies()) symbols.push_back(encode(symbology));
  std::string table =
      "| resolution | drawn | growth, mean (least, most), dots | rows of modules run together | "
      "votes below "
      "0.25 mm | votes at 0.25 mm and more |\n|---|---|---|---|---|---|\n";
  std::string widths = "| resolution |";
  for (const double mm : kWidthsMm) widths += " " + fixed(mm, 2) + " mm |";
  widths += "\n|---|";
  for (size_t i = 0; i < std::size(kWidthsMm); ++i) widths += "---|";
  widths += "\n";
  for (const unsigned dpi : {203U, 300U}) {
    for (const Variant& variant : kVariants) {
      SCOPED_TRACE(std::string(variant.name) + ", " + std::to_string(dpi) + " dpi");
      const Figures figures = run(variant, dpi, symbols);
      EXPECT_NEAR(figures.growth.mean(), 0, 0.05);
      // Images are sampled at the middle of each dot, but without the fractions of their position.
      EXPECT_GE(figures.readable.percent(), variant.images ? 97 : 99.5);
      const std::string row =
          "| " + std::to_string(dpi) + " dpi | " + variant.name + " | " +
          growthText(figures.growth.mean()) + " (" + growthText(figures.growth.least) + ", " +
          growthText(figures.growth.most) + ") | " + std::to_string(figures.growth.merged) + " | " +
          share(figures.narrow) + " | " + share(figures.readable) + " |\n";
      std::fputs(row.c_str(), stdout);  // a run takes minutes
      table += row;
      if (&variant != kVariants) continue;
      widths += "| " + std::to_string(dpi) + " dpi |";
      for (const auto& [mm, votes] : figures.byWidth)
        widths += " " + fixed(votes.percent(), 0) + " % |";
      widths += "\n";
      std::fputs(widths.c_str(), stdout);
    }
  }
  write(table + "\nBlack bars, share of votes by module width:\n\n" + widths);
}

}  // namespace
