// Writes a job as CUPS raster to standard output: korvel_bench_job grey|dots label|a4 PAGES.
// "grey" is input for our filter; "dots" is the same page at 1 bit per pixel, for filters that
// accept nothing else.
// SPDX-License-Identifier: Apache-2.0
#include <cups/raster.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "bench/pages.h"
#include "image/cximage.h"

namespace {

constexpr DitherMethod kJarvisJudiceNinke = 4;

cups_page_header2_t headerOf(const GreyPage& page, bool dots, unsigned resolution) {
  cups_page_header2_t header{};
  header.HWResolution[0] = header.HWResolution[1] = resolution;
  header.NumCopies = 1;
  header.cupsWidth = static_cast<unsigned>(page.width);
  header.cupsHeight = static_cast<unsigned>(page.height);
  header.PageSize[0] = header.cupsWidth * 72 / resolution;
  header.PageSize[1] = header.cupsHeight * 72 / resolution;
  header.cupsBitsPerColor = header.cupsBitsPerPixel = dots ? 1 : 8;
  header.cupsBytesPerLine = dots ? (header.cupsWidth + 7) / 8 : header.cupsWidth;
  header.cupsColorSpace = CUPS_CSPACE_K;
  header.cupsNumColors = 1;
  return header;
}

std::string rowsOf(const GreyPage& page, bool dots) {
  const auto* pixels = reinterpret_cast<const char*>(page.pixels.data());
  if (!dots) return {pixels, page.pixels.size()};
  CxImage image;
  const auto width = static_cast<uint32_t>(page.width);
  const auto height = static_cast<uint32_t>(page.height);
  image.CreateFromArray(page.pixels.data(), width, height, 8, width, false);
  image.Dither(kJarvisJudiceNinke);
  std::string rows;
  for (uint32_t y = 0; y < height; ++y) {
    rows.append(reinterpret_cast<const char*>(image.GetBits(y)), (width + 7) / 8);
  }
  image.Destroy();
  return rows;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "Usage: korvel_bench_job grey|dots label|a4 PAGES\n");
    return 2;
  }
  const bool dots = std::strcmp(argv[1], "dots") == 0;
  const bool label = std::strcmp(argv[2], "label") == 0;
  const GreyPage& page = label ? labelPage() : a4Page();
  cups_page_header2_t header = headerOf(page, dots, label ? 203 : 300);
  std::string rows = rowsOf(page, dots);
  cups_raster_t* raster = cupsRasterOpen(STDOUT_FILENO, CUPS_RASTER_WRITE);
  for (int i = 0; i < std::atoi(argv[3]); ++i) {
    cupsRasterWriteHeader2(raster, &header);
    cupsRasterWritePixels(raster, reinterpret_cast<unsigned char*>(rows.data()),
                          static_cast<unsigned>(rows.size()));
  }
  cupsRasterClose(raster);
  return 0;
}
