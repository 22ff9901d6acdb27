// Single pixels of the palette image, by index and colour, at every depth.
// A write must change its pixel and no other bit; outside the image it changes nothing.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/filter/image/owned_image.h"

namespace {

struct WriteCase {
  const char* sentence;
  uint32_t width, height, bpp;
  const char* before;
  int64_t x, y;
  uint8_t index;
  const char* after;
};

constexpr WriteCase kWritesInside[] = {
    {"the leftmost of 8 is the top bit", 10, 1, 1, "00 00 00 00", 0, 0, 1, "80 00 00 00"},
    {"the eighth is the lowest bit", 10, 1, 1, "00 00 00 00", 7, 0, 1, "01 00 00 00"},
    {"the ninth is the next byte's top bit", 10, 1, 1, "00 00 00 00", 8, 0, 1, "00 80 00 00"},
    {"other bits of the byte stay set", 10, 1, 1, "FF BF FF FF", 9, 0, 1, "FF FF FF FF"},
    {"other bits of the byte stay clear", 10, 1, 1, "00 00 00 00", 9, 0, 1, "00 40 00 00"},
    {"a zero clears one bit only", 10, 1, 1, "FF FF FF FF", 9, 0, 0, "FF BF FF FF"},
    {"255 is a 1 at 1 bit", 10, 1, 1, "00 00 00 00", 2, 0, 255, "20 00 00 00"},
    {"128 is a 0 at 1 bit", 10, 1, 1, "FF FF FF FF", 2, 0, 128, "DF FF FF FF"},
    {"254 is a 0 at 1 bit", 10, 1, 1, "FF FF FF FF", 2, 0, 254, "DF FF FF FF"},
    {"the second row is one stride further on", 33, 2, 1,
     "00 00 00 00 00 00 00 00  00 00 00 00 00 00 00 00", 32, 1, 1,
     "00 00 00 00 00 00 00 00  00 00 00 00 80 00 00 00"},
    {"even columns are the high nibble", 4, 1, 4, "00 00 00 00", 2, 0, 9, "00 90 00 00"},
    {"odd columns are the low nibble", 4, 1, 4, "00 00 00 00", 3, 0, 9, "00 09 00 00"},
    {"the other nibble stays", 4, 1, 4, "FF FF FF FF", 0, 0, 5, "5F FF FF FF"},
    {"the low nibble alone", 4, 1, 4, "FF FF FF FF", 1, 0, 5, "F5 FF FF FF"},
    {"four bits are kept of more", 4, 1, 4, "00 00 00 00", 1, 0, 0x1F, "0F 00 00 00"},
    {"16 is a 0 at 4 bits", 4, 1, 4, "FF 00 00 00", 0, 0, 16, "0F 00 00 00"},
    {"8 bits are the whole byte", 3, 2, 8, "00 00 00 00  00 00 00 00", 2, 1, 255,
     "00 00 00 00  00 00 FF 00"},
    {"24 bits take no index", 1, 1, 24, "01 02 03 04", 0, 0, 255, "01 02 03 04"},
};

constexpr WriteCase kWritesOutside[] = {
    {"left of the image", 3, 2, 8, "01 02 03 04  05 06 07 08", -1, 1, 99, ""},
    {"right of the image, in the padding", 3, 2, 8, "01 02 03 04  05 06 07 08", 3, 0, 99, ""},
    {"right of the last row", 3, 2, 8, "01 02 03 04  05 06 07 08", 3, 1, 99, ""},
    {"below the first row", 3, 2, 8, "01 02 03 04  05 06 07 08", 0, -1, 99, ""},
    {"above the last row", 3, 2, 8, "01 02 03 04  05 06 07 08", 0, 2, 99, ""},
    {"far away", 3, 2, 8, "01 02 03 04  05 06 07 08", INT64_MAX, INT64_MAX, 99, ""},
    {"far away on the other side", 3, 2, 8, "01 02 03 04  05 06 07 08", INT64_MIN, INT64_MIN, 99,
     ""},
    {"a coordinate whose low half is inside", 3, 2, 8, "01 02 03 04  05 06 07 08", 0x100000001, 0,
     99, ""},
    {"the padding of a 1-bit row", 10, 1, 1, "00 00 00 00", 10, 0, 1, ""},
    {"the padding of a 4-bit row", 3, 1, 4, "00 00 00 00", 3, 0, 15, ""},
};

void expectWrite(const WriteCase& c, const char* after) {
  OwnedImage checked;
  createStored(checked, c.width, c.height, c.bpp, c.before);
  checked.SetPixelIndex(c.x, c.y, c.index);
  EXPECT_EQ(storedBytes(checked), hexLine(after)) << c.sentence;
}

TEST(ImagePixels, AreWrittenWithoutTouchingTheirNeighbours) {
  for (const WriteCase& c : kWritesInside) {
    expectWrite(c, c.after);
    OwnedImage blind;
    createStored(blind, c.width, c.height, c.bpp, c.before);
    blind.BlindSetPixelIndex(c.x, c.y, c.index);
    EXPECT_EQ(storedBytes(blind), hexLine(c.after)) << c.sentence << ", unchecked";
  }
}

TEST(ImagePixels, AreNotWrittenOutsideTheImage) {
  for (const WriteCase& c : kWritesOutside) expectWrite(c, c.before);
}

TEST(ImagePixels, AreReadFromTheirBits) {
  struct Case {
    const char* sentence;
    uint32_t width, height, bpp;
    const char* stored;
    const char* indices;
  };
  constexpr Case kCases[] = {
      {"1 bit", 10, 2, 1, "A5 40 00 00  5A BF FF FF",
       "01 00 01 00 00 01 00 01 00 01  00 01 00 01 01 00 01 00 01 00"},
      {"4 bits", 5, 1, 4, "0F 5A C0 00", "00 0F 05 0A 0C"},
      {"8 bits", 3, 2, 8, "00 80 FF 77  01 02 03 77", "00 80 FF 01 02 03"},
      {"24 bits have none", 2, 1, 24, "01 02 03 04 05 06 00 00", "00 00"},
  };
  for (const Case& c : kCases) {
    OwnedImage image;
    createStored(image, c.width, c.height, c.bpp, c.stored);
    EXPECT_EQ(indices(image), hexLine(c.indices)) << c.sentence;
    std::vector<uint8_t> blind;
    for (int64_t y = 0; y < c.height; ++y) {
      for (int64_t x = 0; x < c.width; ++x) blind.push_back(image.BlindGetPixelIndex(x, y));
    }
    EXPECT_EQ(hexText(blind), hexLine(c.indices)) << c.sentence << ", unchecked";
  }
}

TEST(ImagePixels, ReadOutsideTheImageAreTheLowByteOfTheRowsAddress) {
  OwnedImage image;
  createSolid(image, 3, 2, 7);
  const auto low = static_cast<uint8_t>(reinterpret_cast<uintptr_t>(image.GetBits(0)));
  EXPECT_EQ(image.GetPixelIndex(-1, 0), low);
  EXPECT_EQ(image.GetPixelIndex(0, -1), low);
  EXPECT_EQ(image.GetPixelIndex(3, 0), low);
  EXPECT_EQ(image.GetPixelIndex(0, 2), low);
}

TEST(ImagePixels, AreZeroAndUnwritableWithoutABlock) {
  CxImage nothing;
  EXPECT_EQ(nothing.GetPixelIndex(0, 0), 0);
  EXPECT_EQ(nothing.GetPixelIndex(-1, 0), 0);
  nothing.SetPixelIndex(0, 0, 1);
  OwnedImage gone;
  createSolid(gone, 3, 2, 7);
  gone.Destroy();
  EXPECT_EQ(gone.GetPixelIndex(1, 1), 0);
  gone.SetPixelIndex(1, 1, 1);
  EXPECT_FALSE(gone.IsValid());
}

TEST(ImagePixels, AreCopiedInRuns) {
  struct Case {
    const char* sentence;
    uint32_t width, height, bpp;
    const char* rows;
    int64_t x, y;
    const char* want;
  };
  constexpr Case kCases[] = {
      {"bits from a byte's first", 10, 1, 1, "A5 C0 00 00", 0, 0, "01 00 01 00 00 01 00 01 01 01"},
      {"bits from the next byte", 10, 1, 1, "A5 C0 00 00", 8, 0, "01 01"},
      {"bits from the middle of a byte", 10, 1, 1, "A5 C0 00 00", 3, 0, "00 00 01 00 01 01"},
      {"nibbles", 5, 1, 4, "12 34 50 00", 1, 0, "02 03 04"},
      {"bytes of the second row", 3, 2, 8, "01 02 03 04  05 06 07 08", 1, 1, "06 07"},
      {"true colour has no indices", 1, 1, 24, "01 02 03 04", 0, 0, "00"},
      {"none at all", 3, 1, 8, "01 02 03 04", 1, 0, ""},
  };
  for (const Case& c : kCases) {
    OwnedImage image;
    createStored(image, c.width, c.height, c.bpp, c.rows);
    std::vector<uint8_t> have(hexBytes(c.want).size(), 0xEE);
    image.GetPixelIndices(c.x, c.y, have.size(), have.data());
    EXPECT_EQ(hexText(have), c.want) << c.sentence;
  }
  const OwnedImage none;
  uint8_t index = 0xEE;
  none.GetPixelIndices(0, 0, 1, &index);
  EXPECT_EQ(index, 0) << "without a block";
}

TEST(ImagePixels, HaveThePalettesColour) {
  OwnedImage image;
  createStored(image, 3, 1, 4, "01 20 00 00");
  image.SetPaletteColor(1, 10, 20, 30, 40);
  for (const bool withAlpha : {false, true}) {
    const tagRGBQUAD colour = image.BlindGetPixelColor(1, 0, withAlpha);
    EXPECT_EQ(hexText(&colour, 4), "1E 14 0A 28");
  }
}

TEST(ImagePixels, HoldBlueGreenRedAtTrueColour) {
  OwnedImage image;
  createStored(image, 2, 2, 24, "01 02 03 04 05 06 07 08  11 12 13 14 15 16 17 18");
  const tagRGBQUAD colour = image.BlindGetPixelColor(1, 1, true);
  EXPECT_EQ(hexText(&colour, 4), "14 15 16 00") << "nothing is read for the fourth byte";
  image.BlindSetPixelColor(1, 0, {0xB1, 0x6E, 0xED, 0xAA}, true);
  EXPECT_EQ(storedBytes(image), hexLine("01 02 03 B1 6E ED 07 08  11 12 13 14 15 16 17 18"));
}

TEST(ImagePixels, TakeTheNearestIndexOfAColour) {
  OwnedImage grey;
  createSolid(grey, 2, 1, 0);
  grey.BlindSetPixelColor(1, 0, {10, 20, 30, 0});
  EXPECT_EQ(indices(grey), "00 14");
  OwnedImage oneBit;
  createStored(oneBit, 2, 1, 1, "00 00 00 00");
  oneBit.SetGrayPalette();
  oneBit.BlindSetPixelColor(1, 0, {128, 128, 128, 0});
  EXPECT_EQ(indices(oneBit), "00 01");
}

}  // namespace
