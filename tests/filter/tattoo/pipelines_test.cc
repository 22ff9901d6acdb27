// Both stencil halftones from page to dots, on pages small enough to write down.
// '#' is black and '.' is white; the first halftone is on the left, Z4 on the right.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/pipelines.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/filter/tattoo/grey_image.h"

namespace {

struct Case {
  const char* sentence;
  int width, height;
  std::string levels;
  PictureRows pictures;  // both halftones' rows, two blanks between them
};

// The two halftones of a page, side by side.
std::string bothPictures(const QMImage& page) {
  std::istringstream left(stencilPicture(qmTattooDithering(page)));
  std::istringstream right(stencilPicture(qmTattooDitheringZ4(page)));
  std::string text;
  for (std::string l, r; std::getline(left, l) && std::getline(right, r);) {
    text += l + "  " + r + '\n';
  }
  return text;
}

void expectPictures(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    const QMImage page = greyImage(c.width, c.height, c.levels);
    EXPECT_EQ(bothPictures(page), pictureText(c.pictures)) << c.sentence;
    EXPECT_EQ(pixelBytes(page), hexLine(c.levels)) << c.sentence << ": only read";
  }
}

// Hex text of a page of black strokes, '#', on white.
std::string inkLevels(const PictureRows& rows) {
  std::string text;
  for (const std::string& row : rows) {
    for (const char c : row) text += c == '#' ? "00 " : "FF ";
  }
  return text;
}

TEST(StencilHalftones, DrawEveryLevel) {
  expectPictures({
      // clang-format off
      {"level i at column i mod 16 of row i / 16", 16, 16,
       pixelBytes(everyLevel()),
       {"################  ################",
        "################  ################",
        "################  #.#.#.#.#.#.#.#.",
        "################  .#.#.#.#.#.#.#.#",
        "##.#.#.#.#.#..#.  #.#.#.#.#..#.#.#",
        "#.#.#.#..#.#.#.#  .#..#..#.#.#.#.#",
        ".#....#.#...#...  #..#.#..#.#.#..#",
        ".#.#.#...#...#.#  #.#..#.#..#.#.#.",
        ".......#..#.....  .#.#.#.#.#..#.#.",
        "#.#.#.......#...  #.#.#.#..#.#.#.#",
        "......#..#....#.  .#..#.#.#.#..#..",
        "...#.......#....  .#.#...#...#..#.",
        "................  ....#...#....#..",
        "................  .#........#.....",
        "................  ................",
        "................  ................"}},
      // clang-format on
  });
}

TEST(StencilHalftones, DrawARamp) {
  const std::string row =
      "00 08 10 18 20 28 30 38 40 48 50 58 60 68 70 78"
      "80 88 90 98 A0 A8 B0 B8 C0 C8 D0 D8 E0 E8 F0 F8 ";
  expectPictures({
      // clang-format off
      {"32 columns from 0 to 248, 6 rows", 32, 6,
       row + row + row + row + row + row,
       {"##########.#.#.#..#.............  ####.##.##.#.#.#.#.#.#..#.......",
        "######.##.#.#..#..#.#..#........  ###.##.#.##.#.#.#.#..#.#..#.....",
        "##########..#.#..#.......#......  ###.#.#.#.#.#..#..#.#....#......",
        "###.##.##.##..#....#.#..........  ####.#.#.#.#.#.#.#..#.#....#....",
        "#########.#.#.#.#.#....#........  ##.##.#.#.#.#.#..#.#..#.#.......",
        "####.####.#..#.#....#....#......  ###.##.#.#.#.#.#.#.#.#..#.#....."}},
      // clang-format on
  });
}

