// The palette image's palette: entries in and out, the grey ramp, the nearest colour.
// Distances are worked out beside the cases where they decide.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/filter/image/owned_image.h"

namespace {

TEST(ImagePalette, CopiesAtMostItsOwnLength) {
  struct Case {
    const char* sentence;
    uint32_t count;
    const char* entries;  // of a 1-bit image that held two entries of 99
  };
  constexpr Case kCases[] = {
      {"no entry", 0, "99 99 99 99  99 99 99 99"},
      {"one entry leaves the second", 1, "01 02 03 04  99 99 99 99"},
      {"both entries", 2, "01 02 03 04  05 06 07 08"},
      {"more than there is room for", 3, "01 02 03 04  05 06 07 08"},
  };
  constexpr tagRGBQUAD kEntries[] = {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}};
  constexpr tagRGBQUAD kOld[] = {{0x99, 0x99, 0x99, 0x99}, {0x99, 0x99, 0x99, 0x99}};
  for (const Case& c : kCases) {
    OwnedImage image;
    createStored(image, 1, 1, 1, "00 00 00 00");
    image.SetPalette(kOld, 2);
    image.SetPalette(kEntries, c.count);
    EXPECT_EQ(paletteBytes(image, 2), hexLine(c.entries)) << c.sentence;
    EXPECT_EQ(storedBytes(image), "00 00 00 00") << c.sentence << ": pixels are untouched";
    image.SetPalette(nullptr, 2);
    EXPECT_EQ(paletteBytes(image, 2), hexLine(c.entries)) << "null changes nothing";
  }
}

TEST(ImagePalette, SetsOneEntryGivenAsRedGreenBlue) {
  OwnedImage image;
  image.Create(1, 1, 1, 0);
  image.SetPaletteColor(1, 10, 20, 30, 40);
  EXPECT_EQ(paletteBytes(image, 2), "00 00 00 00 1E 14 0A 28");
  image.SetPaletteColor(2, 1, 2, 3, 4);
  EXPECT_EQ(paletteBytes(image, 2), "00 00 00 00 1E 14 0A 28") << "there is no third entry";
  EXPECT_EQ(storedBytes(image), "00 00 00 00") << "nor is it written after the palette";
}

TEST(ImagePalette, GivesOneEntryOrZeros) {
  OwnedImage grey;
  createSolid(grey, 1, 1, 0);
  grey.SetPaletteColor(255, 1, 2, 3, 4);
  OwnedImage oneBit;
  oneBit.Create(1, 1, 1, 0);
  oneBit.SetPaletteColor(1, 1, 2, 3, 4);
  OwnedImage colour;
  createStored(colour, 1, 1, 24, "01 02 03 00");
  OwnedImage gone;
  createSolid(gone, 1, 1, 0);
  gone.Destroy();
  struct Case {
    const char* sentence;
    CxImage* image;
    uint8_t index;
    const char* entry;
  };
  const Case cases[] = {
      {"the last of 256", &grey, 255, "03 02 01 04"},
      {"one of the ramp", &grey, 77, "4D 4D 4D 00"},
      {"the last of two", &oneBit, 1, "03 02 01 04"},
      {"after the last of two", &oneBit, 2, "00 00 00 00"},
      {"no palette at 24 bits", &colour, 0, "00 00 00 00"},
      {"no block", &gone, 5, "00 00 00 00"},
  };
  for (const Case& c : cases) {
    const tagRGBQUAD entry = c.image->GetPaletteColor(c.index);
    EXPECT_EQ(hexText(&entry, 4), c.entry) << c.sentence;
  }
  EXPECT_EQ(colour.GetPalette(), nullptr);
}

TEST(ImagePalette, RampsFromBlackToWhiteAtEveryDepth) {
  OwnedImage oneBit;
  oneBit.Create(1, 1, 1, 0);
  oneBit.SetPaletteColor(0, 9, 9, 9, 7);  // the reserved byte 7 must stay
  oneBit.SetGrayPalette();
  EXPECT_EQ(paletteBytes(oneBit, 2), hexLine("00 00 00 07  FF FF FF 00"));

  OwnedImage fourBits;
  fourBits.Create(1, 1, 4, 0);
  fourBits.SetGrayPalette();
  EXPECT_EQ(paletteBytes(fourBits, 16),
            hexLine("00 00 00 00  11 11 11 00  22 22 22 00  33 33 33 00"
                    "44 44 44 00  55 55 55 00  66 66 66 00  77 77 77 00"
                    "88 88 88 00  99 99 99 00  AA AA AA 00  BB BB BB 00"
                    "CC CC CC 00  DD DD DD 00  EE EE EE 00  FF FF FF 00"));

  OwnedImage grey;
  grey.Create(1, 1, 8, 0);
  grey.SetGrayPalette();
  for (int i = 0; i < 256; ++i) {
    const auto level = static_cast<uint8_t>(i);
    const tagRGBQUAD entry = grey.GetPaletteColor(level);
    EXPECT_TRUE(entry.rgbBlue == level && entry.rgbGreen == level && entry.rgbRed == level &&
                entry.rgbReserved == 0)
        << "have " << hexText(&entry, 4) << ", want grey " << i;
  }
}

