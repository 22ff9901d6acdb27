// Packing in its plain form: a bit is gathered at a time.
// The law for PellamPrinter::GrayToMono.
// SPDX-License-Identifier: Apache-2.0
#include "printer/page_literal.h"

int PageLiteral::GrayToMono(int bytesPerLine, int height, uint64_t skipRightPixels,
                            unsigned char* buffer) {
  const auto skip = static_cast<int>(skipRightPixels);
  const bool skips = skipRightPixels != 0 && skipRightPixels < static_cast<size_t>(bytesPerLine);
  const int wb = skips ? bytesPerLine - skip : bytesPerLine;  // pixels packed in each row

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
