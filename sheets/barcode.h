// Barcodes in whole dots, which is what a scanner reads best.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_SHEETS_BARCODE_H_
#define KORVEL_SHEETS_BARCODE_H_

#include <string>
#include <vector>

#include "drawing/dot_canvas.h"

namespace korvel {

enum class Symbology { kCode128, kQrCode, kDataMatrix };

struct Extent {
  int width;
  int height;
};

// Modules, without the quiet zone, in rows from top to bottom; a linear symbol has one row.
struct Barcode {
  Symbology symbology = Symbology::kCode128;
  std::string text;
  int width = 0;   // modules
  int height = 0;  // modules
  std::vector<bool> dark;

  bool at(int x, int y) const {
    return dark[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
  }
  int quietZone() const;  // modules on each side that must stay paper

  // In dots, with the quiet zone; a linear symbol has none above and below its bars.
  Extent extent(int module, int barHeight) const;
};

// `text` is printable ASCII. Throws std::runtime_error when it does not fit the symbology.
Barcode encode(Symbology symbology, const std::string& text);

// Draws the symbol without its quiet zone. `module` is dots per module; `barHeight`, in dots, is
// the height of a linear symbol and is not used for the others.
void drawBarcode(DotCanvas* canvas, const Barcode& barcode, int left, int top, int module,
                 int barHeight = 0);

}  // namespace korvel

#endif
