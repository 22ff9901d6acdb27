// Lays a page of a PDF file out on one page of the printer's size, for the rasteriser.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_WORKER_PAGE_COMPOSER_H
#define KORVEL_STUDIO_WORKER_PAGE_COMPOSER_H

#include <string>
#include <vector>

#include "tools/common/result.h"

namespace korvel {

struct PageLayout {
  double width = 0;    // of the media, points
  double height = 0;   // points
  std::string matrix;  // six numbers as PDF writes them, from the document's true size to the page
};

// Sizes of a PDF file's pages in points, turned as a reader shows them.
struct PdfPageSize {
  double width = 0;
  double height = 0;
};
Result<std::vector<PdfPageSize>> readPdfPages(const std::string& path);

// A page without anything on it; the matrix does not matter.
Result<void> composeBlankPage(const PageLayout& layout, const std::string& target);

// `number` counts from 1.
Result<void> composePdfPage(const std::string& path, unsigned number, const PageLayout& layout,
                            const std::string& target);

}  // namespace korvel

#endif
