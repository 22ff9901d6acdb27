// The palette image's block: creation and its refusals, hand-over, creation from arrays.
// Sizes, strides and header bytes are written down for every depth.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/filter/image/owned_image.h"

namespace {

constexpr char kNoSides[] = "CxImage::Create : width and height must be greater than zero";
constexpr char kTooLarge[] = "CXIMAGE_MAX_MEMORY exceeded";

TEST(ImageObject, IsBornEmpty) {
  CxImage image;
  EXPECT_FALSE(image.IsValid());
  EXPECT_STREQ(image.GetLastError(), "");
  EXPECT_EQ(image.GetWidth(), 0u);
  EXPECT_EQ(image.GetHeight(), 0u);
  EXPECT_EQ(image.GetEffWidth(), 0u);
  EXPECT_EQ(image.GetNumColors(), 0u);
  EXPECT_EQ(image.GetPaletteSize(), 0u);
  EXPECT_EQ(image.GetPalette(), nullptr);
  EXPECT_EQ(image.GetSize(), 0u);
  EXPECT_EQ(image.GetBits(0), nullptr);
  EXPECT_EQ(image.GetBits(1), nullptr);
  EXPECT_TRUE(image.Destroy()) << "there is nothing to free, and that is no failure";
}

TEST(ImageObject, IsCreatedWithThisDepthStrideAndSize) {
  struct Case {
    const char* sentence;
    uint32_t width, height, bpp;
    int depth;
    uint32_t colours, stride, paletteSize, size;
  };
  // clang-format off
  constexpr Case kCases[] = {
      {"depth 0 is 1 bit",                      10, 3,  0,  1,   2,  4,    8,   60},
      {"depth 1 stays",                         10, 3,  1,  1,   2,  4,    8,   60},
      {"depth 2 is raised to 4",                10, 3,  2,  4,  16,  8,   64,  128},
      {"depth 3 is raised to 4",                10, 3,  3,  4,  16,  8,   64,  128},
      {"depth 4 stays",                         10, 3,  4,  4,  16,  8,   64,  128},
      {"depth 5 is raised to 8",                10, 3,  5,  8, 256, 12, 1024, 1100},
      {"depth 8 stays",                         10, 3,  8,  8, 256, 12, 1024, 1100},
      {"depth 9 is raised to 24",               10, 3,  9, 24,   0, 32,    0,  136},
      {"depth 24 stays",                        10, 3, 24, 24,   0, 32,    0,  136},
      {"depth 32 becomes 24",                   10, 3, 32, 24,   0, 32,    0,  136},
      {"any greater depth becomes 24",          10, 3, 0xFFFFFFFF, 24, 0, 32, 0, 136},
      {"one bit takes four bytes",               1, 1,  1,  1,   2,  4,    8,   52},
      {"32 bits fill one word",                 32, 1,  1,  1,   2,  4,    8,   52},
      {"33 bits take two words",                33, 1,  1,  1,   2,  8,    8,   56},
      {"8 nibbles fill one word",                8, 1,  4,  4,  16,  4,   64,  108},
      {"9 nibbles take two words",               9, 1,  4,  4,  16,  8,   64,  112},
      {"4 bytes fill one word",                  4, 1,  8,  8, 256,  4, 1024, 1068},
      {"5 bytes take two words",                 5, 1,  8,  8, 256,  8, 1024, 1072},
      {"3 pixels of 24 bits take three words",   3, 1, 24, 24,   0, 12,    0,   52},
      {"4 pixels of 24 bits fill three words",   4, 1, 24, 24,   0, 12,    0,   52},
      {"an A4 line at 300 dpi",               2361, 2,  8,  8, 256, 2364, 1024, 5792},
      {"an A4 line at 300 dpi, 1 bit",        2361, 2,  1,  1,   2,  296,    8,  640},
  };
  // clang-format on
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    OwnedImage image;
    const uint8_t* block = image.Create(c.width, c.height, c.bpp, 5);
    ASSERT_NE(block, nullptr);
    EXPECT_TRUE(image.IsValid());
    EXPECT_EQ(storedDepth(image), c.depth);
    EXPECT_EQ(image.GetWidth(), c.width);
    EXPECT_EQ(image.GetHeight(), c.height);
    EXPECT_EQ(image.GetNumColors(), c.colours);
    EXPECT_EQ(image.GetEffWidth(), c.stride);
    EXPECT_EQ(image.GetPaletteSize(), c.paletteSize);
    EXPECT_EQ(image.GetSize(), c.size);
    EXPECT_EQ(image.GetBits(0), block + 40 + c.paletteSize);
    EXPECT_STREQ(image.GetLastError(), "");
  }
}

