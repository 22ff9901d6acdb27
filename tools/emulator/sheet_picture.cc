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
  const size_t paper = leadRows_ + pageRows_ + tailRows_;
  return end_ == SheetEnd::kAttached ? paper : paper + kMarkRows;
}

SheetDot SheetPicture::at(size_t x, size_t y) const {
  if (y >= leadRows_ + pageRows_ + tailRows_) {
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

Result<void> SheetPicture::writePng(const std::string& path, unsigned dpi) const {
  if (height() == 0) return Failure{"The sheet has no length, so there is no picture."};
  const size_t stride = (width_ + kDotsPerByte - 1) / kDotsPerByte;
  std::vector<uint8_t> rows(stride * height());
  for (size_t y = 0; y < height(); ++y) {
    for (size_t x = 0; x < width_; ++x) {
      const unsigned index = static_cast<unsigned>(at(x, y)) << (6 - x % kDotsPerByte * 2);
      uint8_t& byte = rows[y * stride + x / kDotsPerByte];
      byte = static_cast<uint8_t>(byte | index);
    }
  }
  const PngPicture picture = {width_, height(), stride,
                              2,      dpi,      {{255, 255, 255}, {0, 0, 0}, {255, 0, 0}}};
  return writePngFile(path, picture, rows.data());
}

}  // namespace korvel
