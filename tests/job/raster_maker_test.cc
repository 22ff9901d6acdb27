// The recipes of the tests' raster pages: keywords, headers, pictures.
// The expected noise was computed separately from the generator's published constants.
// SPDX-License-Identifier: Apache-2.0
#include "tests/support/raster_maker.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

namespace {

std::string rowsOf(const std::string& recipe) {
  RasterPage page;
  if (!parseRasterPage(recipe, &page)) return "no recipe";
  std::string text;
  for (const char byte : paintPage(page)) {
    char pair[4];
    std::snprintf(pair, sizeof pair, "%02X ", static_cast<unsigned char>(byte));
    text += pair;
  }
  return text;
}

uint32_t wordAt(const std::string& bytes, size_t at) {
  uint32_t word = 0;
  std::memcpy(&word, bytes.data() + at, sizeof word);
  return word;
}

TEST(RasterMaker, DrawsTheRecipe) {
  struct Case {
    const char* recipe;
    const char* bytes;
  };
  const Case kCases[] = {
      {"4x1 203dpi picture=white", "00 00 00 00 "},
      {"4x1 203dpi picture=black", "FF FF FF FF "},
      {"4x1 203dpi picture=level:129", "81 81 81 81 "},
      {"4x1 203dpi picture=ramp", "00 55 AA FF "},
      {"1x4 203dpi picture=rampdown", "00 55 AA FF "},
      {"1x1 203dpi picture=ramp", "00 "},
      {"4x3 203dpi picture=checker:2", "00 00 FF FF 00 00 FF FF FF FF 00 00 "},
      {"8x1 203dpi picture=noise:7", "5E 3F 31 91 E9 03 E8 14 "},
      {"8x1 203dpi picture=flat:7", "78 79 77 77 77 79 76 76 "},
      {"4x2 203dpi picture=almost:5", "30 38 30 30 30 30 30 23 "},
      {"16x5 203dpi picture=text:3",
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 00 FF FF FF 00 00 00 00 00 00 00 00 00 00 "
       "00 00 00 FF FF FF 00 00 00 00 00 00 00 00 00 00 "},
      {"2x2 203dpi pad=4 picture=black", "FF FF 81 5C 90 75 FF FF 24 A6 3D 30 "},
  };
  for (const Case& c : kCases) EXPECT_EQ(rowsOf(c.recipe), c.bytes) << c.recipe;
}

TEST(RasterMaker, RejectsUnknownKeywords) {
  RasterPage page;
  for (const char* words :
       {"", "4x4", "4 203dpi", "4x4 203", "4x4 dpi", "4x4 203dpi colour=1", "4x4 203dpi pad",
        "4x4 203dpi pad=x", "4x4 203dpi picture=cat", "4x4 203dpi cut=1 colour=1"}) {
    EXPECT_FALSE(parseRasterPage(words, &page)) << words;
  }
}

TEST(RasterMaker, WritesTheHeaderFieldsAtTheirOffsets) {
  RasterPage page;
  ASSERT_TRUE(parseRasterPage("5x2 203x300dpi pad=3 copies=2 size=Tattoo_A6", &page));
  const std::string raster = makeRaster({page, page});
  ASSERT_EQ(raster.size(), 4u + 2 * (1796 + 16));
  EXPECT_EQ(wordAt(raster, 0), 0x52615333u);
  struct Field {
    const char* name;
    size_t offset;  // in the header
    uint32_t value;
  };
  const Field kFields[] = {{"horizontal resolution", 276, 203},
                           {"vertical resolution", 280, 300},
                           {"copies", 340, 2},
                           {"width", 372, 5},
                           {"height", 376, 2},
                           {"bits per colour", 384, 8},
                           {"bits per pixel", 388, 8},
                           {"bytes per line", 392, 8},
                           {"colour order", 396, 0},
                           {"colour space", 400, 3}};
  for (const size_t start : {size_t{4}, size_t{4 + 1796 + 16}}) {
    for (const Field& f : kFields) EXPECT_EQ(wordAt(raster, start + f.offset), f.value) << f.name;
    EXPECT_STREQ(raster.data() + start + 1732, "Tattoo_A6");
  }
}

TEST(RasterMaker, CutsThePixelsButNotTheHeader) {
  RasterPage page;
  ASSERT_TRUE(parseRasterPage("8x8 203dpi cut=10", &page));
  EXPECT_EQ(makeRaster({page}).size(), 4u + 1796 + 10);
  ASSERT_TRUE(parseRasterPage("65536x65536 203dpi cut=0", &page));
  EXPECT_EQ(makeRaster({page}).size(), 4u + 1796);
}

}  // namespace
