// The picture of a sheet, cropped to its label with a thin outline around it. Dots that miss the
// label are counted, and shown where they are.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_PREVIEW_LABEL_PICTURE_H
#define KORVEL_TOOLS_PREVIEW_LABEL_PICTURE_H

#include <cstddef>
#include <string>

#include "tools/common/result.h"
#include "tools/description/printer_description.h"
#include "tools/emulator/sheet_picture.h"

namespace korvel {

inline constexpr int kOutlineDots = 2;

// The label begins where the paper begins, and is below the middle of the head, as the filter
// places pages. The picture shows the label, the outline around it, paper that was fed after the
// label, and the mark of a tear or a cut. When dots miss the label, it shows the whole width of the
// paper.
class LabelPicture {
 public:
  // `sheet` must outlive the picture. Without a size of the label, the page is the label.
  LabelPicture(const SheetPicture& sheet, DotSize label);

  size_t dotsOutside() const { return dotsOutside_; }
  SheetSize size() const;
  SheetDot at(size_t x, size_t y) const;  // inside size()

  Result<void> writePng(const std::string& path, unsigned dpi) const;  // `dpi` must not be 0

 private:
  bool isOnLabel(int x, int y, int margin) const;
  size_t countOutside() const;

  // Columns and rows are those of the sheet; the outline reaches beyond its first ones.
  const SheetPicture& sheet_;
  DotSize label_;
  int labelLeft_;
  size_t dotsOutside_;
  int left_, right_;  // of the picture, right exclusive
  int paperEnd_;      // the row below the paper and the outline
};

}  // namespace korvel

#endif