TEST(StencilHalftones, DrawBlackAndWhitePages) {
  expectPictures({
      // clang-format off
      {"strokes of black on white, threshold 255: the first white pixel is not above it", 16, 8,
       inkLevels({"................",
                  ".######..######.",
                  ".##......##..##.",
                  ".##......##..##.",
                  ".#####...######.",
                  ".##......##.....",
                  ".##......##.....",
                  "................"}),
       {"#...............  #...............",
        ".######..######.  .######..######.",
        ".##......##..##.  .##......##..##.",
        ".##......##..##.  .##......##..##.",
        ".#####...######.  .#####...######.",
        ".##......##.....  .##......##.....",
        ".##......##.....  .##......##.....",
        "................  ................"}},
      {"white strokes on black, threshold 255", 16, 8,
       inkLevels({"################",
                  "#......##......#",
                  "#..######..##..#",
                  "#..######..##..#",
                  "#.....###......#",
                  "#..######..#####",
                  "#..######..#####",
                  "################"}),
       {"################  ################",
        "##.....##......#  ##.....##......#",
        "#..######..##..#  #..######..##..#",
        "#..######..##..#  #..######..##..#",
        "#.....###......#  #.....###......#",
        "#..######..#####  #..######..#####",
        "#..######..#####  #..######..#####",
        "################  ################"}},
      {"one black dot, threshold 0", 12, 7,
       inkLevels({"............",
                  "............",
                  "............",
                  ".....#......",
                  "............",
                  "............",
                  "............"}),
       {"............  ............",
        "............  ............",
        "............  ............",
        ".....#......  .....#......",
        "............  ............",
        "............  ............",
        "............  ............"}},
      {"two pixels", 2, 1,
       "00 FF ",
       {"##  ##"}},
      // clang-format on
  });
}

TEST(StencilHalftones, ReturnForPagesOfOneLevel) {
  expectPictures({
      // clang-format off
      {"white", 9, 5,
       pixelBytes(solidGrey(9, 5, 255)),
       {".........  .........",
        ".........  .........",
        ".........  .........",
        ".........  .........",
        ".........  ........."}},
      {"black", 9, 5,
       pixelBytes(solidGrey(9, 5, 0)),
       {"#########  #########",
        "#########  #########",
        "#########  #########",
        "#########  #########",
        "#########  #########"}},
      {"grey 128", 9, 5,
       pixelBytes(solidGrey(9, 5, 128)),
       {".#.#.#.#.  #.#.#.#.#",
        "..#...#..  .#.#.#.#.",
        ".#..#..#.  #...#..#.",
        "..#...#..  .#.#..#.#",
        ".#.#.#.#.  #.#.#.#.#"}},
      {"grey 200", 9, 5,
       pixelBytes(solidGrey(9, 5, 200)),
       {".........  ...#....#",
        "..#...#..  #...#....",
        ".........  .#...#.#.",
        "...#.....  ...#.....",
        ".....#...  .#...#..#"}},
      {"grey 30", 9, 5,
       pixelBytes(solidGrey(9, 5, 30)),
       {"#########  #########",
        "#########  #.#.#.#.#",
        "#.##.####  ##.#.####",
        "#####.###  #.###.#.#",
        "##.######  ##.###.##"}},
      {"one white pixel", 1, 1,
       "FF ",
       {".  ."}},
      {"one black pixel", 1, 1,
       "00 ",
       {"#  #"}},
      // clang-format on
  });
}

TEST(StencilHalftones, DrawPagesWithoutAThreshold) {
  expectPictures({
      // clang-format off
      {"mostly grey 158, threshold -1", 15, 7,
       "9E 9E 9E A7 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E "
       "9E 9E 9E 9E 9E 9E 9E A7 9E 9E 9E 9E 9E 9E 9E "
       "9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E "
       "9E 9E 9E 9E 9E A7 A7 9E 9E 9E 9E 9E 9E 9E 9E "
       "9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E "
       "9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E "
       "A7 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E 9E ",
       {"...............  ...............",
        "....#......#...  .##.###.##.##..",
        ".#....#.#......  .#.#...#..#.#..",
        "...#......#....  ..#.#..#.#..#.#",
        "..#...#....#...  .#..#.#..#.#...",
        "....#...#...#..  .#.#..#.#..#.#.",
        ".#...#...#.....  ..#.#..#.#.#..#"}},
      {"white and almost white, threshold -1", 10, 4,
       "FF FE FF FE FF FE FF FE FF FE "
       "FF FE FF FE FF FE FF FE FF FE "
       "FF FE FF FE FF FE FF FE FF FE "
       "FF FE FF FE FF FE FF FE FF FE ",
       {"..........  ..........",
        "..........  ..........",
        "..........  ..........",
        "..........  .........."}},
      {"almost white, no discriminant, threshold 128", 8, 4,
       "C8 CB C8 CB C8 CB C8 CB "
       "C8 CB C8 CB C8 CB C8 CB "
       "C8 CB C8 CB C8 CB C8 CB "
       "C8 CB C8 CB C8 CB C8 CB ",
       {"........  ....#...",
        "..#.....  #....#..",
        "....#...  .#....#.",
        "........  ..#....#"}},
      // clang-format on
  });
}

