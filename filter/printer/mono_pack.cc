// Packs a page's bytes to the bits that the printer burns.
// In place: the page buffer is sent from where it lies.
// SPDX-License-Identifier: Apache-2.0
#include "image/image_kernels.h"
#include "printer/log.h"
#include "printer/pellam_printer.h"

// Walks the stride, not the width: what lies behind the last pixel of a row becomes dots too.
int PellamPrinter::GrayToMono(int bytesPerLine, int height, unsigned char* buffer) {
  const auto skip = static_cast<int>(skipRightPixels_);
  const bool skips = skipRightPixels_ != 0 && skipRightPixels_ < static_cast<size_t>(bytesPerLine);
  const int wb = skips ? bytesPerLine - skip : bytesPerLine;  // pixels packed in each row
  pellamLogCommon(0, "GrayToMono, bpl(%d), h(%d), skipPixels(%d), wb(%d)", bytesPerLine, height,
                  skip, wb);

  const auto pixels = static_cast<size_t>(wb);
  const unsigned char* row = buffer;
  unsigned char* packed = buffer;
  for (int y = 0; y < height; ++y) {
    imageKernels().bitsOfInk(row, pixels, packed);
    row += bytesPerLine;
    packed += (pixels + 7) / 8;
  }
  return static_cast<int>(packed - buffer);
}
