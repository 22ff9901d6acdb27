// The file: "UNIRAST" and a NUL, the number of pages, then per page 32 bytes of header and the
// rows. A row: how often it repeats, less one, then runs: a count less one and the level that
// repeats, or 257 less a count and that many levels. 255 is white. SPDX-License-Identifier:
// Apache-2.0
#include "tools/setup/apple_raster.h"

#include <cstdint>

namespace korvel {

namespace {

constexpr int kGrey = 0, kOneSided = 1, kNormalQuality = 4;
constexpr int kLongestRun = 128;

void append32(std::string* out, uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    out->push_back(static_cast<char>(value >> static_cast<unsigned>(shift) & 0xFF));
  }
}

void appendHeader(std::string* out, const DotCanvas& page, int dpi) {
  for (const int byte : {8, kGrey, kOneSided, kNormalQuality}) {
    out->push_back(static_cast<char>(byte));
  }
  append32(out, 0);
  append32(out, 0);
  append32(out, static_cast<uint32_t>(page.width()));
  append32(out, static_cast<uint32_t>(page.height()));
  append32(out, static_cast<uint32_t>(dpi));
  append32(out, 0);
  append32(out, 0);
}

void appendRow(std::string* out, const DotCanvas& page, int y) {
  out->push_back(0);  // once
  for (int x = 0; x < page.width();) {
    int run = 1;
    while (run < kLongestRun && x + run < page.width() && page.at(x + run, y) == page.at(x, y)) {
      ++run;
    }
    out->push_back(static_cast<char>(run - 1));
    out->push_back(static_cast<char>(255 - page.at(x, y)));
    x += run;
  }
}

}  // namespace

std::string appleRaster(const DotCanvas& page, int dpi) {
  std::string out("UNIRAST\0", 8);
  append32(&out, 1);
  appendHeader(&out, page, dpi);
  for (int y = 0; y < page.height(); ++y) appendRow(&out, page, y);
  return out;
}

}  // namespace korvel
