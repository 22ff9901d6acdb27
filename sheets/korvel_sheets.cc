// korvel-sheets: draws every sheet that helps for every size of the descriptions given.
// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "sheets/raster_file.h"
#include "sheets/sheets.h"

namespace {

// FOLDER/<sheet>-<size>-<dpi>dpi.ras.gz
std::string writeAs(const std::string& folder, const char* sheet, const korvel::SheetPage& page) {
  const korvel::SheetSize& size = page.size();
  return korvel::writeSheet(
      page, folder + "/" + sheet + "-" + size.name + "-" + std::to_string(size.dpi) + "dpi.ras.gz");
}

std::string drawAll(const korvel::SheetSize& size, const std::string& folder) try {
  std::string fault = writeAs(folder, "calibration", korvel::drawCalibration(size));
  if (fault.empty() && korvel::hasRoomForSampler(size)) {
    fault = writeAs(folder, "halftones", korvel::drawSampler(size));
  }
  if (!fault.empty()) return fault;
  return size.stencil ? writeAs(folder, "test-stencil", korvel::drawTestStencil(size))
                      : writeAs(folder, "test-label", korvel::drawTestLabel(size));
} catch (const std::runtime_error& error) {
  return error.what();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("Usage: korvel-sheets FOLDER PPD...\n", stderr);
    return 2;
  }
  for (int i = 2; i < argc; ++i) {
    std::vector<korvel::SheetSize> sizes;
    std::string fault = korvel::readSheetSizes(argv[i], &sizes);
    for (size_t s = 0; s < sizes.size() && fault.empty(); ++s) fault = drawAll(sizes[s], argv[1]);
    if (fault.empty()) continue;
    std::fprintf(stderr, "korvel-sheets: %s\n", fault.c_str());
    return 1;
  }
  return 0;
}
