// The symbols come from libzint, which knows the symbologies; only their modules are used.
// SPDX-License-Identifier: Apache-2.0
#include "sheets/barcode.h"

#include <zint.h>

#include <memory>
#include <stdexcept>

namespace korvel {
namespace {

struct SymbolCloser {
  void operator()(zint_symbol* symbol) const { ZBarcode_Delete(symbol); }
};

int numberOf(Symbology symbology) {
  switch (symbology) {
    case Symbology::kQrCode:
      return BARCODE_QRCODE;
    case Symbology::kDataMatrix:
      return BARCODE_DATAMATRIX;
    case Symbology::kCode128:
      break;
  }
  return BARCODE_CODE128;
}

bool isDark(const zint_symbol& symbol, int x, int y) {
  return (symbol.encoded_data[y][x / 8] >> (x % 8) & 1) != 0;
}

}  // namespace

int Barcode::quietZone() const {
  switch (symbology) {
    case Symbology::kQrCode:
      return 4;
    case Symbology::kDataMatrix:
      return 1;
    case Symbology::kCode128:
      break;
  }
  return 10;
}

Extent Barcode::extent(int module, int barHeight) const {
  const int quiet = 2 * quietZone() * module;
  return {width * module + quiet, height == 1 ? barHeight : height * module + quiet};
}

Barcode encode(Symbology symbology, const std::string& text) {
  const std::unique_ptr<zint_symbol, SymbolCloser> symbol(ZBarcode_Create());
  if (!symbol) throw std::runtime_error("out of memory for a barcode");
  symbol->symbology = numberOf(symbology);
  if (symbology == Symbology::kDataMatrix) symbol->option_3 = DM_SQUARE;
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  if (ZBarcode_Encode(symbol.get(), bytes, static_cast<int>(text.size())) >= ZINT_ERROR) {
    throw std::runtime_error("\"" + text + "\" cannot be encoded: " + symbol->errtxt);
  }
  Barcode barcode = {symbology, text, symbol->width, symbol->rows, {}};
  for (int y = 0; y < barcode.height; ++y) {
    for (int x = 0; x < barcode.width; ++x) barcode.dark.push_back(isDark(*symbol, x, y));
  }
  return barcode;
}

void drawBarcode(DotCanvas* canvas, const Barcode& barcode, int left, int top, int module,
                 int barHeight) {
  const int moduleHeight = barcode.height == 1 ? barHeight : module;
  for (int y = 0; y < barcode.height; ++y) {
    for (int x = 0; x < barcode.width; ++x) {
      if (!barcode.at(x, y)) continue;
      canvas->fill(left + x * module, top + y * moduleHeight, module, moduleHeight);
    }
  }
}

}  // namespace korvel
