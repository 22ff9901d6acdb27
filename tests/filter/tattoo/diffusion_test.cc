// The stencil quantiser: bounds, each tap, the white correction, whole small pictures.
// '#' is black and '.' is white; the threshold itself is black.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/diffusion.h"

#include <gtest/gtest.h>

#include "tattoo/tattoo_reference.h"
#include "tests/filter/tattoo/grey_image.h"
#include "tests/filter/tattoo/whole_images.h"

namespace {

TEST(Bounds, IncludeZeroAndExcludeTheSides) {
  struct Case {
    int x, y, width, height;
    bool inside;
  };
  constexpr Case kCases[] = {
      {0, 0, 3, 2, true},    {2, 1, 3, 2, true},   {3, 1, 3, 2, false}, {2, 2, 3, 2, false},
      {-1, 0, 3, 2, false},  {0, -1, 3, 2, false}, {0, 0, 1, 1, true},  {0, 0, 0, 5, false},
      {0, 0, 5, 0, false},   {1, 2, 2, 3, true},   {2, 1, 2, 3, false}, {-1, -1, 3, 2, false},
      {100, 0, 3, 2, false},
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(reference::isWithinBounds(c.x, c.y, c.width, c.height), c.inside)
        << c.x << "," << c.y << " in " << c.width << " x " << c.height;
  }
}

struct Case {
  const char* sentence;
  int threshold;
  int width, height;
  std::string levels;
  PictureRows picture;
};

void expectPictures(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    const QMImage source = greyImage(c.width, c.height, c.levels);
    for (const auto quantise : {diffused, reference::edf_cus}) {
      const QMImage result = quantise(source, c.threshold);
      EXPECT_EQ(stencilPicture(result), pictureText(c.picture)) << c.sentence;
      EXPECT_EQ(result.color, QM_IMG_GRAY) << c.sentence;
    }
    EXPECT_EQ(pixelBytes(source), hexLine(c.levels)) << c.sentence << ": only read";
  }
}

TEST(StencilDiffusion, IsWhiteOnlyAboveTheThreshold) {
  expectPictures({
      {"at the threshold", 128, 1, 1, "80", {"#"}},
      {"above the threshold", 128, 1, 1, "81", {"."}},
      {"white at 254", 254, 1, 1, "FF", {"."}},
      {"white is not above 255", 255, 1, 1, "FF", {"#"}},
      {"black is not above 0", 0, 1, 1, "00", {"#"}},
      {"black is above -1", -1, 1, 1, "00", {"."}},
  });
}

// Black pixels before the last one hand it their error; at threshold 255 it is white as soon as
// level and share exceed 255. Shares of the 255, worked out: see each sentence.
TEST(DiffusionTaps, AreSix) {
  expectPictures({
      // clang-format off
      {"right: 0.505786 * 255 = 128.98, 126 is too little", 255, 2, 1, "FF 7E", {"##"}},
      {"right: 127 is enough", 255, 2, 1, "FF 7F", {"#."}},
      {"two to the right: -13.50 and 65.23 by the middle one, 203", 255, 3, 1, "FF 00 CB",
       {"###"}},
      {"two to the right: 204", 255, 3, 1, "FF 00 CC", {"##."}},
      {"two to the left below: 0.226194 * 255 = 57.68, 197", 255, 3, 2, "00 00 FF  C5 00 00",
       {"###", "###"}},
      {"two to the left below: 198", 255, 3, 2, "00 00 FF  C6 00 00", {"###", ".##"}},
      {"left below: 0.128835 * 255 = 32.85, 222", 255, 2, 2, "00 FF  DE 00", {"##", "##"}},
      {"left below: 223", 255, 2, 2, "00 FF  DF 00", {"##", ".#"}},
      {"below: 0.243191 * 255 = 62.01, 192", 255, 1, 2, "FF C0", {"#", "#"}},
      {"below: 193", 255, 1, 2, "FF C1", {"#", "."}},
      {"right below: -28.33, and 31.37 and 39.77 by the two between, 212", 255, 2, 2,
       "FF 00  00 D4", {"##", "##"}},
      {"right below: 213", 255, 2, 2, "FF 00  00 D5", {"##", "#."}},
      // clang-format on
  });
}

// The fourth row's dot at its end is where the errors of three rows add up above -1 again.
TEST(StencilDiffusion, ScattersFiveDotsOverBlackAtMinusOne) {
  expectPictures({
      // clang-format off
      {"24 x 8, all zero", -1, 24, 8, pixelBytes(solidGrey(24, 8, 0)),
       {".#####.#####.#####.#####",
        "########################",
        "########################",
        "#######################.",
        "########################",
        "########################",
        "########################",
        "########################"}},
      // clang-format on
  });
}

