// Packs a page's bytes to the bits that the printer burns.
// In place: the page buffer is sent from where it lies.
// SPDX-License-Identifier: Apache-2.0
#include "printer/log.h"
#include "printer/pellam_printer.h"

// Walks the stride, not the width: what lies behind the last pixel of a row becomes dots too.
int PellamPrinter::GrayToMono(int bytesPerLine, int height, unsigned char* buffer) {
  const auto skip = static_cast<int>(skipRightPixels_);
  const bool skips = skipRightPixels_ != 0 && skipRightPixels_ < static_cast<size_t>(bytesPerLine);
  const int wb = skips ? bytesPerLine - skip : bytesPerLine;  // pixels packed in each row
  pellamLogCommon(0, "GrayToMono, bpl(%d), h(%d), skipPixels(%d), wb(%d)", bytesPerLine, height,
                  skip, wb);

  int out = 0;
  for (int y = 0; y < height; ++y) {
    const unsigned char* row = buffer + static_cast<ptrdiff_t>(y) * bytesPerLine;
    unsigned int bits = 0;
    for (int x = 0; x < wb; ++x) {
      if (row[x] != 0) bits |= 128u >> (x % 8);
      if (x % 8 != 7) continue;
      buffer[out++] = static_cast<unsigned char>(bits);
      bits = 0;
    }
    if (wb % 8 != 0) buffer[out++] = static_cast<unsigned char>(bits);
  }
  return out;
}
