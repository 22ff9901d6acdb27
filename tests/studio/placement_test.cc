// Where a document lands on its page.
// SPDX-License-Identifier: Apache-2.0
#include "studio/placement.h"

#include <gtest/gtest.h>

namespace {

using korvel::Fit;
using korvel::PageGeometry;
using korvel::Placement;

// 200 by 300 points, of which 180 by 280 can be printed, 10 to the left and 5 below.
constexpr PageGeometry kPage = {200, 300, 10, 10, 15, 5};

TEST(Placement, FollowsFitScaleShiftAndTurn) {
  const struct {
    const char* sentence;
    Placement placement;
    korvel::TrueSize document;
    double scale;
    const char* matrix;
  } kCases[] = {
      {"as wide as the printable area",
       {Fit::kFit, 1, 0, 0, 0},
       {90, 100},
       2,
       "2.000000 0.000000 0.000000 2.000000 10.000000 45.000000"},
      {"as high as the printable area",
       {Fit::kFit, 1, 0, 0, 0},
       {10, 140},
       2,
       "2.000000 0.000000 0.000000 2.000000 90.000000 5.000000"},
      {"filled: as high, cut at the sides",
       {Fit::kFill, 1, 0, 0, 0},
       {180, 140},
       2,
       "2.000000 0.000000 0.000000 2.000000 -80.000000 5.000000"},
      {"true size",
       {Fit::kTrueSize, 9, 0, 0, 0},
       {80, 80},
       1,
       "1.000000 0.000000 0.000000 1.000000 60.000000 105.000000"},
      {"own size",
       {Fit::kOwn, 0.5, 0, 0, 0},
       {80, 80},
       0.5,
       "0.500000 0.000000 0.000000 0.500000 80.000000 125.000000"},
      {"an inch to the right and two down",
       {Fit::kOwn, 1, 25.4, 50.8, 0},
       {80, 80},
       1,
       "1.000000 0.000000 0.000000 1.000000 132.000000 -39.000000"},
      {"a quarter turn clockwise",
       {Fit::kTrueSize, 1, 0, 0, 90},
       {80, 40},
       1,
       "0.000000 -1.000000 1.000000 0.000000 80.000000 185.000000"},
      {"a quarter turn back",
       {Fit::kTrueSize, 1, 0, 0, -90},
       {80, 40},
       1,
       "0.000000 1.000000 -1.000000 0.000000 120.000000 105.000000"},
      {"upside down",
       {Fit::kTrueSize, 1, 0, 0, 180},
       {80, 40},
       1,
       "-1.000000 0.000000 0.000000 -1.000000 140.000000 165.000000"},
      {"a turned document fits by its turned sides",
       {Fit::kFit, 1, 0, 0, 450},
       {140, 30},
       2,
       "0.000000 -2.000000 2.000000 0.000000 70.000000 285.000000"},
      {"45 degrees",
       {Fit::kTrueSize, 1, 0, 0, 45},
       {20, 20},
       1,
       "0.707107 -0.707107 0.707107 0.707107 85.857864 145.000000"},
  };
  for (const auto& c : kCases) {
    const korvel::PlacedDocument placed = korvel::place(c.placement, kPage, c.document);
    EXPECT_DOUBLE_EQ(placed.scale, c.scale) << c.sentence;
    EXPECT_EQ(korvel::matrixText(placed.matrix), c.matrix) << c.sentence;
  }
}

// 72 dots per inch, so that a point is a dot.
TEST(Placement, BringsTheCornerToAWholeDot) {
  PageGeometry page = kPage;
  page.dpi = 72;
  const korvel::PlacedDocument placed =
      korvel::place({Fit::kTrueSize, 1, 0.2 * 25.4 / 72, 1.4 * 25.4 / 72, 0}, page, {81, 80});
  EXPECT_DOUBLE_EQ(placed.left, 50);  // (180 - 81) / 2 = 49.5, and 0.2 more is none
  EXPECT_DOUBLE_EQ(placed.top, 101);
  EXPECT_EQ(korvel::matrixText(placed.matrix),
            "1.000000 0.000000 0.000000 1.000000 60.000000 104.000000");
}

// A picture of 10 by 20 pixels, 40 by 80 points, on 144 dots per inch: eight dots for a pixel.
TEST(Placement, LeadsFromPixelsToDots) {
  PageGeometry page = kPage;
  page.dpi = 144;
  const korvel::TrueSize size = {40, 80};
  const auto dots = [&](double turn) {
    const Placement placement = {Fit::kTrueSize, 1, 0, 0, turn};
    return korvel::matrixText(
        korvel::dotsOfPixels(korvel::place(placement, page, size), page, size, 10, 20));
  };
  EXPECT_EQ(dots(0), "8.000000 0.000000 0.000000 8.000000 140.000000 200.000000");
  EXPECT_EQ(dots(90), "0.000000 8.000000 -8.000000 0.000000 260.000000 240.000000");
}

TEST(MatrixText, HasAPointAndSixDecimalsInEveryLocale) {
  EXPECT_EQ(korvel::matrixText({0.5, -0.25, 1e-9, -1234.5, 7, -0.0000005}),
            "0.500000 -0.250000 0.000000 -1234.500000 7.000000 -0.000001");
}

}  // namespace
