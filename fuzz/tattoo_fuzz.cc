// Arbitrary grey pages through both stencil halftones: every dot is black or white, and on every
// SIMD target the dots are those of the reference implementation. Header line: width. Then the
// page's pixels, row after row.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <string>

#include "fuzz/demand.h"
#include "fuzz/header_line.h"
#include "lanes/target.h"
#include "tattoo/pipelines.h"
#include "tattoo/tattoo_reference.h"

namespace {

constexpr int kMaxWidth = 200;
constexpr size_t kMaxPixels = 3600;

using Halftone = QMImage (*)(const QMImage&);

std::string pixelsOf(const QMImage& image) {
  return {reinterpret_cast<const char*>(image.data), image.size()};
}

void demandDots(const QMImage& page, const QMImage& halftone, const std::string& name) {
  demand(halftone.width == page.width && halftone.height == page.height && halftone.channels == 1,
         name + ": the size is not the page's");
  for (size_t i = 0; i < halftone.size(); ++i) {
    demand(halftone.data[i] == 0 || halftone.data[i] == 255,
           name + ": neither black nor white at byte " + std::to_string(i));
  }
}

void check(const QMImage& page, Halftone halftone, Halftone reference, const std::string& name) {
  const std::string before = pixelsOf(page);
  const QMImage want = reference(page);
  for (const Target target : availableTargets()) {
    chooseTarget(target);
    const QMImage have = halftone(page);
    demandDots(page, have, name);
    demand(pixelsOf(page) == before, name + ": the page was written to");
    for (size_t i = 0; i < want.size(); ++i) {
      demand(have.data[i] == want.data[i],
             name + ", " + nameOf(target) + ": another dot at byte " + std::to_string(i));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count) {
  HeaderLine line(bytes, count);
  const int width = line.numberWithin(1, kMaxWidth);
  const int height = static_cast<int>(std::min(line.count(), kMaxPixels)) / width;
  if (height == 0) return 0;
  const QMImage page(width, height, QM_IMG_GRAY, line.bytes());
  check(page, qmTattooDithering, reference::qmTattooDithering, "Tattoo");
  check(page, qmTattooDitheringZ4, reference::qmTattooDitheringZ4, "Tattoo_Z4");
  return 0;
}
