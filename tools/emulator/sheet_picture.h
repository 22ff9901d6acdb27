// The printed sheet of a page: the dots where the head prints them, blank paper where the printer
// has fed, and a mark where the paper was torn or cut.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_EMULATOR_SHEET_PICTURE_H
#define KORVEL_TOOLS_EMULATOR_SHEET_PICTURE_H

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "tools/common/result.h"
#include "tools/stream/page_picture.h"

namespace korvel {

enum class SheetDot { kPaper, kDot, kMark, kOutline };

// How a sheet ends: joined to the next one, at the tear-off edge, or cut.
enum class SheetEnd { kAttached, kTear, kCut };

// Rows of a mark at the end of the paper, and the dots of a dash of the tear mark.
inline constexpr size_t kMarkRows = 3;
inline constexpr size_t kDashDots = 8;

// Some twelve metres at 203 dots per inch.
inline constexpr size_t kMostBlankRows = 100'000;

struct SheetSize {
  size_t width;   // dots
  size_t height;  // rows
};

// Sets the dots of row `y`, which are all paper before.
using SheetRow = std::function<void(size_t y, std::vector<SheetDot>* dots)>;

// White paper, black dots, red marks, blue outlines: two bits per dot, with a palette of these four
// in this order. `dpi` must not be 0.
Result<void> writeSheetPng(const std::string& path, const SheetSize& size, unsigned dpi,
                           const SheetRow& row);

class SheetPicture {
 public:
  // The sheet is as wide as the head, or wider if the page is, so that no dot is lost. Rows have
  // the width of the area when the packets do not determine it. Missing bytes of the last row are
  // paper.
  SheetPicture(PagePicture page, size_t headDots);

  // Blank paper before and after the page; more than kMostBlankRows is not shown.
  void lead(size_t rows) { leadRows_ = std::min(rows, kMostBlankRows); }
  void feed(size_t rows) { tailRows_ = std::min(tailRows_ + rows, kMostBlankRows); }
  void end(SheetEnd end) { end_ = end; }

  const PagePicture& page() const { return page_; }
  SheetEnd end() const { return end_; }
  size_t pageRows() const { return pageRows_; }
  size_t rowBytes() const { return rowBytes_; }  // of the page
  size_t pageRight() const {
    return left_ + rowBytes_ * 8;
  }                                        // first dot to the right of the page's rows
  size_t width() const { return width_; }  // dots
  size_t paperRows() const { return leadRows_ + pageRows_ + tailRows_; }
  size_t height() const;                  // rows, including the mark's
  SheetDot at(size_t x, size_t y) const;  // inside width and height
  bool isBlank(size_t y) const;           // whether the row is paper that was fed

  // `dpi` must not be 0.
  Result<void> writePng(const std::string& path, unsigned dpi) const;

 private:
  PagePicture page_;
  size_t rowBytes_;
  size_t pageRows_;
  size_t left_;  // of the page, from the head's first dot
  size_t width_;
  size_t leadRows_ = 0;
  size_t tailRows_ = 0;
  SheetEnd end_ = SheetEnd::kAttached;
};

}  // namespace korvel

#endif
