// A drawing as a studio prints it, lines of every weight and a ramp of greys below.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <string>

#include "sheets/pictures.h"
#include "sheets/sheets.h"

namespace korvel {
namespace {

constexpr double kMargin = 6;
constexpr double kScales = 30;  // of the part with lines and greys

void drawWeights(SheetPage* page, const Box& room) {
  constexpr double kWeights[] = {0.1, 0.2, 0.3, 0.5, 0.8, 1.2};
  const double step = room.height / 6;
  double top = room.top + step / 2;
  for (const double weight : kWeights) {
    const auto tenths = std::lround(weight * 10);
    page->text({room.left, top - 1},
               std::to_string(tenths / 10) + "." + std::to_string(tenths % 10), {2, 1.2});
    page->line({room.left + 7, top}, {room.right(), top}, weight);
    top += step;
  }
}

void drawRamp(SheetPage* page, const Box& room) {
  page->canvas()->paste(paintRamp(page->dots(room.width), page->dots(room.height * 0.55)),
                        page->dots(room.left), page->dots(room.top));
  constexpr int kSteps = 8;
  const double wide = room.width / kSteps;
  for (int i = 0; i < kSteps; ++i) {
    page->fill({room.left + i * wide, room.top + room.height * 0.6, wide, room.height * 0.4},
               static_cast<uint8_t>(255 - 255 * i / (kSteps - 1)));
  }
}

}  // namespace

SheetPage drawTestStencil(const SheetSize& size) {
  SheetPage page(size);
  const double wide = page.widthMm() - 2 * kMargin;
  page.text({kMargin, kMargin}, "Test stencil", {5, 1.5, 255, wide * 0.5});
  const std::string note = size.text + ", " + std::to_string(size.dpi) + " dpi";
  page.textRight({kMargin + wide, kMargin + 1}, note, {2.6, 1.2, 255, wide * 0.42});
  const double top = kMargin + 10;
  const double bottom = page.heightMm() - kMargin - kScales;
  const double radius = std::min(wide, bottom - top - 4) / 2;
  const Point middle = {page.exactDots(page.widthMm() / 2), page.exactDots((top + bottom - 4) / 2)};
  paintFlower(page.canvas(), middle, page.exactDots(radius));
  page.fill({kMargin, bottom, wide, 0.3});
  const double half = (wide - 6) / 2;
  drawWeights(&page, {kMargin, bottom + 3, half, kScales - 3});
  drawRamp(&page, {kMargin + half + 6, bottom + 4, half, kScales - 5});
  return page;
}

}  // namespace korvel
