// The dots that the filter sends for a document: CUPS' own filters make the raster, ours prints it.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_BARCODES_PRINTED_PAGE_H
#define KORVEL_TESTS_BARCODES_PRINTED_PAGE_H

#include <string>
#include <vector>

struct DotPage {
  int width = 0;                  // whole bytes, as sent
  std::vector<std::string> rows;  // '1' is a dot
  int height() const { return static_cast<int>(rows.size()); }
  bool dot(int x, int y) const {
    return x >= 0 && y >= 0 && x < width && y < height() &&
           rows[static_cast<size_t>(y)][static_cast<size_t>(x)] == '1';
  }
};

struct PrintRequest {
  std::string printer;   // a name of descriptions(), "label-203"
  std::string document;  // its content
  std::string type = "application/pdf";
  std::vector<std::string> options;  // "PageSize=4x6"
};

// The grey raster that reaches the filter.
std::string rasterOf(const PrintRequest& request);
// All pages; none when the rasteriser or the filter fails.
std::vector<DotPage> printed(const PrintRequest& request);

#endif
