// A document to print: what kind it is by its first bytes, and the raster of its pages.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_PREVIEW_DOCUMENT_H
#define KORVEL_TOOLS_PREVIEW_DOCUMENT_H

#include <string>

#include "tools/common/child_process.h"

namespace korvel {

inline constexpr char kRasterType[] = "application/vnd.cups-raster";

// Looks at the file. Returns an empty text and its MIME type (kRasterType for raster that is
// compressed as well), or one sentence on why it cannot be printed.
std::string identifyDocument(const std::string& path, std::string* type);

struct RasteriserJob {
  std::string document;
  std::string type;
  std::string ppd;
  std::string options;  // the job's, as one text
  std::string copies = "1";
  std::string log;  // path of a file for what the rasteriser says
};

// The spooler's own chain of filters from a document to raster, run by cupsfilter.
class Rasteriser {
 public:
  // Returns an empty text, or one sentence; the raster then comes from output().
  std::string start(const RasteriserJob& job);

  Descriptor* output() { return &output_; }
  // Waits for its end, with output() closed. Returns an empty text, or why there are no pages; a
  // reader that has gone away is no fault.
  std::string finish();

 private:
  RasteriserJob job_;
  Descriptor output_;
  Child child_;
};

// The filters that would run, their names parted by blanks; empty when that cannot be told.
std::string rasteriserChain(const RasteriserJob& job);

// Writes the raster of a file, compressed or not, to `target` as it is.
std::string unpackRaster(const std::string& path, const std::string& target);

// What the first page's header says. Both return an empty text or one sentence.
struct RasterPageInfo {
  unsigned dpi = 0;
  std::string sizeName;
};
std::string readRasterPage(const std::string& path, RasterPageInfo* info);

// Copies the first page of the raster that comes from `descriptor` to the file `target`.
std::string keepFirstPage(int descriptor, const std::string& target);

}  // namespace korvel

#endif
