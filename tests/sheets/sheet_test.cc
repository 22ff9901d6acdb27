// Sizes, barcodes and drawings of the test sheets.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "sheets/barcode.h"
#include "sheets/halftoned.h"
#include "sheets/pictures.h"
#include "sheets/sheets.h"
#include "tests/tools/preview/preview_runner.h"

namespace {

using korvel::SheetSize;

std::vector<SheetSize> sizesOf(const char* description) {
  std::vector<SheetSize> sizes;
  EXPECT_EQ(korvel::readSheetSizes(ppdOf(description), &sizes), "");
  return sizes;
}

SheetSize sizeOf(const char* description, const std::string& name) {
  for (const SheetSize& size : sizesOf(description)) {
    if (size.name == name) return size;
  }
  ADD_FAILURE() << "no size " << name;
  return {};
}

// The sizes that the rasteriser produces; tests/ppd/ checks them.
TEST(SheetSize, IsThePageThatTheRasteriserMakes) {
  const struct {
    const char* description;
    const char* name;
    const char* text;
    int width, height;
    unsigned dpi;
    bool stencil;
  } kCases[] = {
      {"korvel-label-203", "4x6", "4 x 6 in", 812, 1218, 203, false},
      {"korvel-label-203", "100x150mm", "100 x 150 mm", 800, 1200, 203, false},
      {"korvel-label-203", "20x30mmRotated", "30 x 20 mm", 240, 160, 203, false},
      {"korvel-label-300", "1x1", "1 x 1 in", 300, 300, 300, false},
      {"korvel-label-300", "100x150mm", "100 x 150 mm", 1181, 1772, 300, false},
      {"korvel-stencil-300", "A4", "A4", 2362, 3248, 300, true},
      {"korvel-stencil-300", "Tattoo_A6", "Tattoo A6", 1181, 1394, 300, true},
  };
  for (const auto& c : kCases) {
    const SheetSize size = sizeOf(c.description, c.name);
    EXPECT_EQ(size.text, c.text);
    EXPECT_EQ(size.width, c.width) << c.name;
    EXPECT_EQ(size.height, c.height) << c.name;
    EXPECT_EQ(size.dpi, c.dpi) << c.name;
    EXPECT_EQ(size.stencil, c.stencil) << c.name;
  }
  EXPECT_EQ(sizesOf("korvel-label-203").size(), 41u);
  EXPECT_EQ(sizesOf("korvel-stencil-300").size(), 4u);
  std::vector<SheetSize> none;
  EXPECT_EQ(korvel::readSheetSizes("/no.ppd", &none), "/no.ppd is not a printer description (PPD)");
}

// The modules of Code 128 by hand: start, characters, check character, stop.
TEST(Barcode, IsBarsAndSpacesByTheTable) {
  const struct {
    const char* text;
    const char* modules;
  } kCases[] = {
      // 104 + 33 is 137, modulo 103 is 34.
      {"A", "##.#..#....#.#...##...#...#.##...##...###.#.##"},
      // Start C for a pair of digits: 105 + 12 is 117, modulo 103 is 14.
      {"12", "##.#..###..#.##..###..#..##..###.##...###.#.##"},
  };
  for (const auto& c : kCases) {
    const korvel::Barcode barcode = korvel::encode(korvel::Symbology::kCode128, c.text);
    std::string modules;
    for (int x = 0; x < barcode.width; ++x) modules += barcode.at(x, 0) ? '#' : '.';
    EXPECT_EQ(modules, c.modules) << c.text;
    EXPECT_EQ(barcode.height, 1);
  }
}

TEST(Barcode, IsDrawnInWholeDots) {
  const korvel::Barcode barcode = {
      korvel::Symbology::kDataMatrix, "", 2, 2, {true, false, false, true}};
  korvel::DotCanvas canvas(6, 6);
  korvel::drawBarcode(&canvas, barcode, 1, 1, 2);
  std::string drawn;
  for (const uint8_t level : canvas.dots()) drawn += level == 0 ? '.' : '#';
  EXPECT_EQ(drawn,
            "......"
            ".##..."
            ".##..."
            "...##."
            "...##."
            "......");
}

TEST(Sample, GoesFromPaperToBlackAndHasARamp) {
  const korvel::DotCanvas sample = korvel::paintSample(160, 120);
  std::set<int> levels;
  for (const uint8_t level : sample.dots()) levels.insert(level);
  EXPECT_GE(levels.size(), 60u);
  for (const int y : {96, 119}) {
    EXPECT_EQ(sample.at(0, y), 255);
    EXPECT_EQ(sample.at(159, y), 0);
    for (int x = 1; x < 160; ++x) EXPECT_LE(sample.at(x, y), sample.at(x - 1, y)) << x;
  }
}

// Every size has a sheet that is neither empty nor drawn beyond its edge.
TEST(Calibration, FitsEverySizeAndHasItsRulers) {
  for (const char* description : {"korvel-label-203", "korvel-label-300", "korvel-stencil-300"}) {
    for (const SheetSize& size : sizesOf(description)) {
      SCOPED_TRACE(size.name + " at " + std::to_string(size.dpi));
      const korvel::SheetPage page = korvel::drawCalibration(size);
      const korvel::DotCanvas& canvas = page.canvas();
      for (const uint8_t level : canvas.dots()) ASSERT_TRUE(level == 0 || level == 255);
      EXPECT_EQ(canvas.at(size.width - 1, size.height - 1), 255);
      // A tick at every centimetre, four millimetres long, followed by paper.
      for (int mm = 10; mm + 1 < page.widthMm(); mm += 10) {
        EXPECT_EQ(canvas.at(page.dots(mm), page.dots(3.8)), 255) << mm;
        EXPECT_EQ(canvas.at(page.dots(mm + 0.5), page.dots(1.2)), 0) << mm;
      }
    }
  }
}

TEST(TestSheets, AreDrawnOnEverySize) {
  for (const SheetSize& size : sizesOf("korvel-label-203")) {
    const korvel::SheetPage page = korvel::drawTestLabel(size);
    const auto& dots = page.canvas().dots();
    EXPECT_GT(std::count(dots.begin(), dots.end(), 255), size.width * size.height / 20)
        << size.name;
    EXPECT_EQ(page.canvas().at(0, 0), 0) << size.name;
  }
  const korvel::SheetPage page = korvel::drawTestStencil(sizeOf("korvel-stencil-300", "Tattoo_A6"));
  const auto& dots = page.canvas().dots();
  std::set<int> levels(dots.begin(), dots.end());
  EXPECT_GE(levels.size(), 100u);
}

TEST(Sampler, IsForSizesWithRoomForTenPictures) {
  const struct {
    const char* description;
    const char* name;
    bool room;
  } kCases[] = {
      {"korvel-label-203", "4x6", true},      {"korvel-label-203", "4x4", true},
      {"korvel-label-203", "3x3", false},     {"korvel-label-203", "2x4Rotated", false},
      {"korvel-label-300", "80x120mm", true}, {"korvel-label-300", "1x1", false},
      {"korvel-stencil-300", "A4", true},     {"korvel-stencil-300", "Tattoo_A6", true},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(korvel::hasRoomForSampler(sizeOf(c.description, c.name)), c.room) << c.name;
  }
}

}  // namespace
