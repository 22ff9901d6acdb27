// Reads the recipes of the golden jobs and makes their rasters.
// SPDX-License-Identifier: Apache-2.0
#include "tests/hardening/golden_rasters.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tests/support/raster_maker.h"

namespace fs = std::filesystem;

namespace {

GoldenRaster readRaster(const fs::path& folder) {
  GoldenRaster golden;
  golden.name = folder.filename().string();
  std::vector<RasterPage> pages;
  std::ifstream in(folder / "job.txt");
  for (std::string line; std::getline(in, line);) {
    RasterPage page;
    if (line.starts_with("ppd ")) golden.ppd = line.substr(4);
    if (line.starts_with("options ")) golden.options = line.substr(8);
    if (!line.starts_with("page ") || !parseRasterPage(line.substr(5), &page)) continue;
    golden.pageStarts.push_back(makeRaster(pages).size());
    pages.push_back(page);
  }
  golden.bytes = makeRaster(pages);
  return golden;
}

}  // namespace

std::vector<GoldenRaster> goldenRasters() {
  std::vector<GoldenRaster> all;
  for (const auto& entry : fs::directory_iterator(KORVEL_GOLDEN_DIR)) {
    if (fs::exists(entry.path() / "job.txt")) all.push_back(readRaster(entry.path()));
  }
  std::sort(all.begin(), all.end(),
            [](const GoldenRaster& a, const GoldenRaster& b) { return a.name < b.name; });
  for (size_t i = 0; i < all.size(); ++i) all[i].number = i;
  return all;
}
