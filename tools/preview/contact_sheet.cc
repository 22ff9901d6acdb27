// Names are drawn on small canvases; names and pages are copied dot by dot into rows of two bits.
// SPDX-License-Identifier: Apache-2.0
#include "tools/preview/contact_sheet.h"

#include <algorithm>
#include <utility>

#include "drawing/dot_canvas.h"
#include "drawing/dot_font.h"
#include "tools/common/png_file.h"

namespace korvel {
namespace {

constexpr size_t kDotsPerByte = 4;  // two bits per dot
constexpr unsigned kPaper = 0;
constexpr unsigned kDot = 1;
constexpr unsigned kBackground = 2;
constexpr unsigned kInk = 3;

constexpr size_t kLongestName = 31;  // letters that fit above a page
constexpr size_t kCapUnits = 7;

// Five columns of tall pages, two of wide ones: whichever is closer to the shape of a screen.
size_t columnsFor(size_t cells, size_t width, size_t height) {
  if (cells < 3) return cells;
  const auto spread = [&](size_t columns) {
    const double across = static_cast<double>(columns * width);
    const size_t rows = (cells + columns - 1) / columns;
    const double down = static_cast<double>(rows * height);
    const double ratio = across / down / 1.5;
    return std::max(ratio, 1 / ratio);
  };
  return spread(5) <= spread(2) ? 5 : 2;
}

ContactLayout layoutOf(const std::vector<ContactCell>& cells) {
  ContactLayout layout = {};
  for (const ContactCell& cell : cells) {
    layout.cellWidth = std::max(layout.cellWidth, cell.page.width());
    layout.cellHeight = std::max(layout.cellHeight, cell.page.height());
  }
  layout.textUnit = std::clamp<size_t>(layout.cellWidth / (kLongestName * kGlyphAdvance), 2, 12);
  layout.cellWidth = std::max(layout.cellWidth, layout.textUnit * kLongestName * kGlyphAdvance);
  layout.columns = columnsFor(cells.size(), layout.cellWidth, layout.cellHeight);
  layout.margin = 12 * layout.textUnit;
  layout.headHeight = 28 * layout.textUnit;
  layout.nameHeight = 26 * layout.textUnit;
  return layout;
}

}  // namespace

class ContactSheet::Rows {
 public:
  Rows(size_t width, size_t height)
      : stride_((width + kDotsPerByte - 1) / kDotsPerByte),
        bytes_(stride_ * height, kBackground * 0x55) {}  // in all four dots

  void set(size_t x, size_t y, unsigned colour) {
    uint8_t& byte = bytes_[y * stride_ + x / kDotsPerByte];
    const size_t shift = 6 - x % kDotsPerByte * 2;
    byte = static_cast<uint8_t>((byte & ~(3u << shift)) | colour << shift);
  }

  void drawPage(const PagePicture& page, size_t left, size_t top) {
    for (size_t y = 0; y < page.height(); ++y) {
      const uint8_t* row = page.dots().data() + y * page.rowBytes();
      for (size_t x = 0; x < page.width(); ++x) {
        set(left + x, top + y, (row[x / 8] >> (7 - x % 8) & 1) != 0 ? kDot : kPaper);
      }
    }
  }

  // Text on the background, cut off at `width`.
  void drawName(const std::string& text, size_t left, size_t top, size_t width,
                const TextStyle& style) {
    DotCanvas canvas(static_cast<int>(width), static_cast<int>(style.capHeight * 1.4));
    drawText(&canvas, {0, 0}, text, style);
    for (int y = 0; y < canvas.height(); ++y) {
      for (int x = 0; x < canvas.width(); ++x) {
        if (canvas.at(x, y) == 0) continue;
        set(left + static_cast<size_t>(x), top + static_cast<size_t>(y), kInk);
      }
    }
  }

  size_t stride() const { return stride_; }
  const uint8_t* data() const { return bytes_.data(); }

 private:
  size_t stride_;
  std::vector<uint8_t> bytes_;
};

ContactSheet::ContactSheet(std::string title, std::vector<ContactCell> cells)
    : title_(std::move(title)), cells_(std::move(cells)), layout_(layoutOf(cells_)) {}

size_t ContactSheet::width() const {
  return layout_.margin + layout_.columns * (layout_.cellWidth + layout_.margin);
}

size_t ContactSheet::height() const {
  const size_t rows = (cells_.size() + layout_.columns - 1) / layout_.columns;
  return layout_.headHeight + rows * (layout_.nameHeight + layout_.cellHeight + layout_.margin);
}

void ContactSheet::drawNames(Rows* rows) const {
  const size_t unit = layout_.textUnit;
  const auto cap = static_cast<double>(unit * kCapUnits);
  rows->drawName(title_, layout_.margin, 10 * unit, width() - 2 * layout_.margin, {cap * 1.5, 1.2});
  for (size_t i = 0; i < cells_.size(); ++i) {
    const size_t top = layout_.top(i) - layout_.nameHeight;
    rows->drawName(cells_[i].title, layout_.left(i), top + 4 * unit, layout_.cellWidth, {cap, 1.4});
    rows->drawName(cells_[i].note, layout_.left(i), top + 14 * unit, layout_.cellWidth, {cap});
  }
}

Result<void> ContactSheet::writePng(const std::string& path, unsigned dpi) const {
  Rows rows(width(), height());
  drawNames(&rows);
  for (size_t i = 0; i < cells_.size(); ++i) {
    rows.drawPage(cells_[i].page, layout_.left(i), layout_.top(i));
  }
  const PngPicture picture = {
      width(), height(), rows.stride(),
      2,       dpi,      {{255, 255, 255}, {0, 0, 0}, {222, 226, 230}, {33, 37, 41}}};
  return writePngFile(path, picture, rows.data());
}

}  // namespace korvel
