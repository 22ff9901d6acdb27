// How pictures become grey dots, and how finished pages are moved.
// SPDX-License-Identifier: Apache-2.0
#include "studio/worker/picture_placer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "studio/worker/worker_answer.h"

namespace korvel {

// The placer reads no file that could be damaged.
void endWorker(const std::string&) { std::abort(); }
void endWorker(const Sentence&) { std::abort(); }

namespace {

using Rows = std::vector<std::string>;

// '#' black, '.' white, '+' grey of 128.
GreyPicture picture(const Rows& rows) {
  GreyPicture made = {rows[0].size(), rows.size(), 0, {}};
  for (const std::string& row : rows) {
    for (const char c : row) {
      made.grey.push_back(c == '#' ? 0 : c == '.' ? 255 : 128);
    }
  }
  return made;
}

// Ink in eighths, rounded: '.' none, '1' to '7', '#' full; '-' beside the picture.
Rows placed(const Rows& rows, const Matrix& onto, size_t width, size_t height) {
  constexpr unsigned char kUntouched = 1;
  constexpr size_t kStride = 16;
  std::vector<unsigned char> ink(kStride * height, kUntouched);
  placePicture(picture(rows), onto, {width, height, kStride, ink.data()});
  Rows text(height);
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < kStride; ++x) {
      const unsigned value = ink[y * kStride + x];
      if (x >= width) {
        EXPECT_EQ(value, kUntouched) << "the padding of row " << y;
        continue;
      }
      text[y] += value == kUntouched ? '-' : ".1234567#"[(value * 8 + 127) / 255];
    }
  }
  return text;
}

TEST(PlacePicture, TurnsScalesAndMovesUprightPictures) {
  const struct {
    const char* sentence;
    Rows picture;
    Matrix onto;
    Rows dots;
  } kCases[] = {
      {"as it is", {"#+.", "..#"}, {1, 0, 0, 1, 0, 0}, {"#4.--", "..#--", "-----"}},
      {"moved by whole dots", {"#+.", "..#"}, {1, 0, 0, 1, 1, 1}, {"-----", "-#4.-", "-..#-"}},
      {"moved beyond the left and upper edges",
       {"#+.", "..#"},
       {1, 0, 0, 1, -1, -1},
       {".#---", "-----", "-----"}},
      {"moved beyond the right edge", {"#+."}, {1, 0, 0, 1, 3, 0}, {"---#4"}},
      {"a quarter turn clockwise",
       {"#+.", "..#"},
       {0, 1, -1, 0, 2, 0},
       {".#---", ".4---", "#.---"}},
      {"a quarter turn back", {"#+.", "..#"}, {0, -1, 1, 0, 0, 3}, {".#---", "4.---", "#.---"}},
      {"upside down", {"#+.", "..#"}, {-1, 0, 0, -1, 3, 2}, {"#..--", ".4#--", "-----"}},
      {"twice as large, two tones keep hard edges",
       {"#.", ".#"},
       {2, 0, 0, 2, 0, 0},
       {"##..-", "##..-", "..##-", "..##-"}},
      {"not quite twice, two tones keep hard edges", {"#.#."}, {1.6, 0, 0, 1, 0, 0}, {"##.##."}},
      {"four times, greys are interpolated", {"#+"}, {4, 0, 0, 1, 0, 0}, {"##765444"}},
      {"half: the mean of four", {"##..", "#..."}, {0.5, 0, 0, 0.5, 0, 0}, {"6.---"}},
      {"a third: no thin line is lost",
       {"...", ".#.", "..."},
       {1 / 3., 0, 0, 1 / 3., 0, 0},
       {"1----"}},
      {"reduced between two dots", {"####"}, {0.5, 0, 0, 1, 0.5, 0}, {"4#4--"}},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(placed(c.picture, c.onto, c.dots[0].size(), c.dots.size()), c.dots) << c.sentence;
  }
}

// The diagonal of a dot is 1.41 dots, so that a black picture of 4 by 4, turned by 45 degrees about
// the middle of 6 by 6 dots, reaches to 2.83 dots from it. Corners are soft, its middle is full.
TEST(PlacePicture, TurnsFreelyWithSmoothEdges) {
  const double half = std::sqrt(0.5);
  const Rows black(4, "####");
  const Rows dots = placed(black, {half, half, -half, half, 3, 3 - 4 * half}, 6, 6);
  EXPECT_EQ(dots[2].substr(2, 2) + dots[3].substr(2, 2), "####");
  EXPECT_EQ(dots[0].find('#'), std::string::npos);
  EXPECT_EQ(dots[0][0], '-');
  for (size_t y = 0; y < dots.size(); ++y) {
    EXPECT_EQ(dots[y], std::string(dots[y].rbegin(), dots[y].rend())) << "row " << y;
  }
  EXPECT_EQ(dots[1], dots[4]);
}

}  // namespace
}  // namespace korvel
