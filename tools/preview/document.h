// A document to print: its type, according to its first bytes, and the raster of its pages.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_PREVIEW_DOCUMENT_H
#define KORVEL_TOOLS_PREVIEW_DOCUMENT_H

#include <string>
#include <vector>

#include "tools/common/process.h"
#include "tools/common/result.h"
#include "tools/host/raster_stream.h"

namespace korvel {

inline constexpr char kRasterType[] = "application/vnd.cups-raster";

// The MIME type of a file that can be printed; kRasterType also for compressed raster.
Result<std::string> identifyDocument(const std::string& path);

// A file name for the arguments of a program: one that begins with a hyphen would be an option.
std::string asOperand(const std::string& path);

struct RasteriserJob {
  std::string document;
  std::string type;
  std::string ppd;
  std::string options;  // the job's, as one text
  std::string copies = "1";
  std::string log;  // path of a file for the rasteriser's messages
};

// The spooler's own chain of filters from a document to raster, run by cupsfilter.
class Rasteriser {
 public:
  // After it the raster comes from output().
  Result<void> start(const RasteriserJob& job);

  Descriptor* output() { return &output_; }
  // Closes output() and waits for the end. Fails when there are no pages; it is no failure that
  // the raster was not read to its end.
  Result<void> finish();

 private:
  RasteriserJob job_;
  Descriptor output_;
  Child child_;
};

// The filters that would run, with blanks between their names.
Result<std::string> rasteriserChain(const RasteriserJob& job);

// Writes the raster of a file, compressed or not, to `target` without compression.
Result<void> unpackRaster(const std::string& path, const std::string& target);

// What the header of the first page says.
struct RasterPageInfo {
  unsigned width = 0;   // pixels
  unsigned height = 0;  // rows
  unsigned dpi = 0;
  std::string sizeName;
};
Result<RasterPageInfo> readRasterPage(const std::string& path);

// One page of raster: its header, and its rows of cupsBytesPerLine each.
struct RasterPage {
  cups_page_header2_t header = {};
  std::vector<unsigned char> pixels;
};
Result<RasterPage> readFirstPage(int descriptor);
Result<void> writePage(const std::string& target, RasterPage* page);

// Copies the first page of the raster that is read from `descriptor` to the file `target`.
Result<void> keepFirstPage(int descriptor, const std::string& target);

}  // namespace korvel

#endif
