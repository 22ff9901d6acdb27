// Ten cells in two to five columns, whichever leaves the pictures more of their own shape.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <string>

#include "sheets/halftoned.h"
#include "sheets/pictures.h"
#include "sheets/sheets.h"
#include "tools/description/halftone_names.h"

namespace korvel {
namespace {

constexpr double kLeastWidth = 25;  // of a picture, for its names
constexpr double kLeastHeight = 10;
constexpr double kMargin = 3;
constexpr double kHead = 9;
constexpr double kFoot = 3.6;
constexpr double kNames = 5.6;  // above a picture
constexpr double kGap = 2.6;    // between cells
constexpr double kShape = 1.4;  // width to height of a picture

struct Grid {
  int columns;
  double pictureWidth;
  double pictureHeight;
};

Grid gridOf(const SheetPage& page, int columns) {
  const int rows = (10 + columns - 1) / columns;
  const double wide = page.widthMm() - 2 * kMargin + kGap;
  const double high = page.heightMm() - 2 * kMargin - kHead - kFoot + kGap;
  return {columns, wide / columns - kGap, high / rows - kGap - kNames};
}

Grid gridOf(const SheetPage& page) {
  const auto offShape = [](const Grid& grid) {
    const double ratio = grid.pictureWidth / std::max(0.1, grid.pictureHeight) / kShape;
    return std::max(ratio, 1 / ratio);
  };
  Grid best = gridOf(page, 2);
  for (const int columns : {3, 4, 5}) {
    const Grid grid = gridOf(page, columns);
    if (grid.pictureWidth >= kLeastWidth && offShape(grid) < offShape(best)) best = grid;
  }
  return best;
}

Point cellOf(const Grid& grid, size_t index) {
  const size_t column = index % static_cast<size_t>(grid.columns);
  const size_t row = index / static_cast<size_t>(grid.columns);
  return {kMargin + static_cast<double>(column) * (grid.pictureWidth + kGap),
          kMargin + kHead + static_cast<double>(row) * (grid.pictureHeight + kNames + kGap)};
}

// As large as the longest text allows, the same for all.
template <typename Texts, typename TextOf>
SheetPage::Lettering fitting(const SheetPage& page, SheetPage::Lettering lettering, double wide,
                             const Texts& texts, const TextOf& textOf) {
  const auto tooWide = [&](const auto& each) {
    return page.widthOf(textOf(each), lettering) > wide;
  };
  while (std::any_of(std::begin(texts), std::end(texts), tooWide)) lettering.cap *= 0.98;
  return lettering;
}

// In the cells that are left over, by the values of the option.
void drawAdvice(SheetPage* page, const Grid& grid) {
  constexpr const char* kLines[] = {
      "HalftoneType=None runs a threshold:", "text and barcodes only",
      "HalftoneType=Ordered runs Burkes:",   "labels with pictures",
      "HalftoneType=Tattoo runs Stencil:",   "drawings for a stencil"};
  const size_t columns = static_cast<size_t>(grid.columns);
  const size_t used = kHalftoneNames.size() % columns;
  if (used == 0) return;
  const auto cells = static_cast<double>(columns - used);
  const double wide = cells * grid.pictureWidth + (cells - 1) * kGap;
  const SheetPage::Lettering lettering =
      fitting(*page, {2.4, 1.2}, wide, kLines, [](const char* line) { return line; });
  Point at = cellOf(grid, kHalftoneNames.size());
  at.y += page->text(at, "Which one?", {2.8, 1.6, 255, wide}) + 2;
  for (const char* line : kLines) at.y += page->text(at, line, lettering) + 1.5;
}

}  // namespace

bool hasRoomForSampler(const SheetSize& size) {
  const Grid grid = gridOf(SheetPage(size));
  return grid.pictureWidth >= kLeastWidth && grid.pictureHeight >= kLeastHeight;
}

SamplerPatches samplerPatches(const SheetSize& size) {
  const SheetPage page(size);
  const Grid grid = gridOf(page);
  SamplerPatches patches = {};
  // Whole fours: longer rows would shear in the stencil halftones.
  patches.width = page.dots(grid.pictureWidth) / 4 * 4;
  patches.height = page.dots(grid.pictureHeight);
  for (size_t i = 0; i < kHalftoneNames.size(); ++i) {
    const Point cell = cellOf(grid, i);
    patches.left[i] = page.dots(cell.x);
    patches.top[i] = page.dots(cell.y + kNames);
  }
  return patches;
}

DotCanvas samplerPicture(const SheetSize& size) {
  const SamplerPatches patches = samplerPatches(size);
  return paintSample(patches.width, patches.height);
}

SheetPage drawSampler(const SheetSize& size) {
  SheetPage page(size);
  const SamplerPatches patches = samplerPatches(size);
  const DotCanvas picture = samplerPicture(size);
  const Grid grid = gridOf(page);
  const double right = page.widthMm() - kMargin;
  page.text({kMargin, kMargin}, "Ten halftones", {3.6, 1.6});
  page.textRight({right, kMargin}, size.text + ", " + std::to_string(size.dpi) + " dpi", {1.9});
  page.fill({kMargin, kMargin + 5.6, page.widthMm() - 2 * kMargin, 0.4});
  const double wide = patches.width / page.exactDots(1);
  const SheetPage::Lettering names = fitting(page, {2.2, 1.6}, wide, kHalftoneNames,
                                             [](const HalftoneName& name) { return name.setting; });
  for (size_t i = 0; i < kHalftoneNames.size(); ++i) {
    const Point cell = cellOf(grid, i);
    page.text(cell, kHalftoneNames[i].setting, names);
    page.text({cell.x, cell.y + 3.2}, kHalftoneNames[i].method, {1.7, 1.1, 255, wide});
    page.canvas()->paste(halftoned(picture, i), patches.left[i], patches.top[i]);
  }
  drawAdvice(&page, grid);
  page.text({kMargin, page.heightMm() - kMargin - 1.8},
            "The names are values of HalftoneType; what runs is below.",
            {1.7, 1.1, 255, page.widthMm() - 2 * kMargin});
  return page;
}

}  // namespace korvel