TEST(StencilDiffusion, CountsWhiteBesideBlackAsPartlyWhite) {
  expectPictures({
      // clang-format off
      {"black on the left", 128, 3, 3,
       "28 80 28 "
       "00 C8 5A "
       "80 80 28 ",
       {"#.#",
        "#.#",
        ".##"}},
      {"black above", 128, 3, 3,
       "00 00 A0 "
       "C8 C8 C8 "
       "5A 28 FF ",
       {"##.",
        "...",
        "##."}},
      {"black on both sides", 128, 3, 3,
       "C8 28 FF "
       "5A 5A 00 "
       "80 80 00 ",
       {".#.",
        "#.#",
        ".##"}},
      {"two rows are all border", 128, 8, 2,
       "FF 00 FF 00 FF 00 FF C8 "
       "FF 00 FF 00 FF 00 FF C8 ",
       {".#.#.#..",
        ".#.#.#.."}},
      {"so are two columns", 128, 2, 5,
       "FF 00 "
       "00 C8 "
       "5A B4 "
       "3C FF "
       "64 00 ",
       {".#",
        "#.",
        "#.",
        "#.",
        "##"}},
      {"a correction of 0.1428 would print another dot", 187, 4, 3,
       "9A 03 1B 7D "
       "6D 95 10 79 "
       "DF B7 62 4B ",
       {"####",
        "#.##",
        "..##"}},
      {"so would one in double precision", 162, 8, 6,
       "0C C3 1B 59 AB 10 A1 CF "
       "27 32 42 C5 1E 9A 9F 8A "
       "7B 3D E9 46 F4 30 15 1A "
       "52 3D 7D 36 C7 02 64 30 "
       "A6 85 D7 0F 55 62 CB E2 "
       "54 F5 91 D5 97 20 E2 16 ",
       {"#.##.##.",
        "###.#..#",
        ".#...###",
        "##.#.###",
        ".#.##...",
        "#....#.#"}},
      {"and shares in double precision", 201, 4, 3,
       "53 98 7C B8 "
       "28 5E 4D 71 "
       "87 31 2C 3F ",
       {"##.#",
        "###.",
        ".###"}},
      // clang-format on
  });
}

TEST(StencilDiffusion, DrawsFlatGreys) {
  expectPictures({
      // clang-format off
      {"grey 60 against 128", 128, 12, 6,
       pixelBytes(solidGrey(12, 6, 60)),
       {"############",
        "#.#.#.#.#.##",
        "##.###.##.##",
        "##.#.###.##.",
        "####.##.####",
        "#.###.##.###"}},
      {"grey 128 against 128", 128, 12, 6,
       pixelBytes(solidGrey(12, 6, 128)),
       {"#.#.#.#.#.#.",
        ".#.#.#.#.#.#",
        "#...#...#..#",
        ".#.#.#.#..#.",
        "#..#..#.#.#.",
        "#.#.#..#.#.#"}},
      {"grey 200 against 128", 128, 12, 6,
       pixelBytes(solidGrey(12, 6, 200)),
       {"............",
        ".#..#..#..#.",
        "............",
        ".#..#..#....",
        ".........#..",
        ".#..#......#"}},
      {"grey 255 against 128", 128, 12, 6,
       pixelBytes(solidGrey(12, 6, 255)),
       {"............",
        "............",
        "............",
        "............",
        "............",
        "............"}},
      {"grey 128 against 64", 64, 12, 6,
       pixelBytes(solidGrey(12, 6, 128)),
       {".#..#..#..#.",
        ".#.#.#.#.#..",
        ".#..#..#.#.#",
        ".#.#..#...#.",
        "#..#.#.#.#..",
        ".#.#..#.#.#."}},
      {"grey 200 against 254", 254, 12, 6,
       pixelBytes(solidGrey(12, 6, 200)),
       {"#.#.#.#.#.#.",
        ".#.........#",
        "...#..#..#..",
        "#.........#.",
        "..#..#.....#",
        "....#..#..#."}},
      {"grey 128 against -1", -1, 12, 6,
       pixelBytes(solidGrey(12, 6, 128)),
       {"............",
        ".##.##.##.#.",
        ".#..#..#.#..",
        ".#.#..#..#..",
        "..#..#..#..#",
        ".#.#.#.#.#.."}},
      {"grey 128 against 0", 0, 12, 6,
       pixelBytes(solidGrey(12, 6, 128)),
       {"............",
        ".##.##.##.#.",
        ".#..#..#.#..",
        ".#.#..#..#..",
        "..#..#..#..#",
        ".#.#.#.#.#.."}},
      // clang-format on
  });
}

