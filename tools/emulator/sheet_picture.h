// What a user holds in hand after a page: the dots at their place across the head, fed length as
// blank paper, and a mark where the paper was torn or cut.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_EMULATOR_SHEET_PICTURE_H
#define KORVEL_TOOLS_EMULATOR_SHEET_PICTURE_H

#include <cstddef>
#include <string>

#include "tools/stream/page_picture.h"

namespace korvel {

enum class SheetDot { kPaper, kDot, kMark };

// How a sheet ends: it hangs on the next one, stands at the tear-off edge, or has been cut.
enum class SheetEnd { kAttached, kTear, kCut };

// Dot lines that a mark takes behind the paper, and the length of a dash of the tear mark.
inline constexpr size_t kMarkLines = 3;
inline constexpr size_t kDashDots = 8;

class SheetPicture {
 public:
  // The sheet is as wide as the head, or wider where the page reaches past it: no dot is lost.
  // When the packets leave the length of a row open, it is the area's. Missing bytes of a last
  // row are paper.
  SheetPicture(PagePicture page, size_t headDots);

  void lead(size_t lines) { leadLines_ = lines; }   // blank paper before the page
  void feed(size_t lines) { tailLines_ += lines; }  // blank paper behind it
  void end(SheetEnd end) { end_ = end; }

  const PagePicture& page() const { return page_; }
  SheetEnd end() const { return end_; }
  size_t pageLines() const { return pageLines_; }
  size_t rowBytes() const { return rowBytes_; }               // of the page
  size_t pageRight() const { return left_ + rowBytes_ * 8; }  // first dot behind the page's rows
  size_t width() const { return width_; }                     // dots
  size_t height() const;                                      // dot lines, the mark's included
  SheetDot at(size_t x, size_t y) const;                      // inside width and height

  // White paper, black dots, red marks: two bits a dot with a palette of these three, in this
  // order. Returns an empty text, or one sentence on what went wrong. `dpi` must not be 0.
  std::string writePng(const std::string& path, unsigned dpi) const;

 private:
  PagePicture page_;
  size_t rowBytes_;
  size_t pageLines_;
  size_t left_;  // of the page, from the head's first dot
  size_t width_;
  size_t leadLines_ = 0;
  size_t tailLines_ = 0;
  SheetEnd end_ = SheetEnd::kAttached;
};

}  // namespace korvel

#endif
