// An owner of the library's raster streams, and the limit that the filter sets to a page.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_HOST_RASTER_STREAM_H
#define KORVEL_TOOLS_HOST_RASTER_STREAM_H

#include <cups/raster.h>

#include <cstdint>
#include <memory>

namespace korvel {

inline constexpr uint64_t kMostPageBytes = uint64_t{256} << 20;  // the filter refuses larger pages

struct RasterCloser {
  void operator()(cups_raster_t* raster) const { cupsRasterClose(raster); }
};
using Raster = std::unique_ptr<cups_raster_t, RasterCloser>;

}  // namespace korvel

#endif
