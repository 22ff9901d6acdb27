// Whether a raster file is whole. The filter ends normally where the raster ends, even within a
// page, so programs that show what it printed check the raster themselves.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_HOST_RASTER_CHECK_H
#define KORVEL_TOOLS_HOST_RASTER_CHECK_H

#include <cups/raster.h>

#include <functional>
#include <string>

#include "tools/common/result.h"

namespace korvel {

// Reads the pages of a file, compressed or not, to the end. Fails when the file ends within a page,
// or when this system's raster library refuses a page header. Succeeds for a file without pages,
// and does not look beyond a page that makes the filter stop and report. `page`, when set, receives
// the header of each page that is printed.
Result<void> checkRaster(const std::string& path,
                         const std::function<void(const cups_page_header2_t&)>& page = nullptr);

}  // namespace korvel

#endif