TEST(ImagePalette, IsLeftAloneWithoutABlockOrAtTrueColour) {
  constexpr tagRGBQUAD kEntries[] = {{1, 2, 3, 4}};
  OwnedImage colour;
  createStored(colour, 1, 1, 24, "01 02 03 00");
  colour.SetPalette(kEntries, 1);
  colour.SetPaletteColor(0, 9, 9, 9, 9);
  colour.SetGrayPalette();
  EXPECT_EQ(storedBytes(colour), "01 02 03 00");
  EXPECT_EQ(colour.GetNearestIndex({1, 2, 3, 0}), 0);

  CxImage nothing;
  nothing.SetPalette(kEntries, 1);
  nothing.SetPaletteColor(0, 9, 9, 9, 9);
  nothing.SetGrayPalette();
  EXPECT_FALSE(nothing.IsValid());
  EXPECT_EQ(nothing.GetNearestIndex({1, 2, 3, 0}), 0);
}

TEST(ImagePalette, FindsTheNearestEntry) {
  OwnedImage grey;
  createSolid(grey, 1, 1, 0);
  OwnedImage twoColours;
  twoColours.Create(1, 1, 1, 0);
  twoColours.SetGrayPalette();
  OwnedImage colours;
  colours.Create(1, 1, 4, 0);
  constexpr tagRGBQUAD kColours[] = {{255, 0, 0, 0},    {0, 255, 0, 0},  {0, 0, 255, 0},
                                     {0, 0, 255, 9},    {10, 10, 10, 0}, {30, 30, 30, 0},
                                     {255, 255, 255, 0}};
  colours.SetPalette(kColours, 7);
  struct Case {
    const char* sentence;
    CxImage* image;
    tagRGBQUAD colour;
    int index;
  };
  const Case cases[] = {
      {"an exact grey", &grey, {77, 77, 77, 0}, 77},
      {"white is the last grey", &grey, {255, 255, 255, 0}, 255},
      {"black is the first", &grey, {0, 0, 0, 0}, 0},
      {"the mean has the least squares", &grey, {10, 20, 30, 0}, 20},
      {"one channel of three does not pull it up, 1 against 2", &grey, {20, 21, 20, 0}, 20},
      {"two of three do, 1 against 2", &grey, {20, 21, 21, 0}, 21},
      {"grey 128 is nearer to white, 48387, than to black, 49152",
       &twoColours,
       {128, 128, 128, 0},
       1},
      {"grey 127 is nearer to black", &twoColours, {127, 127, 127, 0}, 0},
      {"one bright channel stays black, 65025 against 130050", &twoColours, {255, 0, 0, 0}, 0},
      {"two bright channels make white", &twoColours, {255, 255, 0, 0}, 1},
      {"the reserved byte takes no part", &twoColours, {255, 255, 255, 77}, 1},
      {"pure blue", &colours, {255, 0, 0, 0}, 0},
      {"pure green", &colours, {0, 255, 0, 0}, 1},
      {"the first of two equal entries", &colours, {0, 0, 255, 0}, 2},
      {"the first of them even when the reserved bytes would choose", &colours, {0, 0, 255, 9}, 2},
      {"the lower of two equally far", &colours, {20, 20, 20, 0}, 4},
  };
  for (const Case& c : cases) EXPECT_EQ(c.image->GetNearestIndex(c.colour), c.index) << c.sentence;
}

TEST(ImagePalette, FindsEntryZeroAtTheGreatestDistance) {
  OwnedImage image;
  image.Create(1, 1, 1, 0);  // both entries black
  EXPECT_EQ(image.GetNearestIndex({255, 255, 255, 0}), 0);
}

TEST(ImagePalette, RemembersOneAnswerEvenWhenThePaletteChanges) {
  constexpr tagRGBQUAD kGrey = {200, 200, 200, 0};
  OwnedImage image;
  createSolid(image, 1, 1, 0);
  EXPECT_EQ(image.GetNearestIndex(kGrey), 200);
  image.SetPaletteColor(3, 200, 200, 200, 0);
  EXPECT_EQ(image.GetNearestIndex(kGrey), 200) << "the answer is remembered";
  EXPECT_EQ(image.GetNearestIndex({200, 200, 200, 1}), 3) << "all four bytes are compared";
  EXPECT_EQ(image.GetNearestIndex(kGrey), 3) << "only one answer is remembered";
}

TEST(ImagePalette, ForgetsNothingOfTheAnswerInATransfer) {
  constexpr tagRGBQUAD kGrey = {50, 50, 50, 0};
  OwnedImage source;
  createSolid(source, 1, 1, 0);
  source.GetNearestIndex(kGrey);
  OwnedImage target;
  target.Transfer(source);
  target.SetPaletteColor(2, 50, 50, 50, 0);
  EXPECT_EQ(target.GetNearestIndex(kGrey), 50);
}

}  // namespace
