// The header says what the rasteriser would, so that nothing on the way scales or moves a dot.
// SPDX-License-Identifier: Apache-2.0
#include "sheets/raster_file.h"

#include <cups/raster.h>
#include <zlib.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace korvel {
namespace {

constexpr unsigned kGreyBits = 8;

cups_page_header2_t headerOf(const SheetSize& size) {
  cups_page_header2_t header = {};
  const auto width = static_cast<unsigned>(size.width);
  const auto height = static_cast<unsigned>(size.height);
  header.HWResolution[0] = header.HWResolution[1] = size.dpi;
  header.PageSize[0] = static_cast<unsigned>(std::lround(size.widthPoints));
  header.PageSize[1] = static_cast<unsigned>(std::lround(size.lengthPoints));
  header.NumCopies = 1;
  header.cupsWidth = width;
  header.cupsHeight = height;
  header.cupsBitsPerColor = header.cupsBitsPerPixel = kGreyBits;
  header.cupsBytesPerLine = width;
  header.cupsColorOrder = CUPS_ORDER_CHUNKED;
  header.cupsColorSpace = CUPS_CSPACE_K;
  header.cupsNumColors = 1;
  header.cupsPageSize[0] = static_cast<float>(size.widthPoints);
  header.cupsPageSize[1] = static_cast<float>(size.lengthPoints);
  header.cupsImagingBBox[0] = static_cast<float>(size.leftPoints);
  header.cupsImagingBBox[1] = static_cast<float>(size.bottomPoints);
  header.cupsImagingBBox[2] = static_cast<float>(size.leftPoints + size.width * 72.0 / size.dpi);
  header.cupsImagingBBox[3] = static_cast<float>(size.bottomPoints + size.height * 72.0 / size.dpi);
  for (int i = 0; i < 4; ++i) {
    header.ImagingBoundingBox[i] =
        static_cast<unsigned>(std::lround(static_cast<double>(header.cupsImagingBBox[i])));
  }
  std::strncpy(header.cupsPageSizeName, size.name.c_str(), sizeof header.cupsPageSizeName - 1);
  return header;
}

struct GzCloser {
  void operator()(gzFile_s* file) const { gzclose(file); }
};

ssize_t writePart(void* file, unsigned char* bytes, size_t count) {
  return gzwrite(static_cast<gzFile>(file), bytes, static_cast<unsigned>(count));
}

}  // namespace

std::string writeSheet(const SheetPage& page, const std::string& path) {
  std::unique_ptr<gzFile_s, GzCloser> file(gzopen(path.c_str(), "wb6"));
  if (!file) return "cannot write " + path + ": " + std::strerror(errno);
  cups_raster_t* raster = cupsRasterOpenIO(writePart, file.get(), CUPS_RASTER_WRITE);
  cups_page_header2_t header = headerOf(page.size());
  std::vector<uint8_t> dots = page.canvas().dots();
  const auto count = static_cast<unsigned>(dots.size());
  const bool written = raster != nullptr && cupsRasterWriteHeader2(raster, &header) != 0 &&
                       cupsRasterWritePixels(raster, dots.data(), count) == count;
  cupsRasterClose(raster);
  const bool closed = gzclose(file.release()) == Z_OK;
  return written && closed ? std::string() : "cannot write " + path;
}

}  // namespace korvel
