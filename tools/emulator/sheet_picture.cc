// A sheet is never stored as a whole: a dot is looked up in the page, and rows are packed when the
// file is written.
// SPDX-License-Identifier: Apache-2.0
#include "tools/emulator/sheet_picture.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "tools/common/png_file.h"

namespace korvel {
namespace {

constexpr size_t kDotsPerByte = 4;  // two bits per dot

}  // namespace

SheetPicture::SheetPicture(PagePicture page, size_t headDots)
    : page_(std::move(page)),
      rowBytes_(page_.rowBytes() != 0 ? page_.rowBytes() : page_.area().word(2) / 8),
      pageRows_(rowBytes_ == 0 ? 0 : (page_.dots().size() + rowBytes_ - 1) / rowBytes_),
      left_(page_.area().word(0)),
      width_(std::max(headDots, left_ + rowBytes_ * 8)) {}

size_t SheetPicture::height() const {
  return end_ == SheetEnd::kAttached ? paperRows() : paperRows() + kMarkRows;
}

bool SheetPicture::isBlank(size_t y) const {
  const size_t pageEnd = leadRows_ + pageRows_;
  return y < leadRows_ || (y >= pageEnd && y < pageEnd + tailRows_);
}

SheetDot SheetPicture::at(size_t x, size_t y) const {
  if (y >= paperRows()) {
    const bool gap = end_ == SheetEnd::kTear && x / kDashDots % 2 != 0;
    return gap ? SheetDot::kPaper : SheetDot::kMark;
  }
  if (y < leadRows_ || y >= leadRows_ + pageRows_ || x < left_ || x >= left_ + rowBytes_ * 8) {
    return SheetDot::kPaper;
  }
  const size_t byte = (y - leadRows_) * rowBytes_ + (x - left_) / 8;
  if (byte >= page_.dots().size()) return SheetDot::kPaper;
  const unsigned bits = page_.dots()[byte];
  const unsigned bit = bits >> (7 - (x - left_) % 8) & 1u;
  return bit != 0 ? SheetDot::kDot : SheetDot::kPaper;
}

Result<void> writeSheetPng(const std::string& path, const SheetSize& size, unsigned dpi,
                           const SheetRow& row) {
  if (size.height == 0) return Failure{"The sheet has no length, so there is no picture."};
  const size_t stride = (size.width + kDotsPerByte - 1) / kDotsPerByte;
  std::vector<SheetDot> dots(size.width);
  std::vector<uint8_t> packed(stride);
  const auto packedRow = [&](size_t y) -> const uint8_t* {
    std::fill(dots.begin(), dots.end(), SheetDot::kPaper);
    row(y, &dots);
    std::fill(packed.begin(), packed.end(), uint8_t{0});
    for (size_t x = 0; x < size.width; ++x) {
      const unsigned index = static_cast<unsigned>(dots[x]) << (6 - x % kDotsPerByte * 2);
      uint8_t& byte = packed[x / kDotsPerByte];
      byte = static_cast<uint8_t>(byte | index);
    }
    return packed.data();
  };
  const PngPicture picture = {size.width, size.height,
                              stride,     2,
                              dpi,        {{255, 255, 255}, {0, 0, 0}, {255, 0, 0}, {0, 102, 255}}};
  return writePngFile(path, picture, packedRow);
}

Result<void> SheetPicture::writePng(const std::string& path, unsigned dpi) const {
  return writeSheetPng(path, {width_, height()}, dpi, [this](size_t y, auto* dots) {
    if (isBlank(y)) return;
    for (size_t x = 0; x < width_; ++x) (*dots)[x] = at(x, y);
  });
}

}  // namespace korvel
