// Whether the spooler's filters scale or turn a PDF page: a page of the same size, covered with
// stripes, goes the same way, and the stripes are measured.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_PREVIEW_PAGE_PLACEMENT_H
#define KORVEL_TOOLS_PREVIEW_PAGE_PLACEMENT_H

#include <array>
#include <optional>
#include <string>

#include "tools/preview/document.h"

namespace korvel {

struct PagePlacement {
  double scale = 1;     // exactly 1 when nothing differs by more than a dot
  bool turned = false;  // by 90, 180 or 270 degrees
  bool operator==(const PagePlacement&) const = default;
};

// Left, bottom, right and top in points.
using PageBox = std::array<double, 4>;

struct PdfBoxes {
  PageBox media = {};
  PageBox crop = {};
  PageBox trim = {};
  int rotation = 0;  // degrees clockwise at which it is shown

  double shownWidth() const;  // points
};

// Reads the boxes from what pdfinfo prints about one page; nothing when they are not there.
std::optional<PdfBoxes> parsePdfInfo(const std::string& text);

// A PDF file of one page with these boxes. Its stripes are parallel to the sides of the page as it
// is shown, and darker from left to right.
std::string stripedPdf(const PdfBoxes& page);

// Where the stripes of a page that is shown `shownWidth` points wide are in the raster; nothing
// when too few of them are there.
std::optional<PagePlacement> measureStripes(const RasterPage& raster, double shownWidth);

// How the first page of a PDF file is placed, nothing when that cannot be found out. Uses
// `job.log`, and writes the striped page to `scratch`.
std::optional<PagePlacement> findPlacement(const RasteriserJob& job, const std::string& scratch);

// "label.pdf: scaled to 47 %, turned.", empty when it is neither.
std::string placementSentence(const std::string& file, const PagePlacement& placement);

}  // namespace korvel

#endif
