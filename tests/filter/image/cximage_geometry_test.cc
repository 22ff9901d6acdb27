// Turning, mirroring, centring, widening and lines, as small pictures.
// Indices are hex text, the first stored row first, which is the picture's bottom line.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/filter/image/owned_image.h"

namespace {

constexpr tagRGBQUAD kWhite = {255, 255, 255, 0};
constexpr tagRGBQUAD kBlack = {0, 0, 0, 0};

TEST(ImageGeometry, DoesNothingWithoutABlock) {
  OwnedImage nothing;
  OwnedImage destination;
  createSolid(destination, 2, 2, 5);
  EXPECT_FALSE(nothing.Rotate180());
  EXPECT_FALSE(nothing.Rotate180(&destination));
  EXPECT_EQ(indices(destination), "05 05 05 05") << "the destination keeps its picture";
  nothing.Mirror();
  nothing.MakeCenter(10);
  nothing.DrawLine(0, 1, 0, 1, 1);
  EXPECT_FALSE(nothing.Expand(0, 0, 0, 0, kWhite));
  EXPECT_FALSE(nothing.IsValid());
  EXPECT_STREQ(nothing.GetLastError(), "");
}

TEST(ImageTurn, ReversesColumnsAndRows) {
  struct Case {
    const char* sentence;
    uint32_t width, height;
    const char* before;
    const char* after;
  };
  constexpr Case kCases[] = {
      {"one pixel", 1, 1, "07", "07"},
      {"one row", 4, 1, "01 02 03 04", "04 03 02 01"},
      {"one column", 1, 3, "01 02 03", "03 02 01"},
      {"3 x 2", 3, 2, "01 02 03  04 05 06", "06 05 04  03 02 01"},
      {"5 x 3, wider than a word", 5, 3, "01 02 03 04 05  06 07 08 09 0A  0B 0C 0D 0E 0F",
       "0F 0E 0D 0C 0B  0A 09 08 07 06  05 04 03 02 01"},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    OwnedImage image;
    createGrey(image, c.width, c.height, c.before);
    EXPECT_TRUE(image.Rotate180());
    EXPECT_EQ(indices(image), hexLine(c.after));
    EXPECT_EQ(image.GetPaletteColor(200).rgbRed, 200) << "the palette comes along";
    EXPECT_TRUE(image.Rotate180());
    EXPECT_EQ(indices(image), hexLine(c.before)) << "twice is not at all";
  }
}

TEST(ImageTurn, LeavesItsPictureWhenADestinationIsGiven) {
  OwnedImage image;
  createGrey(image, 3, 2, "01 02 03  04 05 06");
  OwnedImage destination;
  createSolid(destination, 9, 9, 5);
  EXPECT_TRUE(image.Rotate180(&destination));
  EXPECT_EQ(indices(image), hexLine("01 02 03  04 05 06"));
  EXPECT_EQ(indices(destination), hexLine("06 05 04  03 02 01"));
  EXPECT_EQ(destination.GetWidth(), 3u);
}

TEST(ImageTurn, AlwaysGivesEightBits) {
  OwnedImage image;
  createStored(image, 10, 2, 1, "A5 40 00 00  5A 80 00 00");
  image.SetPaletteColor(0, 1, 2, 3, 4);
  image.SetPaletteColor(1, 255, 255, 255, 0);
  EXPECT_TRUE(image.Rotate180());
  EXPECT_EQ(storedDepth(image), 8);
  EXPECT_EQ(image.GetNumColors(), 256u);
  EXPECT_EQ(image.GetEffWidth(), 12u);
  EXPECT_EQ(indices(image),
            hexLine("00 01 00 01 00 01 01 00 01 00  01 00 01 00 01 00 00 01 00 01"));
  EXPECT_EQ(paletteBytes(image, 4), hexLine("03 02 01 04  FF FF FF 00  00 00 00 00  00 00 00 00"));
  EXPECT_EQ(image.GetPaletteColor(255).rgbRed, 0) << "254 black entries follow the old two";
}

TEST(ImageMirror, ReversesEveryRow) {
  struct Case {
    const char* sentence;
    uint32_t width, height;
    const char* before;
    const char* after;
  };
  constexpr Case kCases[] = {
      {"one pixel", 1, 1, "07", "07"},
      {"one row", 4, 1, "01 02 03 04", "04 03 02 01"},
      {"one column stays", 1, 3, "01 02 03", "01 02 03"},
      {"3 x 2", 3, 2, "01 02 03  04 05 06", "03 02 01  06 05 04"},
      {"5 x 2, wider than a word", 5, 2, "01 02 03 04 05  06 07 08 09 0A",
       "05 04 03 02 01  0A 09 08 07 06"},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    OwnedImage image;
    createGrey(image, c.width, c.height, c.before);
    image.Mirror();
    EXPECT_EQ(indices(image), hexLine(c.after));
    EXPECT_EQ(image.GetPaletteColor(200).rgbRed, 200) << "the palette comes along";
    image.Mirror();
    EXPECT_EQ(indices(image), hexLine(c.before)) << "twice is not at all";
  }
}

TEST(ImageMirror, LeavesThePaddingBehind) {
  OwnedImage image;
  createStored(image, 3, 1, 8, "01 02 03 77");
  image.Mirror();
  EXPECT_EQ(storedBytes(image), "03 02 01 00") << "padding would become dots";
}

TEST(ImageCentre, MovesThePictureByHalfTheNewColumns) {
  struct Case {
    const char* sentence;
    int32_t newWidth;
    const char* after;  // from 2 x 2 pixels
    uint32_t width;
  };
  constexpr Case kCases[] = {
      {"narrower does nothing", 1, "01 02  03 04", 2},
      {"the same width does nothing", 2, "01 02  03 04", 2},
      {"a negative width does nothing", -5, "01 02  03 04", 2},
      {"the odd column is on the right", 3, "01 02 00  03 04 00", 3},
      {"two columns more, one each side", 4, "00 01 02 00  00 03 04 00", 4},
      {"five columns more, two on the left", 7, "00 00 01 02 00 00 00  00 00 03 04 00 00 00", 7},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    OwnedImage image;
    createGrey(image, 2, 2, "01 02  03 04");
    image.MakeCenter(c.newWidth);
    EXPECT_EQ(image.GetWidth(), c.width);
    EXPECT_EQ(indices(image), hexLine(c.after));
    EXPECT_EQ(image.GetPaletteColor(200).rgbRed, 200) << "the palette comes along";
  }
}

TEST(ImageCentre, FromTenToFifteenColumnsMovesTwo) {
  OwnedImage image;
  createGrey(image, 10, 1, "01 02 03 04 05 06 07 08 09 0A");
  image.MakeCenter(15);
  EXPECT_EQ(indices(image), "00 00 01 02 03 04 05 06 07 08 09 0A 00 00 00");
}

TEST(ImageCentre, GivesEightBitsFromOne) {
  OwnedImage image;
  createStored(image, 4, 1, 1, "A0 00 00 00");
  image.MakeCenter(6);
  EXPECT_EQ(storedDepth(image), 8);
  EXPECT_EQ(indices(image), "00 01 00 01 00 00");
}

TEST(ImageExpand, SurroundsThePictureWithTheCanvas) {
  struct Case {
    const char* sentence;
    int64_t left, top, right, bottom;
    tagRGBQUAD canvas;
    uint32_t width, height;
    const char* stored;  // padding and all, from 2 x 2 pixels
  };
  constexpr Case kCases[] = {
      {"no margin copies", 0, 0, 0, 0, kWhite, 2, 2, "01 02 FF FF  03 04 FF FF"},
      {"left and right", 3, 0, 3, 0, kWhite, 8, 2,
       "FF FF FF 01 02 FF FF FF  FF FF FF 03 04 FF FF FF"},
      {"left alone", 1, 0, 0, 0, kWhite, 3, 2, "FF 01 02 FF  FF 03 04 FF"},
      {"right alone", 0, 0, 1, 0, kWhite, 3, 2, "01 02 FF FF  03 04 FF FF"},
      {"the top takes the last stored rows", 0, 1, 0, 0, kWhite, 2, 3,
       "01 02 FF FF  03 04 FF FF  FF FF FF FF"},
      {"the bottom takes the first stored rows", 0, 0, 0, 2, kWhite, 2, 4,
       "FF FF FF FF  FF FF FF FF  01 02 FF FF  03 04 FF FF"},
      {"all four", 1, 1, 2, 2, kWhite, 5, 5,
       "FF FF FF FF FF FF FF FF  FF FF FF FF FF FF FF FF  FF 01 02 FF FF FF FF FF "
       "FF 03 04 FF FF FF FF FF  FF FF FF FF FF FF FF FF"},
      {"another canvas", 1, 0, 0, 0, {10, 20, 30, 0}, 3, 2, "14 01 02 14  14 03 04 14"},
      {"black canvas", 1, 0, 0, 0, kBlack, 3, 2, "00 01 02 00  00 03 04 00"},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    OwnedImage image;
    createGrey(image, 2, 2, "01 02  03 04");
    EXPECT_TRUE(image.Expand(c.left, c.top, c.right, c.bottom, c.canvas));
    EXPECT_EQ(image.GetWidth(), c.width);
    EXPECT_EQ(image.GetHeight(), c.height);
    EXPECT_EQ(storedBytes(image), hexLine(c.stored));
    EXPECT_EQ(image.GetPaletteColor(200).rgbRed, 200) << "the palette comes along";
  }
}

TEST(ImageExpand, PutsTheFirstRowAboveAMarginOfFive) {
  OwnedImage image;
  createGrey(image, 1, 2, "01 02");
  EXPECT_TRUE(image.Expand(0, 0, 0, 5, kWhite));
  EXPECT_EQ(indices(image), "FF FF FF FF FF 01 02");
}

TEST(ImageExpand, TakesTheIndexOfWhiteInTheImagesOwnPalette) {
  OwnedImage image;  // a halftone raised to 8 bits: entry 1 is white, entries 2 to 255 are black
  createStored(image, 2, 1, 1, "80 00 00 00");
  image.SetPaletteColor(1, 255, 255, 255, 0);
  ASSERT_TRUE(image.IncreaseBpp(8));
  EXPECT_TRUE(image.Expand(1, 0, 1, 0, kWhite));
  EXPECT_EQ(storedBytes(image), "01 01 00 01");
}

TEST(ImageExpand, KeepsEveryDepth) {
  OwnedImage oneBit;
  createStored(oneBit, 3, 2, 1, "A0 00 00 00  40 00 00 00");
  oneBit.SetGrayPalette();
  EXPECT_TRUE(oneBit.Expand(2, 1, 1, 1, kWhite));
  EXPECT_EQ(storedDepth(oneBit), 1);
  EXPECT_EQ(blackPicture(oneBit), pictureText({"......", "...#..", "..#.#.", "......"}));

  OwnedImage fourBits;
  createStored(fourBits, 2, 1, 4, "12 00 00 00");
  fourBits.SetGrayPalette();
  EXPECT_TRUE(fourBits.Expand(1, 1, 1, 0, {0x77, 0x77, 0x77, 0}));
  EXPECT_EQ(storedDepth(fourBits), 4);
  EXPECT_EQ(indices(fourBits), "07 01 02 07 07 07 07 07");

  OwnedImage colour;
  createStored(colour, 1, 1, 24, "01 02 03 77");
  EXPECT_TRUE(colour.Expand(1, 1, 0, 0, {0xB1, 0x6E, 0xED, 0xAA}));
  EXPECT_EQ(storedDepth(colour), 24);
  EXPECT_EQ(storedBytes(colour), hexLine("B1 6E ED 01 02 03 00 00  B1 6E ED B1 6E ED 00 00"));
}

TEST(ImageExpand, UsesARememberedColour) {
  OwnedImage image;
  createSolid(image, 1, 1, 7);
  EXPECT_EQ(image.GetNearestIndex(kWhite), 255);
  image.SetPaletteColor(3, 255, 255, 255, 0);
  EXPECT_TRUE(image.Expand(1, 0, 0, 0, kWhite));
  EXPECT_EQ(indices(image), "FF 07") << "the answer found before the palette changed";
}

TEST(ImageExpand, RefusesNegativeMargins) {
  constexpr int64_t kMargins[][4] = {
      {-1, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, -1, 0}, {0, 0, 0, -1}, {5, 5, 5, INT64_MIN}};
  for (const auto& m : kMargins) {
    OwnedImage image;
    createGrey(image, 2, 1, "01 02");
    const uint8_t* rows = image.GetBits(0);
    EXPECT_FALSE(image.Expand(m[0], m[1], m[2], m[3], kWhite));
    EXPECT_EQ(indices(image), "01 02");
    EXPECT_EQ(image.GetBits(0), rows);
    EXPECT_STREQ(image.GetLastError(), "");
  }
}

TEST(ImageExpand, TellsWhyTheCanvasIsTooLarge) {
  OwnedImage image;
  createGrey(image, 2, 1, "01 02");
  EXPECT_FALSE(image.Expand(65534, 65535, 0, 0, kWhite));
  EXPECT_STREQ(image.GetLastError(), "CXIMAGE_MAX_MEMORY exceeded");
  EXPECT_EQ(indices(image), "01 02") << "the picture stays";
}

TEST(ImageLine, RunsFromEndToEnd) {
  struct Case {
    const char* sentence;
    int32_t startX, endX, startY, endY;
    PictureRows picture;  // stored rows
  };
  const Case cases[] = {
      {"a point", 2, 2, 1, 1, {"......", "..#...", "......", "......"}},
      {"along a row", 1, 4, 2, 2, {"......", "......", ".####.", "......"}},
      {"along a row backwards", 4, 1, 2, 2, {"......", "......", ".####.", "......"}},
      {"along a column", 3, 3, 0, 3, {"...#..", "...#..", "...#..", "...#.."}},
      {"along a column backwards", 3, 3, 3, 1, {"......", "...#..", "...#..", "...#.."}},
      {"an exact diagonal", 0, 3, 0, 3, {"#.....", ".#....", "..#...", "...#.."}},
      {"the other diagonal", 3, 0, 0, 3, {"...#..", "..#...", ".#....", "#....."}},
      {"three by one steps aside after two", 0, 3, 0, 1, {"##....", "..##..", "......", "......"}},
      {"the same backwards", 3, 0, 1, 0, {"##....", "..##..", "......", "......"}},
      {"the same downwards", 0, 3, 1, 0, {"..##..", "##....", "......", "......"}},
      {"one by three", 0, 1, 0, 3, {"#.....", "#.....", ".#....", ".#...."}},
      {"five by two", 0, 5, 0, 2, {"##....", "..##..", "....##", "......"}},
      {"five by three", 0, 5, 0, 3, {"#.....", ".##...", "...##.", ".....#"}},
      {"left of the image to right of it", -3, 8, 1, 1, {"......", "######", "......", "......"}},
      {"through a corner", -1, 2, 1, -2, {"#.....", "......", "......", "......"}},
      {"wholly outside", 10, 20, 10, 20, {"......", "......", "......", "......"}},
  };
  for (const Case& c : cases) {
    OwnedImage image;
    createSolid(image, 6, 4, 0);
    image.DrawLine(c.startX, c.endX, c.startY, c.endY, 9);
    EXPECT_EQ(markedPicture(image.GetBits(0), 6, 4, 8, 9), pictureText(c.picture)) << c.sentence;
  }
}

TEST(ImageLine, WritesTheIndexAtEveryDepth) {
  OwnedImage oneBit;
  createStored(oneBit, 4, 1, 1, "00 00 00 00");
  oneBit.DrawLine(1, 2, 0, 0, 255);
  EXPECT_EQ(storedBytes(oneBit), "60 00 00 00");
  OwnedImage colour;
  createStored(colour, 1, 1, 24, "01 02 03 00");
  colour.DrawLine(0, 0, 0, 0, 9);
  EXPECT_EQ(storedBytes(colour), "01 02 03 00") << "24 bits take no index";
}

}  // namespace
