// Apple raster, the format of pages that tablets and phones print (image/urf).
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_APPLE_RASTER_H
#define KORVEL_TOOLS_SETUP_APPLE_RASTER_H

#include <string>

#include "drawing/dot_canvas.h"

namespace korvel {

// A document of one grey page, dot for dot.
std::string appleRaster(const DotCanvas& page, int dpi);

}  // namespace korvel

#endif
