// Halftones one label repeatedly, for callgrind: korvel_count METHOD TIMES.
// The difference between two such counts, divided by the pixels, is the cost per pixel.
// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstdlib>

#include "bench/pages.h"
#include "image/cximage.h"
#include "tattoo/pipelines.h"

namespace {

constexpr int kStencil = 8;
constexpr int kStencilZ4 = 9;

bool stencil(const GreyRows& grey, int method) {
  CxImage image;
  if (!image.CreateGrey(static_cast<uint32_t>(grey.width), static_cast<uint32_t>(grey.height))) {
    return false;
  }
  const auto halftone = method == kStencil ? qmTattooDitherRows : qmTattooDitherRowsZ4;
  halftone(grey, image.GetBits(), image.GetEffWidth());
  return image.Destroy();
}

// As the filter halftones a page without tone, turn and mirror.
bool halftone(int method) {
  const GreyPage& page = labelPage();
  const uint8_t* pixels = page.pixels.data();
  if (method == kStencil || method == kStencilZ4) {
    return stencil({pixels, static_cast<size_t>(page.width), page.width, page.height}, method);
  }
  CxImage image;
  const auto width = static_cast<uint32_t>(page.width);
  return image.CreateHalftone(pixels, width, static_cast<uint32_t>(page.height), width, method) &&
         image.Destroy();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "Usage: korvel_count METHOD TIMES\n");
    return 2;
  }
  for (int i = 0; i < std::atoi(argv[2]); ++i) {
    if (!halftone(std::atoi(argv[1]))) return 1;
  }
  return 0;
}
