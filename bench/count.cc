// Halftones a label a given number of times, for callgrind: korvel_count METHOD TIMES.
// The difference between two such counts, divided by the pixels, is the cost of a pixel.
// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstdlib>

#include "bench/pages.h"
#include "image/cximage.h"
#include "tattoo/pipelines.h"

namespace {

constexpr int kStencil = 8;
constexpr int kStencilZ4 = 9;

bool halftone(int method) {
  const GreyPage& page = labelPage();
  if (method == kStencil || method == kStencilZ4) {
    const QMImage grey(page.width, page.height, QM_IMG_GRAY, page.pixels.data());
    const QMImage dots = method == kStencil ? qmTattooDithering(grey) : qmTattooDitheringZ4(grey);
    return dots.size() == page.pixels.size();
  }
  CxImage image;
  const auto width = static_cast<uint32_t>(page.width);
  image.CreateFromArray(page.pixels.data(), width, static_cast<uint32_t>(page.height), 8, width,
                        false);
  const bool done = image.Dither(method) && image.IncreaseBpp(8);
  image.Destroy();
  return done;
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
