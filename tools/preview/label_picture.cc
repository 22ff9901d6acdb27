// Every dot is looked up in the sheet; a dot hides the outline, never the other way round.
// SPDX-License-Identifier: Apache-2.0
#include "tools/preview/label_picture.h"

#include <algorithm>

namespace korvel {
namespace {

DotSize sizeOf(const SheetPicture& sheet, const DotSize& label) {
  if (label.width > 0 && label.height > 0) return label;
  return {static_cast<int>(sheet.rowBytes() * 8), static_cast<int>(sheet.pageRows())};
}

// The middle of the head, on a whole byte.
int leftOf(int label, int head) { return label < head ? (head - label) / 2 / 8 * 8 : 0; }

}  // namespace

LabelPicture::LabelPicture(const SheetPicture& sheet, DotSize label)
    : sheet_(sheet), label_(sizeOf(sheet, label)) {
  const auto head = static_cast<int>(sheet.width());
  labelLeft_ = leftOf(label_.width, head);
  dotsOutside_ = countOutside();
  left_ = labelLeft_ - kOutlineDots;
  right_ = labelLeft_ + label_.width + kOutlineDots;
  if (dotsOutside_ != 0) {
    left_ = std::min(left_, 0);
    right_ = std::max(right_, head);
  }
  paperEnd_ = std::max(label_.height + kOutlineDots, static_cast<int>(sheet.paperRows()));
}

bool LabelPicture::isOnLabel(int x, int y, int margin) const {
  return x >= labelLeft_ - margin && x < labelLeft_ + label_.width + margin && y >= -margin &&
         y < label_.height + margin;
}

size_t LabelPicture::countOutside() const {
  size_t count = 0;
  for (size_t y = 0; y < sheet_.paperRows(); ++y) {
    if (sheet_.isBlank(y)) continue;
    for (size_t x = 0; x < sheet_.width(); ++x) {
      if (isOnLabel(static_cast<int>(x), static_cast<int>(y), 0)) continue;
      if (sheet_.at(x, y) == SheetDot::kDot) ++count;
    }
  }
  return count;
}

SheetSize LabelPicture::size() const {
  const size_t mark = sheet_.height() - sheet_.paperRows();
  return {static_cast<size_t>(right_ - left_),
          static_cast<size_t>(kOutlineDots + paperEnd_) + mark};
}

SheetDot LabelPicture::at(size_t x, size_t y) const {
  const int column = static_cast<int>(x) + left_;
  const int row = static_cast<int>(y) - kOutlineDots;
  const int last = static_cast<int>(sheet_.width()) - 1;
  if (row >= paperEnd_) {
    return sheet_.at(static_cast<size_t>(std::clamp(column, 0, last)),
                     sheet_.paperRows() + static_cast<size_t>(row - paperEnd_));
  }
  const bool isOnPaper =
      row >= 0 && row < static_cast<int>(sheet_.paperRows()) && column >= 0 && column <= last;
  if (isOnPaper &&
      sheet_.at(static_cast<size_t>(column), static_cast<size_t>(row)) == SheetDot::kDot) {
    return SheetDot::kDot;
  }
  const bool isOutline = isOnLabel(column, row, kOutlineDots) && !isOnLabel(column, row, 0);
  return isOutline ? SheetDot::kOutline : SheetDot::kPaper;
}

Result<void> LabelPicture::writePng(const std::string& path, unsigned dpi) const {
  return writeSheetPng(path, size(), dpi, [this](size_t y, auto* dots) {
    for (size_t x = 0; x < dots->size(); ++x) (*dots)[x] = at(x, y);
  });
}

}  // namespace korvel