TEST(ImageObject, PutsItsHeaderBeforeThePalette) {
  struct Case {
    const char* sentence;
    uint32_t width, height, bpp;
    const char* header;
  };
  constexpr Case kCases[] = {
      {"33 x 2 at 1 bit", 33, 2, 1,
       "28 00 00 00  21 00 00 00  02 00 00 00  01 00 01 00  00 00 00 00  10 00 00 00"
       "00 00 00 00  00 00 00 00  02 00 00 00  00 00 00 00"},
      {"9 x 3 at 4 bits", 9, 3, 4,
       "28 00 00 00  09 00 00 00  03 00 00 00  01 00 04 00  00 00 00 00  18 00 00 00"
       "00 00 00 00  00 00 00 00  10 00 00 00  00 00 00 00"},
      {"2361 x 300 at 8 bits", 2361, 300, 8,
       "28 00 00 00  39 09 00 00  2C 01 00 00  01 00 08 00  00 00 00 00  50 D2 0A 00"
       "00 00 00 00  00 00 00 00  00 01 00 00  00 00 00 00"},
      {"5 x 4 at 24 bits", 5, 4, 32,
       "28 00 00 00  05 00 00 00  04 00 00 00  01 00 18 00  00 00 00 00  40 00 00 00"
       "00 00 00 00  00 00 00 00  00 00 00 00  00 00 00 00"},
  };
  for (const Case& c : kCases) {
    OwnedImage image;
    const uint8_t* block = image.Create(c.width, c.height, c.bpp, 9);
    ASSERT_NE(block, nullptr) << c.sentence;
    EXPECT_EQ(hexText(block, 40), hexLine(c.header)) << c.sentence;
  }
}

TEST(ImageObject, RefusesSidesWithoutAreaAndBitsBeyond32) {
  struct Case {
    const char* sentence;
    uint32_t width, height, bpp;
    const char* error;
  };
  constexpr Case kCases[] = {
      {"no width", 0, 5, 8, kNoSides},
      {"no height", 5, 0, 8, kNoSides},
      {"neither", 0, 0, 1, kNoSides},
      {"the sides' product wraps to zero", 65536, 65536, 8, kTooLarge},
      {"the same at 1 bit, where the wrapped product agrees with itself", 65536, 65536, 1,
       kTooLarge},
      {"the sides' product wraps to a small number", 65537, 65537, 1, kTooLarge},
      {"the depth makes it wrap", 65536, 8192, 8, kTooLarge},
      {"the depth makes it wrap at 24 bits", 178956971, 1, 24, kTooLarge},
      {"a negative side arrives as a large one", 0xFFFFFFFF, 2, 8, kTooLarge},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    OwnedImage image;
    ASSERT_NE(image.Create(10, 3, 8, 0), nullptr);
    EXPECT_EQ(image.Create(c.width, c.height, c.bpp, 0), nullptr);
    EXPECT_STREQ(image.GetLastError(), c.error);
    EXPECT_FALSE(image.IsValid()) << "the old block is gone";
    EXPECT_EQ(image.GetWidth(), 10u) << "the old header stays";
    EXPECT_EQ(image.GetHeight(), 3u);
    EXPECT_EQ(image.GetEffWidth(), 12u);
    EXPECT_EQ(image.GetNumColors(), 256u);
    EXPECT_EQ(image.GetBits(0), nullptr);
    EXPECT_EQ(image.GetPalette(), nullptr);
  }
}

TEST(ImageObject, KeepsAnErrorTextUntilTheNextOne) {
  OwnedImage image;
  image.Create(0, 1, 8, 0);
  ASSERT_NE(image.Create(1, 1, 8, 0), nullptr);
  EXPECT_STREQ(image.GetLastError(), kNoSides);
  image.Create(65536, 65536, 8, 0);
  EXPECT_STREQ(image.GetLastError(), kTooLarge);
}

TEST(ImageObject, StartsWithAPaletteAndPixelsOfZeros) {
  for (const uint32_t bpp : {1u, 4u, 8u, 24u}) {
    OwnedImage image;
    ASSERT_NE(image.Create(5, 2, bpp, 0), nullptr);
    const uint32_t bytes = image.GetSize() - 40;
    const std::vector<uint8_t> zeros(bytes, 0);
    EXPECT_EQ(hexText(image.GetBits(0) - image.GetPaletteSize(), bytes), hexText(zeros)) << bpp;
  }
}

TEST(ImageObject, GivesStoredRowsByTheStride) {
  OwnedImage image;
  const uint8_t* block = image.Create(5, 3, 8, 0);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(image.GetBits(0), block + 1064);
  EXPECT_EQ(image.GetBits(), block + 1064);
  EXPECT_EQ(image.GetBits(1), block + 1072);
  EXPECT_EQ(image.GetBits(2), block + 1080);
  EXPECT_EQ(image.GetBits(3), nullptr);
  EXPECT_EQ(image.GetBits(0xFFFFFFFF), nullptr);
}

