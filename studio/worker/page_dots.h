// From a composed page to the raster that a job sends, and from that raster to the dots that print.
// The only file that knows how the tools run the rasteriser and the filter.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_WORKER_PAGE_DOTS_H
#define KORVEL_STUDIO_WORKER_PAGE_DOTS_H

#include <cstddef>
#include <string>

#include "studio/worker/picture_reader.h"
#include "tools/common/result.h"
#include "tools/preview/document.h"

namespace korvel {

// `page` is a PDF file of the media's exact size. Writes one raster page to `target`.
Result<RasterPageInfo> rasterisePage(const std::string& page, const std::string& ppd,
                                     const std::string& options, const std::string& target);

// The first page of a raster file, 8 bits of ink per pixel.
Result<RasterPage> loadRasterPage(const std::string& raster);

// The same page as a picture: 255 is white.
Result<GreyPicture> readGreyPage(const std::string& raster);

struct DotsJob {
  std::string filter;  // path of rastertokorvel
  std::string raster;
  std::string ppd;  // of a model that is not asked for its status
  std::string options;
  std::string target;  // PNG, one bit for each dot
};

struct DotsSize {
  size_t width = 0;  // dots, whole bytes
  size_t height = 0;
  size_t printed = 0;  // black dots
};

Result<DotsSize> makeDots(const DotsJob& job);

}  // namespace korvel

#endif
