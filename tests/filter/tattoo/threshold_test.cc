// The moment-preserving threshold of hand-made histograms.
// Moments, discriminant and cut were worked out apart in single precision.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "tattoo/filters.h"
#include "tests/filter/tattoo/grey_image.h"

namespace {

// An image of one row that holds each level as often as it says.
QMImage pageOf(const std::vector<std::pair<int, int>>& levels) {
  std::vector<uint8_t> pixels;
  for (const auto& [level, count] : levels) {
    pixels.insert(pixels.end(), static_cast<size_t>(count), static_cast<uint8_t>(level));
  }
  return QMImage(static_cast<int>(pixels.size()), 1, QM_IMG_GRAY, pixels.data());
}

struct Case {
  const char* sentence;
  std::vector<std::pair<int, int>> levels;  // each with its number of pixels
  int threshold;
};

void expectThresholds(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    EXPECT_EQ(thresh_global_moments(pageOf(c.levels)), c.threshold) << c.sentence;
  }
}

TEST(MomentThreshold, CutsWhereTheMomentsSay) {
  expectThresholds({
      {"two levels, half each: the upper one", {{10, 4}, {20, 4}}, 20},
      {"two pixels", {{30, 1}, {90, 1}}, 90},
      {"black and the level above it", {{0, 5}, {1, 5}}, 1},
      {"one in four dark, where the cut falls just below a quarter", {{100, 1}, {200, 3}}, 100},
      {"three in four dark, where it falls just above", {{100, 3}, {200, 1}}, 200},
      {"three levels", {{0, 3}, {128, 3}, {255, 3}}, 128},
      {"two humps", {{40, 10}, {50, 20}, {60, 10}, {190, 30}, {200, 60}, {210, 30}}, 190},
      {"16 levels",
       {{0, 1},
        {17, 1},
        {34, 1},
        {51, 1},
        {68, 1},
        {85, 1},
        {102, 1},
        {119, 1},
        {136, 1},
        {153, 1},
        {170, 1},
        {187, 1},
        {204, 1},
        {221, 1},
        {238, 1},
        {255, 1}},
       136},
      {"a cut at 64", {{0, 4}, {64, 6}, {128, 4}, {200, 3}}, 64},
      {"a grey page with some black", {{0, 7}, {180, 93}}, 0},
      {"a white page with grey text", {{96, 11}, {255, 89}}, 96},
      {"dark", {{3, 50}, {7, 20}, {90, 3}}, 7},
      {"the square of c1 is single precision", {{5, 2}, {182, 5}}, 5},
      {"again", {{150, 5}, {11, 2}}, 150},
      {"and again", {{85, 4}, {155, 9}}, 155},
      {"four in a row", {{120, 1}, {121, 2}, {122, 2}, {123, 1}}, 121},
      {"a cut below 0 is passed by level 0, though no pixel has it", {{150, 2}, {154, 6}}, 0},
  });
}

TEST(MomentThreshold, LandsOnOneEndForBlackAndWhite) {
  expectThresholds({
      {"half and half", {{0, 50}, {255, 50}}, 255},
      {"two pixels", {{0, 1}, {255, 1}}, 255},
      {"mostly black", {{0, 99}, {255, 1}}, 255},
      {"one dot in twenty: rounding puts the cut below it", {{0, 5}, {255, 95}}, 0},
      {"one black dot in a hundred: rounding puts the cut above it", {{0, 1}, {255, 99}}, 255},
      {"one black dot in ten thousand", {{0, 1}, {255, 9999}}, 0},
      {"thirds", {{0, 1}, {255, 2}}, 255},
  });
}

TEST(MomentThreshold, FallsBackWithoutADiscriminant) {
  expectThresholds({
      {"almost all of one level: the discriminant is infinite", {{192, 365}, {193, 1}}, 128},
      {"the same with the level on top", {{200, 1}, {201, 330}}, 128},
      {"infinite again", {{212, 284}, {213, 1}}, 128},
      {"all white", {{255, 9}}, 128},
      {"all black", {{0, 4}}, 128},
      {"one pixel", {{77, 1}}, 128},
      {"all grey", {{128, 12}}, 128},
      {"almost all white, which single precision takes for all", {{253, 1}, {255, 9999}}, 128},
      {"two light levels, discriminant -155", {{200, 1}, {203, 1}}, 128},
      {"two light levels, discriminant -2236", {{201, 1}, {202, 1}}, 128},
  });
}

TEST(MomentThreshold, FindsNoLevelWhenTheCutIsBeyondAll) {
  expectThresholds({
      {"two light levels, no distance between the two roots", {{254, 5}, {255, 5}}, -1},
      {"the same with two pixels", {{206, 1}, {210, 1}}, -1},
      {"mostly one grey, cut at 1.13", {{158, 100}, {167, 5}}, -1},
      {"almost all white, cut at 1.004", {{250, 1}, {254, 1}, {255, 4000}}, -1},
      {"three pixels", {{214, 1}, {215, 2}}, -1},
  });
}

TEST(MomentThreshold, DoesNotCareWhereThePixelsStand) {
  EXPECT_EQ(thresh_global_moments(greyImage(2, 2, "1E 5A 5A 1E")), 90);
  EXPECT_EQ(thresh_global_moments(greyImage(1, 4, "5A 1E 1E 5A")), 90);
  EXPECT_EQ(thresh_global_moments(everyLevel()), 128);
}

}  // namespace