TEST(StencilHalftones, DifferEvenWhenTheThresholdIsTheFixedKnee) {
  expectPictures({
      // clang-format off
      {"levels 0, 64, 128 and 200 in disorder", 17, 6,
       "40 40 C8 40 80 40 00 C8 40 40 80 C8 40 00 40 40 00 "
       "00 C8 40 C8 40 C8 40 00 00 80 C8 80 C8 80 80 C8 40 "
       "80 40 40 C8 40 00 80 40 40 40 80 40 00 80 00 00 C8 "
       "00 80 80 80 00 80 40 80 40 40 00 40 00 40 80 80 40 "
       "00 80 80 C8 80 C8 00 00 C8 40 40 40 40 40 40 00 40 "
       "C8 80 00 80 C8 00 40 80 40 00 00 80 C8 00 00 40 C8 ",
       {"##.#.##.##..#####  ##.#.##.##..##.##",
        "#.#.#.###........  #.#.#.###........",
        ".##..#.###.#..##.  .##.##.###.##.##.",
        "#...#...######..#  #...#.#.######..#",
        "#.....##.########  #.#...##..#######",
        "..#..##.###..###.  ..#..##.###..###."}},
      // clang-format on
  });
}

TEST(StencilHalftones, TakeColourPages) {
  const QMImage page = imageOf(10, 6, QM_IMG_BGR,
                               "74 BD C0  40 62 16  2B 46 7E  6B CD 0F  EB F9 E8 "
                               "C7 FD 62  CE 2D F8  77 0A 88  D0 F2 C2  3A 84 31 "
                               "20 C5 C1  37 1D AD  78 2C FE  6A 48 20  13 FA 63 "
                               "4B E9 E3  92 B6 DA  45 51 31  A0 B6 FD  65 9E 4C "
                               "B6 91 24  70 B0 7C  06 97 AF  70 88 11  D8 82 C0 "
                               "98 D5 59  CA 3B 55  0D 67 52  99 3B 06  C2 AF 57 "
                               "DF 76 47  D1 E4 D0  D5 29 23  93 30 11  2B 36 B8 "
                               "4E F9 4C  20 61 08  47 AE C5  3D 99 B3  A6 BB 01 "
                               "FF 6B 1F  10 58 5B  AC DC E2  3D 2A 66  72 FE F2 "
                               "4F C3 3E  37 E7 40  E1 2E F1  C9 B8 E9  73 1A 65 "
                               "19 E4 39  37 6C 02  0B BA DD  2F 66 75  A5 C4 64 "
                               "03 94 97  28 A4 CE  72 97 28  D6 BD A4  9A B6 97 ");
  // clang-format off
  EXPECT_EQ(bothPictures(page),
            pictureText({".##...##.#  .###..##.#",
                                  ".###...#..  .###...#..",
                                  "#..#..###.  #..#..####",
                                  "..###.#...  #.###.#...",
                                  "##.#.....#  ##.#...#.#",
                                  ".#.#...#..  .#.#.#.#.."}));
  // clang-format on
  EXPECT_EQ(qmTattooDithering(page).color, QM_IMG_GRAY);
  EXPECT_EQ(qmTattooDitheringZ4(page).channels, 1);
}

TEST(StencilHalftones, ReturnACopyOfAPageWithoutArea) {
  const unsigned char none[1] = {};
  for (QMImage (*halftone)(const QMImage&) : {qmTattooDithering, qmTattooDitheringZ4}) {
    const QMImage noWidth = halftone(QMImage(0, 5, QM_IMG_BGR, none));
    EXPECT_EQ(noWidth.width, 0);
    EXPECT_EQ(noWidth.height, 5);
    EXPECT_EQ(noWidth.channels, 3) << "a copy, not a grey image";
    EXPECT_EQ(noWidth.color, QM_IMG_BGR);
    const QMImage noHeight = halftone(QMImage(7, 0, QM_IMG_GRAY, none));
    EXPECT_EQ(noHeight.width, 7);
    EXPECT_EQ(noHeight.height, 0);
  }
}

}  // namespace
