// The classic halftones: thresholds level by level, kernels tap by tap, whole small pictures.
// In pictures '#' is black, index 0, and '.' is white, index 1; the first stored row comes first.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/filter/image/owned_image.h"

namespace {

constexpr DitherMethod kFloydSteinbergNumber = -1;

TEST(ImageDither, RefusesAnImageWithoutABlock) {
  CxImage nothing;
  for (DitherMethod method = -1; method <= 8; ++method) {
    EXPECT_FALSE(nothing.Dither(method)) << method;
    EXPECT_STREQ(nothing.GetLastError(), "") << method;
  }
}

TEST(ImageDither, LeavesAOneBitImageAlone) {
  for (DitherMethod method = -1; method <= 8; ++method) {
    OwnedImage image;
    createStored(image, 10, 1, 1, "A5 40 00 00");
    image.SetPaletteColor(1, 9, 8, 7, 6);
    const uint8_t* rows = image.GetBits(0);
    EXPECT_TRUE(image.Dither(method)) << method;
    EXPECT_EQ(image.GetBits(0), rows) << method;
    EXPECT_EQ(storedBytes(image), "A5 40 00 00") << method;
    EXPECT_EQ(paletteBytes(image, 2), "00 00 00 00 07 08 09 06") << method;
  }
}

TEST(ImageDither, GivesOneBitWithBlackAndWhite) {
  for (DitherMethod method = -1; method <= 8; ++method) {
    SCOPED_TRACE(method);
    OwnedImage image;
    createSolid(image, 33, 2, 255);
    EXPECT_TRUE(image.Dither(method));
    EXPECT_EQ(storedDepth(image), 1);
    EXPECT_EQ(image.GetWidth(), 33u);
    EXPECT_EQ(image.GetHeight(), 2u);
    EXPECT_EQ(image.GetNumColors(), 2u);
    EXPECT_EQ(image.GetEffWidth(), 8u);
    EXPECT_EQ(paletteBytes(image, 2), "00 00 00 00 FF FF FF 00");
    EXPECT_EQ(storedBytes(image), hexLine("FF FF FF FF 80 00 00 00  FF FF FF FF 80 00 00 00"))
        << "all white, the padding clear";
  }
}

TEST(ImageDither, KeepsBlackBlack) {
  for (DitherMethod method = -1; method <= 8; ++method) {
    OwnedImage image;
    createSolid(image, 6, 5, 0);
    EXPECT_TRUE(image.Dither(method));
    EXPECT_EQ(blackPicture(image), pictureText({"######", "######", "######", "######", "######"}))
        << method;
  }
}

TEST(ImageDither, ReadsTrueColourAsBlackAndNibblesAsDarkGrey) {
  for (DitherMethod method = -1; method <= 8; ++method) {
    OwnedImage colour;
    createStored(colour, 2, 1, 24, "FF FF FF FF FF FF 00 00");
    EXPECT_TRUE(colour.Dither(method));
    EXPECT_EQ(blackPicture(colour), "##\n") << method;
  }
  OwnedImage nibbles;
  createStored(nibbles, 4, 1, 4, "FF FF 00 00");
  EXPECT_TRUE(nibbles.Dither(0));
  EXPECT_EQ(blackPicture(nibbles), "####\n") << "index 15 is not above 128";
  createStored(nibbles, 4, 1, 4, "FF FF 00 00");
  EXPECT_TRUE(nibbles.Dither(7));
  EXPECT_EQ(blackPicture(nibbles), ".###\n") << "index 15 is above the threshold 0 alone";
}

TEST(ImageDither, NeverLooksAtThePalette) {
  OwnedImage image;
  image.Create(2, 1, 8, 0);  // an all-black palette
  image.SetPixelIndex(0, 0, 129);
  image.SetPixelIndex(1, 0, 128);
  EXPECT_TRUE(image.Dither(0));
  EXPECT_EQ(blackPicture(image), ".#\n");
}

// Level i is at column i mod 16 of row i / 16.
TEST(ImageThreshold, IsWhiteFrom129On) {
  std::vector<uint8_t> levels(256);
  for (size_t i = 0; i < 256; ++i) levels[i] = static_cast<uint8_t>(i);
  OwnedImage image;
  image.CreateFromArray(levels.data(), 16, 16, 8, 16, false);
  EXPECT_TRUE(image.Dither(0));
  EXPECT_EQ(blackPicture(image),
            pictureText(
                {"################", "################", "################", "################",
                 "################", "################", "################", "################",
                 "#...............", "................", "................", "................",
                 "................", "................", "................", "................"}));
}

// For each place of the 4 x 4 pattern the least level that is white there, all others below it
// being black: 256 levels by 36 pixels, so that the pattern's repetition is seen too.
void expectFirstWhite(DitherMethod method, const int (&firstWhite)[4][4]) {
  for (int level = 0; level < 256; ++level) {
    OwnedImage image;
    createSolid(image, 6, 6, static_cast<uint8_t>(level));
    EXPECT_TRUE(image.Dither(method));
    const std::string want = drawPicture(
        6, 6, [&](size_t x, size_t y) { return level >= firstWhite[y % 4][x % 4] ? '.' : '#'; });
    EXPECT_EQ(blackPicture(image), want) << "level " << level;
  }
}

TEST(ImageOrdered, IsWhiteFromTheseLevelsOn) {
  // level * 16 / 255 must exceed the matrix entry m: from 255 * (m + 1) / 16 on, rounded up.
  constexpr int kFirstWhite[4][4] = {
      {16, 144, 48, 176},
      {208, 80, 240, 112},
      {64, 192, 32, 160},
      {255, 128, 224, 96},
  };
  expectFirstWhite(1, kFirstWhite);
}

TEST(ImageOrdered, PicksOneOfSixteenAtSixteen) {
  OwnedImage image;
  createSolid(image, 8, 4, 16);
  EXPECT_TRUE(image.Dither(1));
  EXPECT_EQ(blackPicture(image), pictureText({".###.###", "########", "########", "########"}));
}

TEST(BayerThresholds, AreMultiplesOfSixteen) {
  constexpr int kFirstWhite[4][4] = {
      {0 + 1, 192 + 1, 48 + 1, 240 + 1},
      {128 + 1, 64 + 1, 176 + 1, 112 + 1},
      {32 + 1, 224 + 1, 16 + 1, 208 + 1},
      {160 + 1, 96 + 1, 144 + 1, 80 + 1},
  };
  expectFirstWhite(7, kFirstWhite);
}

TEST(BayerThresholds, ShowSevenOfSixteenAtAHundred) {
  OwnedImage image;
  createSolid(image, 4, 4, 100);
  EXPECT_TRUE(image.Dither(7));
  EXPECT_EQ(blackPicture(image), pictureText({".#.#", "#.##", ".#.#", "#.#."}));
}

// What a pixel's error adds to each neighbour: columns -4 to 4, rows 0 to 4, the pixel itself at
// column 4 of row 0. Divided by hand, toward zero.
struct ShareTable {
  const char* sentence;
  DitherMethod method;
  uint8_t level;  // of the pixel that errs
  int shares[5][9];
};

// clang-format off
constexpr ShareTable kShareTables[] = {
    {"Burkes, 32 parts, error 128", 2, 128,
     {{  0,   0,   0,   0,   0,  32,  16,   0,   0},
      {  0,   0,   8,  16,  32,  16,   8,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Burkes, 32 parts, error 100", 2, 100,
     {{  0,   0,   0,   0,   0,  25,  12,   0,   0},
      {  0,   0,   6,  12,  25,  12,   6,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Burkes, 32 parts, error -126", 2, 129,
     {{  0,   0,   0,   0,   0, -31, -15,   0,   0},
      {  0,   0,  -7, -15, -31, -15,  -7,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Burkes, 32 parts, error -100", 2, 155,
     {{  0,   0,   0,   0,   0, -25, -12,   0,   0},
      {  0,   0,  -6, -12, -25, -12,  -6,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Stucki, 42 parts, error 128", 3, 128,
     {{  0,   0,   0,   0,   0,  24,  12,   0,   0},
      {  0,   0,   6,  12,  24,  12,   6,   0,   0},
      {  0,   0,   3,   6,  12,   6,   3,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Stucki, 42 parts, error 100", 3, 100,
     {{  0,   0,   0,   0,   0,  19,   9,   0,   0},
      {  0,   0,   4,   9,  19,   9,   4,   0,   0},
      {  0,   0,   2,   4,   9,   4,   2,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Stucki, 42 parts, error -126", 3, 129,
     {{  0,   0,   0,   0,   0, -24, -12,   0,   0},
      {  0,   0,  -6, -12, -24, -12,  -6,   0,   0},
      {  0,   0,  -3,  -6, -12,  -6,  -3,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Stucki, 42 parts, error -100", 3, 155,
     {{  0,   0,   0,   0,   0, -19,  -9,   0,   0},
      {  0,   0,  -4,  -9, -19,  -9,  -4,   0,   0},
      {  0,   0,  -2,  -4,  -9,  -4,  -2,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Jarvis-Judice-Ninke, 48 parts, error 128", 4, 128,
     {{  0,   0,   0,   0,   0,  18,  13,   0,   0},
      {  0,   0,   8,  13,  18,  13,   8,   0,   0},
      {  0,   0,   2,   8,  13,   8,   2,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Jarvis-Judice-Ninke, 48 parts, error 100", 4, 100,
     {{  0,   0,   0,   0,   0,  14,  10,   0,   0},
      {  0,   0,   6,  10,  14,  10,   6,   0,   0},
      {  0,   0,   2,   6,  10,   6,   2,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Jarvis-Judice-Ninke, 48 parts, error -126", 4, 129,
     {{  0,   0,   0,   0,   0, -18, -13,   0,   0},
      {  0,   0,  -7, -13, -18, -13,  -7,   0,   0},
      {  0,   0,  -2,  -7, -13,  -7,  -2,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Jarvis-Judice-Ninke, 48 parts, error -100", 4, 155,
     {{  0,   0,   0,   0,   0, -14, -10,   0,   0},
      {  0,   0,  -6, -10, -14, -10,  -6,   0,   0},
      {  0,   0,  -2,  -6, -10,  -6,  -2,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Sierra, 32 parts, error 128", 5, 128,
     {{  0,   0,   0,   0,   0,  20,  12,   0,   0},
      {  0,   0,   8,  16,  20,  16,   8,   0,   0},
      {  0,   0,   0,   8,  12,   8,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Sierra, 32 parts, error 100", 5, 100,
     {{  0,   0,   0,   0,   0,  15,   9,   0,   0},
      {  0,   0,   6,  12,  15,  12,   6,   0,   0},
      {  0,   0,   0,   6,   9,   6,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Sierra, 32 parts, error -126", 5, 129,
     {{  0,   0,   0,   0,   0, -19, -11,   0,   0},
      {  0,   0,  -7, -15, -19, -15,  -7,   0,   0},
      {  0,   0,   0,  -7, -11,  -7,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Sierra, 32 parts, error -100", 5, 155,
     {{  0,   0,   0,   0,   0, -15,  -9,   0,   0},
      {  0,   0,  -6, -12, -15, -12,  -6,   0,   0},
      {  0,   0,   0,  -6,  -9,  -6,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Stevenson-Arce, 200 parts, error 128", 6, 128,
     {{  0,   0,   0,   0,   0,   0,  20,   0,   0},
      {  0,   7,   0,  16,   0,  19,   0,  10,   0},
      {  0,   0,   7,   0,  16,   0,   7,   0,   0},
      {  0,   3,   0,   7,   0,   7,   0,   3,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Stevenson-Arce, 200 parts, error 100", 6, 100,
     {{  0,   0,   0,   0,   0,   0,  16,   0,   0},
      {  0,   6,   0,  13,   0,  15,   0,   8,   0},
      {  0,   0,   6,   0,  13,   0,   6,   0,   0},
      {  0,   2,   0,   6,   0,   6,   0,   2,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Stevenson-Arce, 200 parts, error -126", 6, 129,
     {{  0,   0,   0,   0,   0,   0, -20,   0,   0},
      {  0,  -7,   0, -16,   0, -18,   0, -10,   0},
      {  0,   0,  -7,   0, -16,   0,  -7,   0,   0},
      {  0,  -3,   0,  -7,   0,  -7,   0,  -3,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Stevenson-Arce, 200 parts, error -100", 6, 155,
     {{  0,   0,   0,   0,   0,   0, -16,   0,   0},
      {  0,  -6,   0, -13,   0, -15,   0,  -8,   0},
      {  0,   0,  -6,   0, -13,   0,  -6,   0,   0},
      {  0,  -2,   0,  -6,   0,  -6,   0,  -2,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Floyd-Steinberg, 16 parts, error 128", kFloydSteinbergNumber, 128,
     {{  0,   0,   0,   0,   0,  56,   0,   0,   0},
      {  0,   0,   0,  24,  40,   8,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Floyd-Steinberg, 16 parts, error 100", kFloydSteinbergNumber, 100,
     {{  0,   0,   0,   0,   0,  43,   0,   0,   0},
      {  0,   0,   0,  18,  31,   6,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Floyd-Steinberg, 16 parts, error -126", kFloydSteinbergNumber, 129,
     {{  0,   0,   0,   0,   0, -55,   0,   0,   0},
      {  0,   0,   0, -23, -39,  -7,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
    {"Floyd-Steinberg, 16 parts, error -100", kFloydSteinbergNumber, 155,
     {{  0,   0,   0,   0,   0, -43,   0,   0,   0},
      {  0,   0,   0, -18, -31,  -6,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0},
      {  0,   0,   0,   0,   0,   0,   0,   0,   0}}},
};
// clang-format on

// The dot of the probe, at (probeX, probeY), when the pixel with the error is at (x, y). All other
// pixels are saturated so that whatever they receive is clamped away and they err by nothing.
bool probeIsWhite(const ShareTable& table, int x, int y, int probeX, int probeY, int probeLevel) {
  constexpr int kWidth = 12;  // no padding: an error that ran over the edge would hit a pixel
  constexpr int kHeight = 7;
  OwnedImage image;
  createSolid(image, kWidth, kHeight, table.level > 128 ? 0 : 255);
  image.SetPixelIndex(probeX, probeY, static_cast<uint8_t>(probeLevel));
  image.SetPixelIndex(x, y, table.level);
  image.Dither(table.method);
  return image.GetPixelIndex(probeX, probeY) == 1;
}

int shareAt(const ShareTable& table, int dx, int dy) {
  const bool inTable = dx >= -4 && dx <= 4 && dy >= 0 && dy <= 4;
  return inTable ? table.shares[dy][dx + 4] : 0;
}

// What the probe receives: a pixel turns white at 129 less its share, and no sooner. The wanted
// share is tried first, since nearly always it is the answer.
int shareAtProbe(const ShareTable& table, int x, int y, int probeX, int probeY, int want) {
  if (probeIsWhite(table, x, y, probeX, probeY, 129 - want) &&
      !probeIsWhite(table, x, y, probeX, probeY, 128 - want)) {
    return want;
  }
  int level = 0;
  while (level < 256 && !probeIsWhite(table, x, y, probeX, probeY, level)) ++level;
  return 129 - level;
}

// Tries every pixel after the erring one at (x, y).
void expectShares(const ShareTable& table, int x, int y) {
  for (int probeY = y; probeY < 7; ++probeY) {
    for (int probeX = 0; probeX < 12; ++probeX) {
      if (probeY == y && probeX <= x) continue;
      const int want = shareAt(table, probeX - x, probeY - y);
      EXPECT_EQ(shareAtProbe(table, x, y, probeX, probeY, want), want)
          << table.sentence << ", from " << x << "," << y << " to " << probeX << "," << probeY;
    }
  }
}

TEST(ImageDiffusion, SharesAnErrorAmongItsNeighbours) {
  for (const ShareTable& table : kShareTables) expectShares(table, 5, 1);
}

TEST(ImageDiffusion, LosesWhatFallsOutside) {
  for (const ShareTable& table : kShareTables) {
    expectShares(table, 0, 0);
    expectShares(table, 11, 0);
    expectShares(table, 1, 4);
    expectShares(table, 10, 5);
    expectShares(table, 0, 6);
    expectShares(table, 11, 5);
  }
}

TEST(ImageDiffusion, LeavesEarlierPixelsAlone) {
  for (const ShareTable& table : kShareTables) {
    for (int probeX = 0; probeX < 12; ++probeX) {
      const int probeY = probeX < 5 ? 1 : 0;  // left of the pixel, or above it
      EXPECT_TRUE(!probeIsWhite(table, 5, 1, probeX, probeY, 0)) << table.sentence;
      EXPECT_TRUE(probeIsWhite(table, 5, 1, probeX, probeY, 255)) << table.sentence;
    }
  }
}

struct PictureCase {
  const char* sentence;
  DitherMethod method;
  uint32_t width, height;
  std::string levels;
  PictureRows picture;
};

std::string solidLevels(size_t pixels, uint8_t level) {
  return hexText(std::vector<uint8_t>(pixels, level));
}

void expectPictures(const std::vector<PictureCase>& cases) {
  for (const PictureCase& c : cases) {
    OwnedImage image;
    createGrey(image, c.width, c.height, c.levels);
    EXPECT_TRUE(image.Dither(c.method)) << c.sentence;
    EXPECT_EQ(blackPicture(image), pictureText(c.picture)) << c.sentence;
  }
}

TEST(ImageDiffusion, ForgetsWhatIsClampedAway) {
  expectPictures({
      // clang-format off
      // 100 adds 43 and 31 to its white neighbours and 6 to the 120. Clamped, the neighbours err by
      // nothing and 126 is black. Unclamped, the right one would pass 13 of its 43 down: white.
      {"a surplus above white is gone", kFloydSteinbergNumber, 2, 2,
       "64 FF "
       "FF 78 ",
       {"#.",
        ".#"}},
      {"a deficit below black is gone", kFloydSteinbergNumber, 2, 2,
       "96 00 "
       "00 96 ",
       {".#",
        "#."}},
      // clang-format on
  });
}

TEST(ImageDiffusion, DividesTowardZero) {
  expectPictures({
      // clang-format off
      // 128 makes 196 of the 140 and 140 of the 100. 196 errs by -59: -177 / 16 is -11, so 129
      // below it on the left is white; rounded down to -12 it would be black.
      {"-11.06 is -11", kFloydSteinbergNumber, 2, 2,
       "80 8C "
       "64 FA ",
       {"#.",
        ".."}},
      // clang-format on
  });
}

TEST(ImageDiffusion, TakesTheMiddleGreyAsBlackFirst) {
  expectPictures({
      // clang-format off
      {"Burkes", 2, 8, 3,
       solidLevels(24, 128),
       {"#.#.#.#.",
        ".#.#.#.#",
        "#.#.#.#."}},
      {"Stucki", 3, 8, 3,
       solidLevels(24, 128),
       {"#.#.#.#.",
        ".#.#.#.#",
        "#.#.#.#."}},
      {"Jarvis-Judice-Ninke", 4, 8, 3,
       solidLevels(24, 128),
       {"#.#.#.#.",
        ".#.#.#.#",
        "#.#.#.#."}},
      {"Sierra", 5, 8, 3,
       solidLevels(24, 128),
       {"#.#.#.#.",
        ".#.#.#.#",
        "#.#.#.#."}},
      {"Stevenson-Arce", 6, 8, 3,
       solidLevels(24, 128),
       {"##..##..",
        "..##..##",
        "..##..##"}},
      {"Floyd-Steinberg", kFloydSteinbergNumber, 8, 3,
       solidLevels(24, 128),
       {"#.#.#.#.",
        ".#.#.#.#",
        "#.#.#.#."}},
      // clang-format on
  });
}

TEST(ImageDiffusion, RunsDownAColumn) {
  expectPictures({
      // clang-format off
      {"Burkes", 2, 1, 10,
       solidLevels(10, 100),
       {"#",
        "#",
        ".",
        "#",
        "#",
        ".",
        "#",
        "#",
        ".",
        "#"}},
      {"Stucki", 3, 1, 10,
       solidLevels(10, 100),
       {"#",
        "#",
        ".",
        "#",
        "#",
        "#",
        ".",
        "#",
        "#",
        "#"}},
      {"Jarvis-Judice-Ninke", 4, 1, 10,
       solidLevels(10, 100),
       {"#",
        "#",
        "#",
        ".",
        "#",
        "#",
        "#",
        "#",
        ".",
        "#"}},
      {"Sierra", 5, 1, 10,
       solidLevels(10, 100),
       {"#",
        "#",
        "#",
        ".",
        "#",
        "#",
        "#",
        "#",
        ".",
        "#"}},
      {"Stevenson-Arce", 6, 1, 10,
       solidLevels(10, 100),
       {"#",
        "#",
        "#",
        "#",
        "#",
        "#",
        "#",
        "#",
        "#",
        "#"}},
      {"Floyd-Steinberg", kFloydSteinbergNumber, 1, 10,
       solidLevels(10, 100),
       {"#",
        ".",
        "#",
        "#",
        ".",
        "#",
        "#",
        ".",
        "#",
        "#"}},
      // clang-format on
  });
}

// A horizontal ramp of 32 columns from 0 to 248 in 6 rows.
TEST(ImageDither, DrawsARamp) {
  const std::string row =
      "00 08 10 18 20 28 30 38 40 48 50 58 60 68 70 78"
      "80 88 90 98 A0 A8 B0 B8 C0 C8 D0 D8 E0 E8 F0 F8 ";
  const std::string ramp = row + row + row + row + row + row;
  expectPictures({
      // clang-format off
      {"threshold", 0, 32, 6,
       ramp,
       {"#################...............",
        "#################...............",
        "#################...............",
        "#################...............",
        "#################...............",
        "#################..............."}},
      {"ordered", 1, 32, 6,
       ramp,
       {"####.#.#.#.#.#.#.#.#............",
        "#############.#.#.#.#.#.#.#.....",
        "######.#.#.#.#.#.#.#.#..........",
        "###############.#.#.#.#.#.#.#...",
        "####.#.#.#.#.#.#.#.#............",
        "#############.#.#.#.#.#.#.#....."}},
      {"Burkes", 2, 32, 6,
       ramp,
       {"###########.##.#.#..#...........",
        "#######.#.##.##.#.#..#.#..#.....",
        "##########.##..#.#.#....#.......",
        "#####.#.##.##.##..#.#.#.........",
        "#########.##.#.#.#...#..#..#....",
        "######.###.##.#.#.##..#........."}},
      {"Stucki", 3, 32, 6,
       ramp,
       {"#############.##..#.............",
        "#########.#.##..##.#.#.#........",
        "#######.##.#.##.#..#..#..#......",
        "########.###.#.#.#..#...........",
        "#####.###.###.#.#.#..#.#..#.....",
        "##########.#.#.#.#.#..#..#......"}},
      {"Jarvis-Judice-Ninke", 4, 32, 6,
       ramp,
       {"#############.##..#.............",
        "#########.#.##.#.#.#.#..#.......",
        "#######.##.#.#..#.#.#..#........",
        "#############.##.#...#....#.....",
        "######.#..#.##.#.##..#..#.......",
        "###########.#.#..#.#..#........."}},
      {"Sierra", 5, 32, 6,
       ramp,
       {"#############.##..#.............",
        "########.#.#.#.#.#.##.#.........",
        "###########.##.##.....#.#.......",
        "######.#.##.##..##.#.....#......",
        "#########.##.##..#.##.#...#.....",
        "######.###.#.##.#....#.#........"}},
      {"Stevenson-Arce", 6, 32, 6,
       ramp,
       {"##############..##..............",
        "##########..##..##..##..........",
        "##########.##.##..#..#..........",
        "########..##..##..##..##..#.....",
        "##############..##....#...#.....",
        "#######..##..##..##..##........."}},
      {"Bayer", 7, 32, 6,
       ramp,
       {"####.###.#.#.#.#.#.#.#.#...#....",
        "#########.###.#.#.#...#.........",
        "######.#.#.#.#.#.#.#.#.#.#......",
        "###########.#.#.#.#.#...........",
        "####.###.#.#.#.#.#.#.#.#...#....",
        "#########.###.#.#.#...#........."}},
      {"Floyd-Steinberg", kFloydSteinbergNumber, 32, 6,
       ramp,
       {"##########.##.#.#.#..#..........",
        "######.#.##.##.#.#.#..#.#..#....",
        "##########.#.#.#.#..#....#......",
        "####.##.#####.#.#.#.#.#.........",
        "########.#.#.##.#.#....#..#.....",
        "######.####.#.#.#.#.#.#......#.."}},
      // clang-format on
  });
}

// All 256 levels, level i at column i mod 16 of row i / 16.
TEST(ImageDither, DrawsEveryLevel) {
  std::vector<uint8_t> levels(256);
  for (size_t i = 0; i < 256; ++i) levels[i] = static_cast<uint8_t>(i);
  const std::string text = hexText(levels);
  expectPictures({
      // clang-format off
      {"ordered", 1, 16, 16,
       text,
       {"################",
        "################",
        "##.###.###.###.#",
        "################",
        ".#.#.#.#.#.#.#.#",
        "#.###.###.###.##",
        ".#.#.#.#.#.#.#.#",
        "###.###.###.###.",
        ".#.#.#.#.#.#.#.#",
        "#.#.#.#.#.#.#.#.",
        ".#...#...#...#..",
        "#.#.#.#.#.#.#.#.",
        "................",
        "..#...#...#...#.",
        "................",
        "#...#...#...#..."}},
      {"Burkes", 2, 16, 16,
       text,
       {"################",
        "################",
        "################",
        "###.##.##.#.#.#.",
        "##.####.####.###",
        "#.##.#.##..##.#.",
        "##.##.#.##.#.##.",
        ".#..#.#.#.#.#..#",
        "#.##.#.#.#.#.#.#",
        "....#...#...#...",
        "##.#.#.#..#..#.#",
        "........#..#....",
        "..#.#..#......#.",
        "...........#....",
        "................",
        "......#........."}},
      {"Stucki", 3, 16, 16,
       text,
       {"################",
        "################",
        "################",
        "#########.##.###",
        "##.#.#.#.##.#.#.",
        "#.##.##.##.###.#",
        "#.#.#.##.#.#.##.",
        ".#.##..#..#.#..#",
        "#.#..#.#.#.#..#.",
        ".#..#.#.#..#.#..",
        "..#..#....#...#.",
        "...#...#....#...",
        ".#......#.......",
        "....#......#....",
        "................",
        "................"}},
      {"Jarvis-Judice-Ninke", 4, 16, 16,
       text,
       {"################",
        "################",
        "################",
        "##########.##.##",
        "##.#.#..##.##.##",
        "#.##.##.##.##.#.",
        "#.##.##.#.#..##.",
        ".#..#..#.##.#.##",
        "#.#.##.#...#....",
        ".#...#..#..#.#..",
        "..#....#.#..#.#.",
        "..#.#...........",
        ".....#..#..#....",
        "..............#.",
        "..#.............",
        "................"}},
      {"Sierra", 5, 16, 16,
       text,
       {"################",
        "################",
        "################",
        "#########.##.###",
        "##.#..#.##.##..#",
        "#.#####.##.###.#",
        "#.#..#.#.#..#.##",
        "#.##.#.#.##.#...",
        "..#..#.#..#.##.#",
        "#.#..#..#......#",
        "..#..#..#.#.#...",
        "...#.........#..",
        ".....#.#..#.....",
        ".#..............",
        "................",
        "................"}},
      {"Stevenson-Arce", 6, 16, 16,
       text,
       {"################",
        "################",
        "################",
        "################",
        "####..##..##..##",
        "##..##..##..##..",
        "#..####..##..##.",
        "#..##..##..##.##",
        "..##...##..##...",
        "..##...#........",
        ".......#...##..#",
        ".##..#...#......",
        ".......#........",
        "................",
        "................",
        "................"}},
      {"Bayer", 7, 16, 16,
       text,
       {"####.###.###.###",
        "################",
        "##.#.#.#.#.#.#.#",
        "################",
        ".#.#.#.#.#.#.#.#",
        "#.###.###.###.##",
        ".#.#.#.#.#.#.#.#",
        "#.#.#.#.#.#.#.#.",
        ".#.#.#.#.#.#.#.#",
        "..#...#...#...#.",
        ".#.#.#.#.#.#.#.#",
        "................",
        "...#...#...#...#",
        "................",
        "................",
        "................"}},
      {"Floyd-Steinberg", kFloydSteinbergNumber, 16, 16,
       text,
       {"################",
        "################",
        "###########.####",
        "##.##.#.#.###.#.",
        "#.##.#####.#####",
        "##.###.#.##.#..#",
        ".##.#.#.#.#.##.#",
        "#.#.#.##.#.#.#.#",
        ".#.#.#..#.#.#.#.",
        "#.#.#.#.#..#...#",
        "...#...#..#..#..",
        ".#...#...#..#..#",
        "..#....#........",
        "....#......#....",
        ".........#......",
        "................"}},
      // clang-format on
  });
}

TEST(ImageDither, RunsFloydSteinbergForEveryOtherNumber) {
  constexpr DitherMethod kNumbers[] = {kFloydSteinbergNumber,
                                       8,
                                       9,
                                       255,
                                       256,
                                       65536,
                                       -2,
                                       -7,
                                       INT64_C(4294967296),
                                       INT64_C(4294967297),
                                       INT64_C(4294967303),
                                       INT64_C(-4294967296),
                                       INT64_MAX,
                                       INT64_MIN};
  for (const DitherMethod method : kNumbers) {
    OwnedImage image;
    createSolid(image, 12, 4, 100);
    EXPECT_TRUE(image.Dither(method));
    EXPECT_EQ(blackPicture(image),
              pictureText({"#.##.##.##.#", "##.##.##.##.", ".#.#.#.#.#.#", "#.##.##.#.##"}))
        << method;
  }
}

TEST(ImageDither, RunsTheOrderedPatternForNumberOne) {
  OwnedImage image;
  createSolid(image, 12, 4, 100);
  EXPECT_TRUE(image.Dither(1));
  EXPECT_EQ(blackPicture(image),
            pictureText({".#.#.#.#.#.#", "#.###.###.##", ".#.#.#.#.#.#", "###.###.###."}));
}

}  // namespace
