// Raising the number of bits per pixel, and what is refused.
// A halftone becomes an 8-bit page of indices 0 and 1, whose palette has two used entries.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/filter/image/owned_image.h"

namespace {

TEST(ImageDepth, GrowsOrIsRefused) {
  struct Case {
    uint32_t target, source;
    bool answer;
    int depth;  // afterwards
  };
  // clang-format off
  constexpr Case kCases[] = {
      {4,  1, true,   4}, {4,  4, true,   4}, {4,  8, false,  8}, {4,  24, false, 24},
      {8,  1, true,   8}, {8,  4, true,   8}, {8,  8, true,   8}, {8,  24, false, 24},
      {24, 1, true,  24}, {24, 4, true,  24}, {24, 8, true,  24}, {24, 24, true,  24},
      {0,  1, false,  1}, {1,  1, false,  1}, {1,  8, false,  8}, {2,   1, false,  1},
      {3,  1, false,  1}, {5,  1, false,  1}, {7,  4, false,  4}, {9,   8, false,  8},
      {16, 1, false,  1}, {16, 8, false,  8}, {16, 24, false, 24},
      {25, 8, false,  8}, {32, 1, false,  1}, {32, 8, false,  8}, {32, 24, false, 24},
      {0xFFFFFFFF, 8, false, 8},
  };
  // clang-format on
  for (const Case& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.source << " to " << c.target << " bits");
    OwnedImage image;
    ASSERT_NE(image.Create(3, 2, c.source, 0), nullptr);
    const uint8_t* rows = image.GetBits(0);
    const bool converted = c.depth != static_cast<int>(c.source);
    EXPECT_EQ(image.IncreaseBpp(c.target), c.answer);
    EXPECT_EQ(storedDepth(image), c.depth);
    if (!converted) {
      EXPECT_EQ(image.GetBits(0), rows) << "nothing is built";
    }
    EXPECT_STREQ(image.GetLastError(), "");
    EXPECT_EQ(image.GetWidth(), 3u);
    EXPECT_EQ(image.GetHeight(), 2u);
  }
  CxImage nothing;
  for (const uint32_t target : {4u, 8u, 16u, 24u}) EXPECT_FALSE(nothing.IncreaseBpp(target));
}

TEST(ImageDepth, KeepsIndicesAndPaletteUpToEightBits) {
  struct Case {
    const char* sentence;
    uint32_t source, target;
    const char* before;
    uint32_t stride;
    const char* after;
    const char* firstEntries;
    uint8_t nextEntry;  // the first one after the old palette
  };
  constexpr Case kCases[] = {
      {"1 to 8", 1, 8, "A0 00 00 00  40 00 00 00", 4, "01 00 01 00  00 01 00 00",
       "01 02 03 04  FF FF FF 00  00 00 00 00", 2},
      {"1 to 4", 1, 4, "A0 00 00 00  40 00 00 00", 4, "10 10 00 00  01 00 00 00",
       "01 02 03 04  FF FF FF 00  00 00 00 00", 2},
      {"4 to 8", 4, 8, "1F 20 00 00  03 E0 00 00", 4, "01 0F 02 00  00 03 0E 00",
       "01 02 03 04  FF FF FF 00  22 22 22 00", 16},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    OwnedImage image;
    createStored(image, 3, 2, c.source, c.before);
    image.SetGrayPalette();
    image.SetPaletteColor(0, 3, 2, 1, 4);
    image.SetPaletteColor(1, 255, 255, 255, 0);
    EXPECT_TRUE(image.IncreaseBpp(c.target));
    EXPECT_EQ(image.GetEffWidth(), c.stride);
    EXPECT_EQ(storedBytes(image), hexLine(c.after));
    EXPECT_EQ(paletteBytes(image, 3), hexLine(c.firstEntries));
    const tagRGBQUAD next = image.GetPaletteColor(c.nextEntry);
    EXPECT_EQ(hexText(&next, 4), "00 00 00 00");
  }
}

TEST(ImageDepth, LeavesAHalftonesOtherEntriesBlack) {
  OwnedImage image;
  createSolid(image, 5, 1, 255);
  ASSERT_TRUE(image.Dither(0));
  ASSERT_TRUE(image.IncreaseBpp(8));
  EXPECT_EQ(storedBytes(image), "01 01 01 01 01 00 00 00");
  EXPECT_EQ(image.GetNumColors(), 256u);
  std::vector<uint8_t> want(1024, 0);
  want[4] = want[5] = want[6] = 255;
  EXPECT_EQ(paletteBytes(image, 256), hexText(want));
}

TEST(ImageDepth, TurnsIndicesToColoursAt24Bits) {
  OwnedImage colours;
  createStored(colours, 2, 2, 4, "12 00 00 00  21 00 00 00");
  colours.SetPaletteColor(1, 10, 20, 30, 40);
  colours.SetPaletteColor(2, 50, 60, 70, 80);
  EXPECT_TRUE(colours.IncreaseBpp(24));
  EXPECT_EQ(storedBytes(colours), hexLine("1E 14 0A 46 3C 32 00 00  46 3C 32 1E 14 0A 00 00"));
  EXPECT_EQ(colours.GetNumColors(), 0u);
  EXPECT_EQ(colours.GetPalette(), nullptr);

  OwnedImage grey;
  createGrey(grey, 3, 1, "00 80 FF");
  EXPECT_TRUE(grey.IncreaseBpp(24));
  EXPECT_EQ(storedBytes(grey), "00 00 00 80 80 80 FF FF FF 00 00 00");

  OwnedImage oneBit;
  createStored(oneBit, 2, 1, 1, "40 00 00 00");
  oneBit.SetGrayPalette();
  EXPECT_TRUE(oneBit.IncreaseBpp(24));
  EXPECT_EQ(storedBytes(oneBit), "00 00 00 FF FF FF 00 00");
}

}  // namespace
