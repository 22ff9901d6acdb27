// One picture that compares the ten halftones of a page: every dot of each, below its name.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_PREVIEW_CONTACT_SHEET_H
#define KORVEL_TOOLS_PREVIEW_CONTACT_SHEET_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/common/result.h"
#include "tools/stream/page_picture.h"

namespace korvel {

class DotCanvas;

struct ContactCell {
  std::string title;  // the method
  std::string note;   // the option that selects it
  PagePicture page;
};

// Where the cells are; lengths in dots.
struct ContactLayout {
  size_t columns;
  size_t cellWidth;   // of the widest page
  size_t cellHeight;  // of the longest
  size_t textUnit;    // a seventh of a capital letter
  size_t margin;      // around every cell
  size_t headHeight;  // above the first row of cells
  size_t nameHeight;  // above every page

  size_t left(size_t cell) const { return margin + cell % columns * (cellWidth + margin); }
  size_t top(size_t cell) const {  // of its page
    const size_t row = cell / columns;
    return headHeight + row * (nameHeight + cellHeight + margin) + nameHeight;
  }
};

class ContactSheet {
 public:
  // Every page must have a shape.
  ContactSheet(std::string title, std::vector<ContactCell> cells);

  const ContactLayout& layout() const { return layout_; }
  size_t width() const;
  size_t height() const;

  // White paper and black dots on a grey background with dark names.
  Result<void> writePng(const std::string& path, unsigned dpi) const;

 private:
  class Rows;
  void drawNames(Rows* rows) const;

  std::string title_;
  std::vector<ContactCell> cells_;
  ContactLayout layout_;
};

}  // namespace korvel

#endif
