// The unsharp mask: weighted sums of two images, rounded and clamped, and whole small pictures.
// The blur inside has sigma 3 whatever the kernel's size.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tattoo/tattoo_reference.h"
#include "tests/filter/tattoo/grey_image.h"
#include "tests/filter/tattoo/whole_images.h"

namespace {

TEST(WeightedSum, RoundsThenClamps) {
  struct Case {
    const char* sentence;
    int level, blurred;
    float amount;
    int want;
  };
  // clang-format off
  constexpr Case kCases[] = {
      {"500 is clamped to white",            200, 100, 3.0f, 255},
      {"-200 is clamped to black",           100, 200, 3.0f,   0},
      {"no detail, no change",               128, 128, 3.0f, 128},
      {"nothing added",                       77, 200, 0.0f,  77},
      {"four times minus three times",       100,  99, 3.0f, 103},
      {"the other way",                       99, 100, 3.0f,  96},
      {"exactly white",                      255, 255, 3.0f, 255},
      {"exactly black",                        0,   0, 3.0f,   0},
      {"just below black",                     0,   1, 3.0f,   0},
      {"3.5 is rounded up",                    3,   2, 0.5f,   4},
      {"4.5 is rounded up too",                4,   3, 0.5f,   5},
      {"-0.5 is rounded down, then clamped",   1,   4, 0.5f,   0},
      {"a negative amount blurs",            200, 100, -0.5f, 150},
      {"an amount of -1 is the blur",        200, 100, -1.0f, 100},
      {"seventy times the detail",           100,  99, 70.0f, 170},
      {"and taken away as often",             99, 100, -70.0f, 169},
      {"one factor beyond 64, one not",       99, 100, -65.0f, 164},
      {"12 and a half, which single precision leaves below it", 19, 84, 0.1f, 12},
      {"19 and a half, which single precision leaves below it", 33, 168, 0.1f, 19},
  };
  // clang-format on
  for (const Case& c : kCases) {
    for (const auto weigh : {weighed, reference::add_Weighted}) {
      const QMImage result = weigh(solidGrey(1, 1, c.level), solidGrey(1, 1, c.blurred), c.amount);
      EXPECT_EQ(int{result.data[0]}, c.want) << c.sentence;
    }
  }
}

TEST(WeightedSum, TakesPixelByPixel) {
  const QMImage source = greyImage(3, 2, "00 10 20  30 40 50");
  const QMImage blurred = greyImage(3, 2, "00 0F 21  30 20 FF");
  for (const auto weigh : {weighed, reference::add_Weighted}) {
    const QMImage result = weigh(source, blurred, 3.0f);
    EXPECT_EQ(pixelBytes(result), hexLine("00 13 1D  30 A0 00"));
    EXPECT_EQ(result.width, 3);
    EXPECT_EQ(result.height, 2);
  }
}

TEST(UnsharpMask, AddsTheDetailAboveABlur) {
  struct Case {
    const char* sentence;
    float amount;
    int size, width, height;
    const char* before;
    const char* after;
  };
  constexpr Case kCases[] = {
      {"an edge, as the halftones do", 300.0f, 11, 8, 4,
       "00 00 00 00 FF FF FF FF  00 00 00 00 FF FF FF FF  00 00 00 00 FF FF FF FF  00 00 00 00 FF "
       "FF FF FF",
       "00 00 00 00 FF FF FF FF  00 00 00 00 FF FF FF FF  00 00 00 00 FF FF FF FF  00 00 00 00 FF "
       "FF FF FF"},
      {"a dot, as the halftones do", 300.0f, 11, 7, 5,
       "FF FF FF FF FF FF FF  FF FF FF FF FF FF FF  FF FF FF 00 FF FF FF  FF FF FF FF FF FF FF  FF "
       "FF FF FF FF FF FF",
       "FF FF FF FF FF FF FF  FF FF FF FF FF FF FF  FF FF FF 00 FF FF FF  FF FF FF FF FF FF FF  FF "
       "FF FF FF FF FF FF"},
      {"noise, as the halftones do", 300.0f, 11, 9, 3,
       "E7 EE E7 61 5E F3 5F 30 E4  9B 48 2E 15 CA E7 50 07 20  1E 12 61 7B 0F ED A7 E1 64",
       "FF FF FF 00 00 FF 00 00 FF  E3 00 00 00 FF FF 00 00 00  00 00 28 81 00 FF FF FF 00"},
      {"a sum near a half, as the halftones do", 300.0f, 11, 11, 1,
       "2C 61 4C 51 87 85 92 5A DD A4 F8", "00 9D 2E 18 CC 94 98 00 FF 47 FF"},
      {"one column, as the halftones do", 300.0f, 11, 1, 6, "00  32  FF  FF  0A  00",
       "00  00  FF  FF  00  00"},
      {"one pixel, as the halftones do", 300.0f, 11, 1, 1, "63", "63"},
      {"a grey edge, as the halftones do", 300.0f, 11, 12, 2,
       "64 64 64 64 64 64 8C 8C 8C 8C 8C 8C  5A 5A 5A 5A 5A 5A A0 A0 A0 A0 A0 A0",
       "70 6D 61 55 40 2E B6 A1 8F 83 77 71  4E 48 3C 2D 1B 03 FF EE D9 CA BE BB"},
      {"noise, a third of the detail", 33.0f, 5, 9, 3,
       "E7 EE E7 61 5E F3 5F 30 E4  9B 48 2E 15 CA E7 50 07 20  1E 12 61 7B 0F ED A7 E1 64",
       "FA FF FF 50 4F FF 51 10 FF  A3 37 18 00 E0 FF 3D 00 01  0A 00 64 7E 00 FF AF FB 5D"},
      {"noise, none of the detail", 0.0f, 11, 9, 3,
       "E7 EE E7 61 5E F3 5F 30 E4  9B 48 2E 15 CA E7 50 07 20  1E 12 61 7B 0F ED A7 E1 64",
       "E7 EE E7 61 5E F3 5F 30 E4  9B 48 2E 15 CA E7 50 07 20  1E 12 61 7B 0F ED A7 E1 64"},
  };
  for (const Case& c : kCases) {
    const QMImage source = greyImage(c.width, c.height, c.before);
    for (const auto sharpen : {sharpened, reference::enh_unsharp_mask}) {
      const QMImage result = sharpen(source, c.amount, c.size);
      EXPECT_EQ(pixelBytes(result), hexLine(c.after)) << c.sentence;
    }
    EXPECT_EQ(pixelBytes(source), hexLine(c.before)) << c.sentence << ": only read";
  }
}

}  // namespace