TEST(ImageObject, KeepsItsFiguresWhenItsBlockIsDestroyed) {
  OwnedImage image;
  createSolid(image, 5, 3, 7);
  EXPECT_TRUE(image.Destroy());
  EXPECT_FALSE(image.IsValid());
  EXPECT_EQ(image.GetWidth(), 5u);
  EXPECT_EQ(image.GetHeight(), 3u);
  EXPECT_EQ(image.GetEffWidth(), 8u);
  EXPECT_EQ(image.GetNumColors(), 256u);
  EXPECT_EQ(image.GetPaletteSize(), 1024u);
  EXPECT_EQ(image.GetSize(), 1088u);
  EXPECT_EQ(image.GetPalette(), nullptr);
  EXPECT_EQ(image.GetBits(0), nullptr);
  EXPECT_TRUE(image.Destroy()) << "a second time";
}

TEST(ImageObject, MovesWholeIntoAnother) {
  OwnedImage source;
  source.Create(0, 0, 8, 0);  // leaves an error text, which moves too
  createGrey(source, 3, 2, "01 02 03  04 05 06");
  const uint8_t* rows = source.GetBits(0);
  for (const bool flag : {false, true}) {
    SCOPED_TRACE(flag);
    OwnedImage target;
    createSolid(target, 9, 9, 1);
    EXPECT_TRUE(target.Transfer(source, flag));
    EXPECT_TRUE(target.IsValid());
    EXPECT_EQ(target.GetBits(0), rows) << "the block itself, not a copy";
    EXPECT_EQ(target.GetWidth(), 3u);
    EXPECT_EQ(target.GetHeight(), 2u);
    EXPECT_EQ(target.GetEffWidth(), 4u);
    EXPECT_EQ(indices(target), "01 02 03 04 05 06");
    EXPECT_STREQ(target.GetLastError(), kNoSides);
    EXPECT_FALSE(source.IsValid());
    EXPECT_EQ(source.GetWidth(), 0u);
    EXPECT_EQ(source.GetHeight(), 0u);
    EXPECT_EQ(source.GetEffWidth(), 0u);
    EXPECT_EQ(source.GetNumColors(), 0u);
    EXPECT_EQ(source.GetSize(), 0u);
    EXPECT_EQ(source.GetBits(0), nullptr);
    EXPECT_STREQ(source.GetLastError(), "");
    source.Transfer(target);
  }
}

TEST(ImageObject, MovesEmptinessToo) {
  CxImage nothing;
  OwnedImage target;
  createSolid(target, 4, 4, 1);
  EXPECT_TRUE(target.Transfer(nothing));
  EXPECT_FALSE(target.IsValid());
  EXPECT_EQ(target.GetWidth(), 0u);
}

TEST(ImageObject, CopiesWorkingFieldsOnlyIntoAnImageWithoutABlock) {
  OwnedImage source;
  source.Create(0, 0, 8, 0);
  createSolid(source, 5, 3, 7);
  CxImage fresh;
  fresh.CopyInfo(source);
  EXPECT_EQ(fresh.GetEffWidth(), 8u);
  EXPECT_STREQ(fresh.GetLastError(), kNoSides);
  EXPECT_EQ(fresh.GetWidth(), 0u) << "the header is not among them";
  EXPECT_EQ(fresh.GetNumColors(), 0u);
  EXPECT_FALSE(fresh.IsValid());

  OwnedImage full;
  createSolid(full, 9, 1, 7);
  full.CopyInfo(source);
  EXPECT_EQ(full.GetEffWidth(), 12u);
  EXPECT_STREQ(full.GetLastError(), "");
}

TEST(ImageObject, CopiesTheColourCacheWithTheWorkingFields) {
  constexpr tagRGBQUAD kGrey = {200, 200, 200, 0};
  OwnedImage source;
  createSolid(source, 1, 1, 0);
  EXPECT_EQ(source.GetNearestIndex(kGrey), 200);
  OwnedImage fresh;
  fresh.CopyInfo(source);
  ASSERT_NE(fresh.Create(1, 1, 8, 0), nullptr);
  EXPECT_EQ(fresh.GetNearestIndex(kGrey), 200) << "though its own palette is all black";
}