TEST(StencilDiffusion, DrawsThinImages) {
  expectPictures({
      // clang-format off
      {"one row", 128, 16, 1,
       pixelBytes(solidGrey(16, 1, 100)),
       {"#.##.#.##.#.##.#"}},
      {"one column", 128, 1, 8,
       pixelBytes(solidGrey(1, 8, 100)),
       {"#",
        "#",
        ".",
        "#",
        "#",
        ".",
        "#",
        "#"}},
      {"two by two", 128, 2, 2,
       pixelBytes(solidGrey(2, 2, 130)),
       {".#",
        "#."}},
      // clang-format on
  });
}

TEST(StencilDiffusion, ScansEveryRowFromTheLeft) {
  expectPictures({
      // clang-format off
      {"a ramp from dark to light", 128, 7, 6,
       "00 28 50 78 A0 C8 F0 "
       "00 28 50 78 A0 C8 F0 "
       "00 28 50 78 A0 C8 F0 "
       "00 28 50 78 A0 C8 F0 "
       "00 28 50 78 A0 C8 F0 "
       "00 28 50 78 A0 C8 F0 ",
       {"###.#..",
        "##.#...",
        "###..#.",
        "###....",
        "####...",
        "##.#.#."}},
      {"mirrored, which gives more than a mirrored picture", 128, 7, 6,
       "F0 C8 A0 78 50 28 00 "
       "F0 C8 A0 78 50 28 00 "
       "F0 C8 A0 78 50 28 00 "
       "F0 C8 A0 78 50 28 00 "
       "F0 C8 A0 78 50 28 00 "
       "F0 C8 A0 78 50 28 00 ",
       {"...####",
        "..#..##",
        "...####",
        "....###",
        "..#.###",
        "...#.##"}},
      // clang-format on
  });
}

// All 256 levels, level i at column i mod 16 of row i / 16.
TEST(StencilDiffusion, DrawsEveryLevel) {
  const std::string levels = pixelBytes(everyLevel());
  expectPictures({
      // clang-format off
      {"against 128", 128, 16, 16,
       levels,
       {"################",
        "################",
        "#########.###.##",
        "#.#.#.##.#.###.#",
        "##.##.###.#.#.##",
        "#.#.#.#.##.#.#.#",
        ".#.#.#..#.#.#.#.",
        "#.#.#.#..#..#.#.",
        ".#...#.#..#..#.#",
        ".#.#...#.#..#...",
        "..#..#........#.",
        "....#..#.#.#....",
        ".#...........#..",
        "................",
        "...#............",
        "................"}},
      {"against 64", 64, 16, 16,
       levels,
       {"################",
        "###########.####",
        "#.##.#.#.###.#.#",
        "##.####.#.###.#.",
        "#.#.#.##.#.#.###",
        ".##.#.#.#.#.#..#",
        "#..#.#.#.#.#.#..",
        ".##.#..#..#..#.#",
        ".#..#.#..#..#...",
        "...#..#..#..#.#.",
        ".#...#..#..#....",
        "..#..........#..",
        ".....#...#......",
        "................",
        "..#.............",
        "................"}},
      {"against 200", 200, 16, 16,
       levels,
       {"################",
        "################",
        "################",
        "######.##.##.###",
        "#.#.###.##.##.##",
        "##.#.#.#.#.#.#.#",
        "#.#.#.#.#.#.#.#.",
        ".#.#.#.#.#..#.##",
        "#...#...#..#..#.",
        "#.#..#..#.#..#.#",
        ".#..#..#....#...",
        "...#.....#....#.",
        "#....#.....#....",
        ".......#......#.",
        ".#..............",
        "................"}},
      {"against -1", -1, 16, 16,
       levels,
       {".####.###.##.##.",
        "##.#############",
        "#####.##.##.##.#",
        ".#.###.##.##.#.#",
        "#.#.#.#.#.#.#.#.",
        ".#.#.#.#.#.#.#.#",
        "#.#.#.#.#.#.#...",
        ".#..#..#...#.#..",
        ".#.#..#.#...#..#",
        "...#....#.#.....",
        ".#..#..#...#.#..",
        "................",
        "..#..#..#.......",
        "...........#....",
        "................",
        "................"}},
      // clang-format on
  });
}

}  // namespace
