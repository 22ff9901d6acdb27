// The least that a job costs: reads every page through the raster library, writes two dumps of it
// and passes an eighth of its bytes on, as the filter does, and does nothing else.
// Usage: korvel_floor FOLDER < RASTER; the dumps go to FOLDER.
// SPDX-License-Identifier: Apache-2.0
#include <cups/raster.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr size_t kDumpHeader = 54 + 256 * 4;  // bytes of a grey BMP before its pixels

bool writeDump(const std::string& path, const std::vector<unsigned char>& pixels) {
  constexpr unsigned char kHeader[kDumpHeader] = {};
  FILE* file = std::fopen(path.c_str(), "w");
  if (file == nullptr) return false;
  bool written = std::fwrite(kHeader, sizeof kHeader, 1, file) == 1;
  written = std::fwrite(pixels.data(), 1, pixels.size(), file) == pixels.size() && written;
  return std::fclose(file) == 0 && written;
}

bool passPage(const std::vector<unsigned char>& pixels, const std::string& dump) {
  if (!writeDump(dump + "-origin.bmp", pixels)) return false;
  if (!writeDump(dump + "-dithered.bmp", pixels)) return false;
  const size_t packed = pixels.size() / 8;
  return std::fwrite(pixels.data(), 1, packed, stdout) == packed;
}

bool passJob(const std::string& folder) {
  cups_raster_t* raster = cupsRasterOpen(STDIN_FILENO, CUPS_RASTER_READ);
  cups_page_header2_t header;
  std::vector<unsigned char> pixels;
  for (int page = 0; cupsRasterReadHeader2(raster, &header) != 0; ++page) {
    const unsigned int size = header.cupsHeight * header.cupsBytesPerLine;
    pixels.resize(size);
    if (cupsRasterReadPixels(raster, pixels.data(), size) == 0) return false;
    if (!passPage(pixels, folder + "/" + std::to_string(page))) return false;
  }
  cupsRasterClose(raster);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "Usage: korvel_floor FOLDER < RASTER\n");
    return 2;
  }
  static char buffer[65536];  // as large as the filter's
  std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
  return passJob(argv[1]) ? 0 : 1;
}
