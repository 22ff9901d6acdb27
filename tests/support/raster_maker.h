// Makes raster streams as CUPS sends them, from a recipe of a few keywords per page. The same
// recipe gives the same bytes on every machine: no clock, no locale, its own noise generator.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SUPPORT_RASTER_MAKER_H
#define KORVEL_TESTS_SUPPORT_RASTER_MAKER_H

#include <cstdint>
#include <string>
#include <vector>

// One page. Pictures: white, black, level:V, ramp, rampdown, noise:SEED, checker:CELL, text:SEED
// (two levels), almost:SEED (one level except for a few pixels), flat:SEED (four similar levels).
// 0 is paper.
struct RasterPage {
  uint32_t width = 8;    // pixels
  uint32_t height = 8;   // rows
  uint32_t padding = 0;  // bytes after the last pixel of a row, filled with noise
  uint32_t resolutionX = 203;
  uint32_t resolutionY = 203;
  uint32_t bitsPerPixel = 8;
  uint32_t bytesPerLine = 0;  // 0: as many as width, depth and padding need
  uint32_t copies = 1;
  std::string sizeName = "w144h72";
  std::string picture = "white";
  int64_t pixelBytes = -1;  // pixel bytes that actually follow the header; -1: all of them
};

// Parses "40x20 203dpi pad=3 copies=2 size=A4 bpp=8 line=44 picture=noise:7 cut=100". All keywords
// except the first two are optional; the resolution can be 203x300dpi. Returns false otherwise.
bool parseRasterPage(const std::string& words, RasterPage* page);

// The page's rows, each bytesPerLine bytes; 8 bits per pixel only.
std::string paintPage(const RasterPage& page);

// The stream: sync word, then header and pixels of each page, in native byte order.
std::string makeRaster(const std::vector<RasterPage>& pages);

#endif
