// A sheet as the spooler takes it: CUPS raster of one page, compressed with gzip.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_SHEETS_RASTER_FILE_H_
#define KORVEL_SHEETS_RASTER_FILE_H_

#include <string>

#include "sheets/sheet_page.h"

namespace korvel {

// Returns an empty text, or one sentence.
std::string writeSheet(const SheetPage& page, const std::string& path);

}  // namespace korvel

#endif
