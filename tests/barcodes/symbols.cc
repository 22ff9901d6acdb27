// The table of symbologies, and zint's dump of a symbol: hexadecimal digits, a row of modules per
// line. SPDX-License-Identifier: Apache-2.0
#include "tests/barcodes/symbols.h"

#include <algorithm>
#include <sstream>

#include "tests/ppd/descriptions.h"

namespace {

constexpr int kLinearHeight = 15;

std::string bitsOf(const std::string& hex) {
  std::string bits;
  for (const char digit : hex) {
    if (digit == ' ') continue;
    const int value = std::stoi(std::string(1, digit), nullptr, 16);
    for (int bit = 3; bit >= 0; --bit) bits += (value >> bit & 1) != 0 ? '1' : '0';
  }
  return bits;
}

// zint fills the last digit of a row with light modules; a symbol's last column has a dark one.
void cutFilling(std::vector<std::string>* rows) {
  size_t columns = 0;
  for (const std::string& row : *rows) columns = std::max(columns, row.find_last_of('1') + 1);
  for (std::string& row : *rows) row.resize(columns, '0');
}

}  // namespace

const std::vector<Symbology>& symbologies() {
  // The readers that know a symbology: zbar, libdmtx, zxing-cpp.
  static const std::vector<Symbology> kAll = {
      {"EAN-13", 13, "5901234123457", "5901234123457", 0, true, false, true},
      {"UPC-A", 34, "036000291452", "036000291452", 0, true, false, true},
      {"Code 128", 20, "K7A8-20", "K7A8-20", 0, true, false, true},
      {"GS1-128", 16, "[01]09501101530003", "09501101530003", 0, true, false, true},
      {"Code 39", 8, "K7A4", "K7A4", 0, true, false, true},
      {"ITF-14", 89, "0950110153000", "09501101530003", 0, true, false, true},
      {"QR Code", 58, "LOT-7-20", "LOT-7-20", 1, true, false, true},
      {"Data Matrix", 71, "LOT-7-20", "LOT-7-20", 1, false, true, true},
      {"PDF417", 55, "LOT-7-20", "LOT-7-20", 3, false, false, true},
      {"Aztec", 92, "LOT-7-20", "LOT-7-20", 1, false, false, true},
  };
  return kAll;
}

int Symbol::height() const {
  return symbology->rowModules == 0 ? kLinearHeight
                                    : static_cast<int>(rows.size()) * symbology->rowModules;
}

Symbol encode(const Symbology& symbology) {
  Symbol symbol;
  symbol.symbology = &symbology;
  const CommandResult dump = runCommand("zint --dump -b " + std::to_string(symbology.zintNumber) +
                                        " -d " + quoted(symbology.data));
  if (dump.status != 0) return symbol;
  std::istringstream in(dump.output);
  for (std::string line; std::getline(in, line);) symbol.rows.push_back(bitsOf(line));
  cutFilling(&symbol.rows);
  return symbol;
}