TEST(ImageObject, ReadsArraysOfEveryDepth) {
  struct Case {
    const char* sentence;
    uint32_t width, height, bpp, bytesPerLine;
    bool flip;
    const char* array;
    const char* stored;
    const char* firstEntries;  // four of the palette, or two at 1 bit
  };
  static constexpr char kEightBits[] = "00 00 00 00  01 01 01 00  02 02 02 00  03 03 03 00";
  static constexpr char kFourBits[] = "00 00 00 00  11 11 11 00  22 22 22 00  33 33 33 00";
  static constexpr char kOneBit[] = "00 00 00 00  FF FF FF 00";
  constexpr Case kCases[] = {
      {"8 bits, first row to stored row 0", 3, 2, 8, 3, false, "01 02 03  04 05 06",
       "01 02 03 00  04 05 06 00", kEightBits},
      {"8 bits flipped, first row to the last stored row", 3, 2, 8, 3, true, "01 02 03  04 05 06",
       "04 05 06 00  01 02 03 00", kEightBits},
      {"a line longer than the width fills the stride too", 3, 2, 8, 4, false,
       "01 02 03 AA  04 05 06 BB", "01 02 03 AA  04 05 06 BB", kEightBits},
      {"a line longer than the stride is cut", 3, 2, 8, 6, false,
       "01 02 03 AA BB CC  04 05 06 DD EE FF", "01 02 03 AA  04 05 06 DD", kEightBits},
      {"a line shorter than the width leaves zeros", 6, 2, 8, 2, false, "01 02  03 04",
       "01 02 00 00 00 00 00 00  03 04 00 00 00 00 00 00", kEightBits},
      {"no bytes a line read nothing", 2, 1, 8, 0, false, "07", "00 00 00 00", kEightBits},
      {"1 bit", 10, 2, 1, 2, false, "A5 40  5A 80", "A5 40 00 00  5A 80 00 00", kOneBit},
      {"1 bit flipped", 10, 2, 1, 2, true, "A5 40  5A 80", "5A 80 00 00  A5 40 00 00", kOneBit},
      {"4 bits", 3, 2, 4, 2, false, "12 30  45 60", "12 30 00 00  45 60 00 00", kFourBits},
      {"24 bits", 2, 2, 24, 6, false, "01 02 03 04 05 06  11 12 13 14 15 16",
       "01 02 03 04 05 06 00 00  11 12 13 14 15 16 00 00", ""},
      {"32 bits lose every fourth byte", 2, 2, 32, 8, false,
       "01 02 03 FF 04 05 06 FE  11 12 13 FD 14 15 16 FC",
       "01 02 03 04 05 06 00 00  11 12 13 14 15 16 00 00", ""},
      {"32 bits flipped", 2, 2, 32, 8, true, "01 02 03 FF 04 05 06 FE  11 12 13 FD 14 15 16 FC",
       "11 12 13 14 15 16 00 00  01 02 03 04 05 06 00 00", ""},
      {"32 bits with lines apart", 1, 2, 32, 6, false, "01 02 03 FF 77 77  11 12 13 FD 77 77",
       "01 02 03 00  11 12 13 00", ""},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    const std::vector<uint8_t> array = hexBytes(c.array);
    const std::string entries = hexLine(c.firstEntries);
    OwnedImage image;
    EXPECT_TRUE(
        image.CreateFromArray(array.data(), c.width, c.height, c.bpp, c.bytesPerLine, c.flip));
    ASSERT_TRUE(image.IsValid());
    EXPECT_EQ(storedBytes(image), hexLine(c.stored));
    EXPECT_EQ(paletteBytes(image, (entries.size() + 1) / 12), entries);
    EXPECT_EQ(hexText(array), hexLine(c.array)) << "the array is only read";
  }
}

TEST(ImageObject, RefusesArraysOfOtherDepthsWithoutAText) {
  const uint8_t array[64] = {};
  for (const uint32_t bpp : {0u, 2u, 3u, 5u, 7u, 9u, 16u, 25u, 31u, 33u, 64u}) {
    OwnedImage image;
    createSolid(image, 2, 2, 9);
    EXPECT_FALSE(image.CreateFromArray(array, 2, 2, bpp, 8, false)) << bpp;
    EXPECT_STREQ(image.GetLastError(), "") << bpp;
    EXPECT_TRUE(image.IsValid()) << "the old picture stays, depth " << bpp;
  }
  OwnedImage image;
  EXPECT_FALSE(image.CreateFromArray(nullptr, 2, 2, 8, 2, false));
  EXPECT_STREQ(image.GetLastError(), "");
}

TEST(ImageObject, TellsWhyAnArrayOfNoSizeIsRefused) {
  const uint8_t array[1] = {};
  OwnedImage image;
  createSolid(image, 2, 2, 9);
  EXPECT_FALSE(image.CreateFromArray(array, 0, 2, 8, 2, false));
  EXPECT_STREQ(image.GetLastError(), kNoSides);
  EXPECT_FALSE(image.IsValid());
}

}  // namespace
