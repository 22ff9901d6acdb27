// Follows the raster with the library that the filter uses, since what counts as damaged depends on
// its version.
// SPDX-License-Identifier: Apache-2.0
#include "tools/host/raster_check.h"

#include <cups/file.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "tools/common/translation.h"
#include "tools/host/raster_stream.h"

namespace korvel {
namespace {

// The library reads ahead in pieces of at least this size. They are given to it byte by byte, so
// that it never holds more than it has used and the end of a page is the place in the file.
constexpr size_t kReadAheadBytes = 65536;

struct FileCloser {
  void operator()(cups_file_t* file) const { cupsFileClose(file); }
};
using File = std::unique_ptr<cups_file_t, FileCloser>;

ssize_t readPiece(void* file, unsigned char* bytes, size_t count) {
  if (count >= kReadAheadBytes) count = 1;
  return cupsFileRead(static_cast<cups_file_t*>(file), reinterpret_cast<char*>(bytes), count);
}

bool isAtEnd(cups_file_t* file) { return cupsFilePeekChar(file) < 0; }

// What makes the filter end the job, with or without an error, before it reads pixels.
bool endsJob(const cups_page_header2_t& header) {
  const uint64_t size = uint64_t{header.cupsHeight} * header.cupsBytesPerLine;
  return header.cupsBitsPerPixel != 8 || size == 0 || size > kMostPageBytes;
}

bool readPixels(cups_raster_t* raster, const cups_page_header2_t& header) {
  std::vector<unsigned char> row(header.cupsBytesPerLine);
  for (unsigned y = 0; y < header.cupsHeight; ++y) {
    if (cupsRasterReadPixels(raster, row.data(), header.cupsBytesPerLine) == 0) return false;
  }
  return true;
}

}  // namespace

Result<void> checkRaster(const std::string& path,
                         const std::function<void(const cups_page_header2_t&)>& page) {
  const File file(cupsFileOpen(path.c_str(), "r"));
  if (!file) return Failure{filled("Cannot open %s: %s.", path.c_str(), std::strerror(errno))};
  if (isAtEnd(file.get())) return {};
  const Raster raster(cupsRasterOpenIO(readPiece, file.get(), CUPS_RASTER_READ));
  cups_page_header2_t header = {};
  for (unsigned number = 1;; ++number) {
    if (raster && isAtEnd(file.get())) return {};
    const bool known = raster && cupsRasterReadHeader2(raster.get(), &header) != 0;
    if (known && endsJob(header)) return {};
    if (!known || !readPixels(raster.get(), header)) {
      return Failure{filled("Page %u is damaged or incomplete.", number)};
    }
    if (page) page(header);
  }
}

}  // namespace korvel
