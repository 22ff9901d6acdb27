// Barcodes on a page, found by the library of Debian's package libzbar0 where it is installed.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_WORKER_BARCODE_READER_H
#define KORVEL_STUDIO_WORKER_BARCODE_READER_H

#include <nlohmann/json.hpp>
#include <string>

namespace korvel {

// Looks at the grey page `raster` before the filter and at its dots `png`. {"decoder": false}
// without the program; else {"decoder": true, "codes": [...]}, each code with its "type", "text",
// whether it is "readable" in the dots, and the "box" around it: left, top, right, bottom in dots.
nlohmann::json readBarcodes(const std::string& raster, const std::string& png);

}  // namespace korvel

#endif
