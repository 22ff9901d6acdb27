// Grey conversion: every layout, the rounding, the ignored fourth byte.
// Weights are single precision, so sums that look like a half may fall either way.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tattoo/filters.h"
#include "tests/filter/tattoo/grey_image.h"

namespace {

TEST(GreyConversion, CopiesGrey) {
  const QMImage source = everyLevel();
  const QMImage grey = cvtGray(source);
  EXPECT_EQ(pixelBytes(grey), pixelBytes(source));
  EXPECT_NE(grey.data, source.data);
  EXPECT_EQ(grey.color, QM_IMG_GRAY);
  EXPECT_EQ(grey.channels, 1);
  EXPECT_EQ(grey.width, 16);
  EXPECT_EQ(grey.height, 16);
}

TEST(GreyConversion, WeighsByLayout) {
  struct Case {
    const char* sentence;
    QM_IMG_COLOR color;
    int width, height;
    const char* pixels;
    const char* grey;
  };
  constexpr Case kCases[] = {
      {"blue, green, red, blue first", QM_IMG_BGR, 3, 1, "FF 00 00  00 FF 00  00 00 FF",
       "1D 96 4C"},
      {"the same bytes, red first", QM_IMG_RGB, 3, 1, "FF 00 00  00 FF 00  00 00 FF", "4C 96 1D"},
      {"mixed colours, blue first", QM_IMG_BGR, 2, 3,
       "0A 14 1E  C8 64 32  FF FF 00  00 FF FF  01 02 03  FE 01 80", "16 60 B3 E2 02 44"},
      {"mixed colours, red first", QM_IMG_RGB, 3, 2,
       "0A 14 1E  C8 64 32  FF FF 00  00 FF FF  01 02 03  FE 01 80", "12 7C E2 B3 02 5B"},
      {"the fourth byte is ignored, blue first", QM_IMG_BGRA, 2, 2,
       "0A 14 1E 00  0A 14 1E FF  C8 64 32 07  C8 64 32 C8", "16 16 60 60"},
      {"the fourth byte is ignored, red first", QM_IMG_RGBA, 2, 2,
       "0A 14 1E 00  0A 14 1E FF  C8 64 32 07  C8 64 32 C8", "12 12 7C 7C"},
      {"an unknown layout has four bytes, red first", static_cast<QM_IMG_COLOR>(5), 2, 1,
       "FF 00 00 09  00 00 FF 09", "4C 1D"},
      {"sums of a half that single precision leaves below it", QM_IMG_BGR, 4, 1,
       "05 06 C0  05 09 FD  23 7E 34  32 8D 43", "3D 51 5D 6C"},
      {"sums of a half that are rounded up", QM_IMG_BGR, 4, 1,
       "00 1B 31  00 1E 6E  00 21 AB  00 24 E8", "1F 33 47 5B"},
      {"sums formed left to right, blue first", QM_IMG_BGR, 3, 1, "01 05 F9  02 03 BD  02 23 AD",
       "4E 3A 49"},
  };
  for (const Case& c : kCases) {
    const QMImage grey = cvtGray(imageOf(c.width, c.height, c.color, c.pixels));
    EXPECT_EQ(pixelBytes(grey), hexLine(c.grey)) << c.sentence;
    EXPECT_EQ(grey.width, c.width) << c.sentence;
    EXPECT_EQ(grey.height, c.height) << c.sentence;
    EXPECT_EQ(grey.channels, 1) << c.sentence;
    EXPECT_EQ(grey.color, QM_IMG_GRAY) << c.sentence;
  }
}

// Three equal bytes v: the single-precision sum of the three products, rounded, is v for every v.
TEST(GreyConversion, KeepsEveryNeutralGrey) {
  for (const QM_IMG_COLOR color : {QM_IMG_BGR, QM_IMG_RGB}) {
    std::vector<uint8_t> pixels;
    for (int v = 0; v < 256; ++v) pixels.insert(pixels.end(), 3, static_cast<uint8_t>(v));
    const QMImage grey = cvtGray(QMImage(16, 16, color, pixels.data()));
    EXPECT_EQ(pixelBytes(grey), pixelBytes(everyLevel())) << color;
  }
}

}  // namespace
