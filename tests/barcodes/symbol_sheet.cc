// Symbols fill shelves from left to right and pages from top to bottom. The PDF is written in dots
// from the upper left corner: one matrix per page turns them into points. SPDX-License-Identifier:
// Apache-2.0
#include "tests/barcodes/symbol_sheet.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>

namespace {

constexpr double kGap = 4;  // dots between symbols, so that offsets never make them overlap

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6f", value);
  return text;
}

std::string rectangle(double left, double top, double width, double height) {
  return number(left) + " " + number(top) + " " + number(width) + " " + number(height) + " re f\n";
}

struct Run {
  int from;
  int to;
};

// The runs of modules of one kind in a row.
void forEachRun(const std::string& row, char kind, const std::function<void(Run)>& visit) {
  for (size_t at = row.find(kind); at != std::string::npos;) {
    const size_t end = std::min(row.find_first_not_of(kind, at), row.size());
    visit({static_cast<int>(at), static_cast<int>(end)});
    at = row.find(kind, end);
  }
}

std::string modules(const PlacedSymbol& placed, char kind) {
  const double rowHeight = placed.height() / static_cast<double>(placed.symbol->rows.size());
  std::string drawing;
  for (size_t y = 0; y < placed.symbol->rows.size(); ++y) {
    const double top = placed.top + static_cast<double>(y) * rowHeight;
    forEachRun(placed.symbol->rows[y], kind, [&](Run run) {
      drawing += rectangle(placed.left + run.from * placed.module, top,
                           (run.to - run.from) * placed.module, rowHeight);
    });
  }
  return drawing;
}

std::string hexRow(const std::string& row) {
  const std::string padded = row + std::string((8 - row.size() % 8) % 8, '0');
  std::string hex;
  for (size_t at = 0; at < padded.size(); at += 4) {
    hex += "0123456789ABCDEF"[std::stoul(padded.substr(at, 4), nullptr, 2)];
  }
  return hex;
}

// As a stencil mask: its dark pixels are painted.
std::string image(const PlacedSymbol& placed) {
  const Symbol& symbol = *placed.symbol;
  std::string drawing = "q " + number(placed.width()) + " 0 0 " + number(-placed.height()) + " " +
                        number(placed.left) + " " + number(placed.top + placed.height()) +
                        " cm BI /W " + std::to_string(symbol.columns()) + " /H " +
                        std::to_string(symbol.rows.size()) +
                        " /IM true /BPC 1 /D [1 0] /F /AHx ID\n";
  for (const std::string& row : symbol.rows) drawing += hexRow(row);
  return drawing + "> EI Q\n";
}

std::string lightField(const PlacedSymbol& placed) {
  return rectangle(placed.left, placed.top, placed.width(), placed.height());
}

std::string painted(const PlacedSymbol& placed, const Paint& paint) {
  const double quiet = placed.quiet();
  std::string drawing;
  if (*paint.ground != '\0') {
    drawing += std::string(paint.ground) + "\n" +
               rectangle(placed.left - quiet, placed.top - quiet / 4, placed.width() + 2 * quiet,
                         placed.height() + quiet / 2);
  }
  if (!paint.lightOnDark) return drawing + paint.bars + "\n" + modules(placed, '1');
  return drawing + paint.bars + "\n" + lightField(placed) + "1 g\n" + modules(placed, '0');
}

std::string object(const std::string& body) { return body + " endobj\n"; }

}  // namespace

SymbolSheet::SymbolSheet(unsigned dpi, int widthPoints, int heightPoints)
    : dotsPerPoint_(dpi / 72.0),
      widthPoints_(widthPoints),
      heightPoints_(heightPoints),
      width_(static_cast<int>(widthPoints * dotsPerPoint_)),
      height_(static_cast<int>(heightPoints * dotsPerPoint_)) {}

void SymbolSheet::add(const Symbol& symbol, double module, double offset) {
  PlacedSymbol placed{&symbol, module};
  const int width = static_cast<int>(std::ceil(placed.width() + 2 * placed.quiet() + kGap));
  const int height = static_cast<int>(std::ceil(placed.height() + placed.quiet() + kGap));
  if (x_ + width > width_) {
    x_ = 0;
    y_ += shelf_;
    shelf_ = 0;
  }
  if (y_ + height > height_) {
    x_ = y_ = shelf_ = 0;
    ++page_;
  }
  placed.left = x_ + std::ceil(placed.quiet()) + offset;
  placed.top = y_ + std::ceil(placed.quiet() / 2) + offset;
  placed.page = page_;
  symbols_.push_back(placed);
  x_ += width;
  shelf_ = std::max(shelf_, height);
}

std::string SymbolSheet::pageSize() const {
  return "Custom." + std::to_string(widthPoints_) + "x" + std::to_string(heightPoints_);
}

std::string SymbolSheet::content(size_t page, const Paint& paint) const {
  std::string drawing;
  for (const PlacedSymbol& placed : symbols_) {
    if (placed.page == page) drawing += painted(placed, paint);
  }
  return drawing;
}

std::string SymbolSheet::pdf(const Paint& paint, Turn turn) const {
  std::vector<std::string> contents;
  for (size_t page = 0; page <= page_; ++page) contents.push_back(content(page, paint));
  return document(contents, turn);
}

std::string SymbolSheet::pdfOfImages() const {
  std::vector<std::string> contents(page_ + 1);
  for (const PlacedSymbol& placed : symbols_) contents[placed.page] += image(placed);
  return document(contents, Turn::kUpright);
}

std::string SymbolSheet::document(const std::vector<std::string>& contents, Turn turn) const {
  const bool lying = turn == Turn::kLying;
  const std::string width = std::to_string(lying ? heightPoints_ : widthPoints_);
  const std::string height = std::to_string(lying ? widthPoints_ : heightPoints_);
  const std::string scale = number(1 / dotsPerPoint_);
  // From dots, downwards, to points, upwards; lying pages have their top at the left.
  const std::string matrix = lying ? "0 " + scale + " " + scale + " 0 0 0 cm\n"
                                   : scale + " 0 0 -" + scale + " 0 " + height + " cm\n";
  std::string kids;
  std::string objects;
  int number = 3;
  for (const std::string& drawing : contents) {
    const std::string stream = matrix + drawing;
    kids += std::to_string(number) + " 0 R ";
    objects +=
        object(std::to_string(number) + " 0 obj <</Type /Page /Parent 2 0 R /MediaBox [0 0 " +
               width + " " + height + "]" + (lying ? " /Rotate 90" : "") + " /Contents " +
               std::to_string(number + 1) + " 0 R>>");
    objects += object(std::to_string(number + 1) + " 0 obj <</Length " +
                      std::to_string(stream.size()) + ">> stream\n" + stream + "endstream");
    number += 2;
  }
  return "%PDF-1.4\n" + object("1 0 obj <</Type /Catalog /Pages 2 0 R>>") +
         object("2 0 obj <</Type /Pages /Kids [" + kids + "] /Count " +
                std::to_string(contents.size()) + ">>") +
         objects + "trailer <</Root 1 0 R>>\n";
}
