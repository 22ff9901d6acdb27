// Negative, brightness and contrast, look-up tables.
// The complete tables of Light: 256 levels per setting, in single precision.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/filter/image/owned_image.h"

namespace {

// An image of 32 x 8 pixels that holds every level once, in order.
void createEveryLevel(CxImage& image) {
  std::vector<uint8_t> levels(256);
  for (size_t i = 0; i < 256; ++i) levels[i] = static_cast<uint8_t>(i);
  image.CreateFromArray(levels.data(), 32, 8, 8, 32, false);
}

TEST(ImageNegative, ComplementsEveryByte) {
  struct Case {
    const char* sentence;
    uint32_t width, height, bpp;
    const char* before;
    const char* after;
  };
  constexpr Case kCases[] = {
      {"8 bits, padding and all", 3, 2, 8, "00 01 80 00  FF 7F FE 55", "FF FE 7F FF  00 80 01 AA"},
      {"1 bit, padding bits and all", 10, 1, 1, "A5 40 00 00", "5A BF FF FF"},
      {"4 bits", 3, 1, 4, "12 30 00 00", "ED CF FF FF"},
      {"24 bits", 1, 1, 24, "01 02 03 00", "FE FD FC FF"},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    OwnedImage image;
    createStored(image, c.width, c.height, c.bpp, c.before);
    image.Negative();
    EXPECT_EQ(storedBytes(image), hexLine(c.after));
    EXPECT_EQ(image.GetPaletteColor(1).rgbRed, 0) << "the palette is not complemented";
    image.Negative();
    EXPECT_EQ(storedBytes(image), hexLine(c.before)) << "twice is not at all";
  }
  CxImage nothing;
  nothing.Negative();
  EXPECT_FALSE(nothing.IsValid());
}

TEST(ImageLight, MapsEveryLevel) {
  struct Case {
    const char* sentence;
    int32_t brightness, contrast;
    const char* table;
  };
  constexpr Case kCases[] = {
      {"nothing to do", 0, 0,
       "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 14 15 16 17 18 19 1A 1B 1C 1D "
       "1E 1F "
       "20 21 22 23 24 25 26 27 28 29 2A 2B 2C 2D 2E 2F 30 31 32 33 34 35 36 37 38 39 3A 3B 3C 3D "
       "3E 3F "
       "40 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 51 52 53 54 55 56 57 58 59 5A 5B 5C 5D "
       "5E 5F "
       "60 61 62 63 64 65 66 67 68 69 6A 6B 6C 6D 6E 6F 70 71 72 73 74 75 76 77 78 79 7A 7B 7C 7D "
       "7E 7F "
       "80 81 82 83 84 85 86 87 88 89 8A 8B 8C 8D 8E 8F 90 91 92 93 94 95 96 97 98 99 9A 9B 9C 9D "
       "9E 9F "
       "A0 A1 A2 A3 A4 A5 A6 A7 A8 A9 AA AB AC AD AE AF B0 B1 B2 B3 B4 B5 B6 B7 B8 B9 BA BB BC BD "
       "BE BF "
       "C0 C1 C2 C3 C4 C5 C6 C7 C8 C9 CA CB CC CD CE CF D0 D1 D2 D3 D4 D5 D6 D7 D8 D9 DA DB DC DD "
       "DE DF "
       "E0 E1 E2 E3 E4 E5 E6 E7 E8 E9 EA EB EC ED EE EF F0 F1 F2 F3 F4 F5 F6 F7 F8 F9 FA FB FC FD "
       "FE FF "},
      {"brighter by 20", 20, 0,
       "14 15 16 17 18 19 1A 1B 1C 1D 1E 1F 20 21 22 23 24 25 26 27 28 29 2A 2B 2C 2D 2E 2F 30 31 "
       "32 33 "
       "34 35 36 37 38 39 3A 3B 3C 3D 3E 3F 40 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 51 "
       "52 53 "
       "54 55 56 57 58 59 5A 5B 5C 5D 5E 5F 60 61 62 63 64 65 66 67 68 69 6A 6B 6C 6D 6E 6F 70 71 "
       "72 73 "
       "74 75 76 77 78 79 7A 7B 7C 7D 7E 7F 80 81 82 83 84 85 86 87 88 89 8A 8B 8C 8D 8E 8F 90 91 "
       "92 93 "
       "94 95 96 97 98 99 9A 9B 9C 9D 9E 9F A0 A1 A2 A3 A4 A5 A6 A7 A8 A9 AA AB AC AD AE AF B0 B1 "
       "B2 B3 "
       "B4 B5 B6 B7 B8 B9 BA BB BC BD BE BF C0 C1 C2 C3 C4 C5 C6 C7 C8 C9 CA CB CC CD CE CF D0 D1 "
       "D2 D3 "
       "D4 D5 D6 D7 D8 D9 DA DB DC DD DE DF E0 E1 E2 E3 E4 E5 E6 E7 E8 E9 EA EB EC ED EE EF F0 F1 "
       "F2 F3 "
       "F4 F5 F6 F7 F8 F9 FA FB FC FD FE FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF "
       "FF FF "},
      {"darker by 57", -57, 0,
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 "
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 02 03 04 "
       "05 06 "
       "07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 14 15 16 17 18 19 1A 1B 1C 1D 1E 1F 20 21 22 23 24 "
       "25 26 "
       "27 28 29 2A 2B 2C 2D 2E 2F 30 31 32 33 34 35 36 37 38 39 3A 3B 3C 3D 3E 3F 40 41 42 43 44 "
       "45 46 "
       "47 48 49 4A 4B 4C 4D 4E 4F 50 51 52 53 54 55 56 57 58 59 5A 5B 5C 5D 5E 5F 60 61 62 63 64 "
       "65 66 "
       "67 68 69 6A 6B 6C 6D 6E 6F 70 71 72 73 74 75 76 77 78 79 7A 7B 7C 7D 7E 7F 80 81 82 83 84 "
       "85 86 "
       "87 88 89 8A 8B 8C 8D 8E 8F 90 91 92 93 94 95 96 97 98 99 9A 9B 9C 9D 9E 9F A0 A1 A2 A3 A4 "
       "A5 A6 "
       "A7 A8 A9 AA AB AC AD AE AF B0 B1 B2 B3 B4 B5 B6 B7 B8 B9 BA BB BC BD BE BF C0 C1 C2 C3 C4 "
       "C5 C6 "},
      {"twice the contrast", 0, 100,
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 "
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 "
       "00 02 04 06 08 0A 0C 0E 10 12 14 16 18 1A 1C 1E 20 22 24 26 28 2A 2C 2E 30 32 34 36 38 3A "
       "3C 3E "
       "40 42 44 46 48 4A 4C 4E 50 52 54 56 58 5A 5C 5E 60 62 64 66 68 6A 6C 6E 70 72 74 76 78 7A "
       "7C 7E "
       "80 82 84 86 88 8A 8C 8E 90 92 94 96 98 9A 9C 9E A0 A2 A4 A6 A8 AA AC AE B0 B2 B4 B6 B8 BA "
       "BC BE "
       "C0 C2 C4 C6 C8 CA CC CE D0 D2 D4 D6 D8 DA DC DE E0 E2 E4 E6 E8 EA EC EE F0 F2 F4 F6 F8 FA "
       "FC FE "
       "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF "
       "FF FF "
       "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF "
       "FF FF "},
      {"a third more contrast", 0, 33,
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 "
       "00 02 03 04 06 07 08 0A 0B 0C 0E 0F 10 12 13 14 16 17 18 1A 1B 1C 1E 1F 20 22 23 24 26 27 "
       "28 2A "
       "2B 2C 2E 2F 30 32 33 34 36 37 38 3A 3B 3C 3E 3F 40 41 43 44 45 47 48 49 4B 4C 4D 4F 50 51 "
       "53 54 "
       "55 57 58 59 5B 5C 5D 5F 60 61 63 64 65 67 68 69 6B 6C 6D 6F 70 71 73 74 75 77 78 79 7B 7C "
       "7D 7F "
       "80 81 83 84 85 87 88 89 8B 8C 8D 8F 90 91 93 94 95 97 98 99 9B 9C 9D 9F A0 A1 A3 A4 A5 A7 "
       "A8 A9 "
       "AB AC AD AF B0 B1 B3 B4 B5 B7 B8 B9 BB BC BD BF C0 C1 C3 C4 C5 C6 C8 C9 CA CC CD CE D0 D1 "
       "D2 D4 "
       "D5 D6 D8 D9 DA DC DD DE E0 E1 E2 E4 E5 E6 E8 E9 EA EC ED EE F0 F1 F2 F4 F5 F6 F8 F9 FA FC "
       "FD FE "
       "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF "
       "FF FF "},
      {"less contrast", 0, -45,
       "3A 3A 3B 3B 3C 3C 3D 3D 3E 3F 3F 40 40 41 41 42 42 43 44 44 45 45 46 46 47 47 48 48 49 4A "
       "4A 4B "
       "4B 4C 4C 4D 4D 4E 4F 4F 50 50 51 51 52 52 53 53 54 55 55 56 56 57 57 58 58 59 5A 5A 5B 5B "
       "5C 5C "
       "5D 5D 5E 5E 5F 60 60 61 61 62 62 63 63 64 65 65 66 66 67 67 68 68 69 69 6A 6B 6B 6C 6C 6D "
       "6D 6E "
       "6E 6F 70 70 71 71 72 72 73 73 74 74 75 76 76 77 77 78 78 79 79 7A 7B 7B 7C 7C 7D 7D 7E 7E "
       "7F 7F "
       "80 81 81 82 82 83 83 84 84 85 86 86 87 87 88 88 89 89 8A 8A 8B 8C 8C 8D 8D 8E 8E 8F 8F 90 "
       "91 91 "
       "92 92 93 93 94 94 95 95 96 97 97 98 98 99 99 9A 9A 9B 9C 9C 9D 9D 9E 9E 9F 9F A0 A0 A1 A2 "
       "A2 A3 "
       "A3 A4 A4 A5 A5 A6 A7 A7 A8 A8 A9 A9 AA AA AB AB AC AD AD AE AE AF AF B0 B0 B1 B2 B2 B3 B3 "
       "B4 B4 "
       "B5 B5 B6 B6 B7 B8 B8 B9 B9 BA BA BB BB BC BD BD BE BE BF BF C0 C0 C1 C1 C2 C3 C3 C4 C4 C5 "
       "C5 C6 "},
      {"brighter and softer", 37, -25,
       "45 46 47 47 48 49 4A 4A 4B 4C 4D 4D 4E 4F 50 50 51 52 53 53 54 55 56 56 57 58 59 59 5A 5B "
       "5C 5C "
       "5D 5E 5F 5F 60 61 62 62 63 64 65 65 66 67 68 68 69 6A 6B 6B 6C 6D 6E 6E 6F 70 71 71 72 73 "
       "74 74 "
       "75 76 77 77 78 79 7A 7A 7B 7C 7D 7D 7E 7F 80 80 81 82 83 83 84 85 86 86 87 88 89 89 8A 8B "
       "8C 8C "
       "8D 8E 8F 8F 90 91 92 92 93 94 95 95 96 97 98 98 99 9A 9B 9B 9C 9D 9E 9E 9F A0 A1 A1 A2 A3 "
       "A4 A4 "
       "A5 A6 A7 A7 A8 A9 AA AA AB AC AD AD AE AF B0 B0 B1 B2 B3 B3 B4 B5 B6 B6 B7 B8 B9 B9 BA BB "
       "BC BC "
       "BD BE BF BF C0 C1 C2 C2 C3 C4 C5 C5 C6 C7 C8 C8 C9 CA CB CB CC CD CE CE CF D0 D1 D1 D2 D3 "
       "D4 D4 "
       "D5 D6 D7 D7 D8 D9 DA DA DB DC DD DD DE DF E0 E0 E1 E2 E3 E3 E4 E5 E6 E6 E7 E8 E9 E9 EA EB "
       "EC EC "
       "ED EE EF EF F0 F1 F2 F2 F3 F4 F5 F5 F6 F7 F8 F8 F9 FA FB FB FC FD FE FE FF FF FF FF FF FF "
       "FF FF "},
      {"darker and harder", -60, 41,
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 "
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 "
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 02 03 05 06 07 09 0A 0C 0D 0E 10 11 13 "
       "14 15 "
       "17 18 1A 1B 1D 1E 1F 21 22 24 25 26 28 29 2B 2C 2D 2F 30 32 33 34 36 37 39 3A 3C 3D 3E 40 "
       "41 43 "
       "44 45 47 48 4A 4B 4C 4E 4F 51 52 54 55 56 58 59 5B 5C 5D 5F 60 62 63 64 66 67 69 6A 6B 6D "
       "6E 70 "
       "71 73 74 75 77 78 7A 7B 7C 7E 7F 81 82 83 85 86 88 89 8B 8C 8D 8F 90 92 93 94 96 97 99 9A "
       "9B 9D "
       "9E A0 A1 A2 A4 A5 A7 A8 AA AB AC AE AF B1 B2 B3 B5 B6 B8 B9 BA BC BD BF C0 C1 C3 C4 C6 C7 "
       "C9 CA "
       "CB CD CE D0 D1 D2 D4 D5 D7 D8 D9 DB DC DE DF E1 E2 E3 E5 E6 E8 E9 EA EC ED EF F0 F1 F3 F4 "
       "F6 F7 "},
      {"hardly any contrast", 5, -99,
       "84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 "
       "84 84 "
       "84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 84 "
       "84 84 "
       "84 84 84 84 84 84 84 84 84 84 84 84 84 84 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 "
       "85 85 "
       "85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 "
       "85 85 "
       "85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 "
       "85 85 "
       "85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 85 86 86 86 86 86 86 86 86 86 86 86 86 "
       "86 86 "
       "86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 "
       "86 86 "
       "86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 86 "
       "86 86 "},
      {"flat", 40, -100,
       "A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 "
       "A8 A8 "
       "A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 "
       "A8 A8 "
       "A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 "
       "A8 A8 "
       "A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 "
       "A8 A8 "
       "A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 "
       "A8 A8 "
       "A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 "
       "A8 A8 "
       "A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 "
       "A8 A8 "
       "A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 A8 "
       "A8 A8 "},
      {"inverted and softer", 0, -150,
       "C0 C0 BF BF BE BE BD BD BC BC BB BB BA BA B9 B9 B8 B8 B7 B7 B6 B6 B5 B5 B4 B4 B3 B3 B2 B2 "
       "B1 B1 "
       "B0 B0 AF AF AE AE AD AD AC AC AB AB AA AA A9 A9 A8 A8 A7 A7 A6 A6 A5 A5 A4 A4 A3 A3 A2 A2 "
       "A1 A1 "
       "A0 A0 9F 9F 9E 9E 9D 9D 9C 9C 9B 9B 9A 9A 99 99 98 98 97 97 96 96 95 95 94 94 93 93 92 92 "
       "91 91 "
       "90 90 8F 8F 8E 8E 8D 8D 8C 8C 8B 8B 8A 8A 89 89 88 88 87 87 86 86 85 85 84 84 83 83 82 82 "
       "81 81 "
       "80 80 7F 7F 7E 7E 7D 7D 7C 7C 7B 7B 7A 7A 79 79 78 78 77 77 76 76 75 75 74 74 73 73 72 72 "
       "71 71 "
       "70 70 6F 6F 6E 6E 6D 6D 6C 6C 6B 6B 6A 6A 69 69 68 68 67 67 66 66 65 65 64 64 63 63 62 62 "
       "61 61 "
       "60 60 5F 5F 5E 5E 5D 5D 5C 5C 5B 5B 5A 5A 59 59 58 58 57 57 56 56 55 55 54 54 53 53 52 52 "
       "51 51 "
       "50 50 4F 4F 4E 4E 4D 4D 4C 4C 4B 4B 4A 4A 49 49 48 48 47 47 46 46 45 45 44 44 43 43 42 42 "
       "41 41 "},
      {"inverted and harder", -10, -317,
       "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF "
       "FF FF "
       "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF "
       "FF FF "
       "FF FF FD FA F8 F6 F4 F2 F0 ED EB E9 E7 E5 E3 E0 DE DC DA D8 D5 D3 D1 CF CD CB C8 C6 C4 C2 "
       "C0 BE "
       "BB B9 B7 B5 B3 B1 AE AC AA A8 A6 A4 A1 9F 9D 9B 99 97 94 92 90 8E 8C 8A 87 85 83 81 7F 7D "
       "7A 78 "
       "76 74 72 6F 6D 6B 69 67 65 62 60 5E 5C 5A 58 55 53 51 4F 4D 4B 48 46 44 42 40 3E 3B 39 37 "
       "35 33 "
       "31 2E 2C 2A 28 26 24 21 1F 1D 1B 19 17 14 12 10 0E 0C 0A 07 05 03 01 00 00 00 00 00 00 00 "
       "00 00 "
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 "
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 "},
      {"darkest", -255, 0,
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 "
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 "
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 "
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 "
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 "
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 "
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 "
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
       "00 00 "},
      {"the largest settings", 255, 255,
       "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 03 07 0A 0E 11 15 18 1C 20 "
       "23 27 "
       "2A 2E 31 35 38 3C 40 43 47 4A 4E 51 55 58 5C 5F 63 67 6A 6E 71 75 78 7C 7F 83 87 8A 8E 91 "
       "95 98 "
       "9C 9F A3 A6 AA AE B1 B5 B8 BC BF C3 C6 CA CE D1 D5 D8 DC DF E3 E6 EA ED F1 F5 F8 FC FF FF "
       "FF FF "
       "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF "
       "FF FF "
       "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF "
       "FF FF "
       "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF "
       "FF FF "
       "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF "
       "FF FF "
       "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF "
       "FF FF "},
  };
  for (const Case& c : kCases) {
    OwnedImage image;
    createEveryLevel(image);
    EXPECT_TRUE(image.Light(c.brightness, c.contrast)) << c.sentence;
    EXPECT_EQ(indices(image), hexLine(c.table)) << c.sentence;
    EXPECT_EQ(image.GetPaletteColor(200).rgbRed, 200) << c.sentence << ": the palette stays";
  }
}

TEST(ImageLight, TruncatesTowardZeroThenClamps) {
  struct Case {
    const char* sentence;
    int32_t brightness, contrast;
    int level, want;
  };
  // clang-format off
  constexpr Case kCases[] = {
      {"-127.5 is -127, clamped",        0,  100,   0,   0},
      {"0.5 is 0",                       0,  100,  64,   0},
      {"2.5 is 2",                       0,  100,  65,   2},
      {"the middle stays",               0,  100, 128, 128},
      {"256.5 is clamped",               0,  100, 192, 255},
      {"254.5 is 254",                   0,  100, 191, 254},
      {"-0.5 is 0, not -1",           -129, -100,  77,   0},
      {"half the contrast, 64.5",        0,  -50,   0,  64},
      {"half the contrast, 65.0",        0,  -50,   1,  65},
      {"half the contrast, 192.0",       0,  -50, 255, 192},
      {"saturates at white",            20,    0, 240, 255},
      {"one below saturation",          20,    0, 234, 254},
      {"saturates at black",           -20,    0,  19,   0},
      {"one above black",              -20,    0,  21,   1},
      {"flat at the given brightness",  30, -100,   3, 158},
      {"flat and clamped",             200, -100,   3, 255},
      {"flat and clamped below",      -200, -100, 250,   0},
      {"inverted",                       0, -200,   1, 255},
      {"inverted, 0 would be 256",       0, -200,   0, 255},
      {"inverted, 255 is 1",             0, -200, 255,   1},
  };
  // clang-format on
  for (const Case& c : kCases) {
    OwnedImage image;
    createSolid(image, 1, 1, static_cast<uint8_t>(c.level));
    EXPECT_TRUE(image.Light(c.brightness, c.contrast));
    EXPECT_EQ(image.GetPixelIndex(0, 0), c.want) << c.sentence;
  }
}

TEST(ImageLut, ReplacesIndicesAndNothingElse) {
  std::vector<uint8_t> table(256);
  for (size_t i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(255 - i);
  struct Case {
    const char* sentence;
    uint32_t width, height, bpp;
    const char* before;
    const char* after;
  };
  constexpr Case kCases[] = {
      {"8 bits, padding left alone", 3, 2, 8, "00 01 80 00  FF 7F FE 55",
       "FF FE 7F 00  00 80 01 55"},
      {"4 bits keep the low half of the entry", 3, 1, 4, "12 30 00 00", "ED C0 00 00"},
      {"1 bit keeps the lowest bit", 10, 1, 1, "A5 40 00 00", "5A 80 00 00"},
      {"24 bits take no index", 1, 1, 24, "01 02 03 00", "01 02 03 00"},
  };
  for (const Case& c : kCases) {
    OwnedImage image;
    createStored(image, c.width, c.height, c.bpp, c.before);
    EXPECT_TRUE(image.Lut(table.data())) << c.sentence;
    EXPECT_EQ(storedBytes(image), hexLine(c.after)) << c.sentence;
  }
}

TEST(ImageTone, RefusesWithoutABlockOrATable) {
  const uint8_t table[256] = {};
  CxImage nothing;
  EXPECT_FALSE(nothing.Light(0, 0));
  EXPECT_FALSE(nothing.Lut(table));
  OwnedImage image;
  createSolid(image, 1, 1, 9);
  EXPECT_FALSE(image.Lut(nullptr));
  EXPECT_EQ(indices(image), "09");
}

}  // namespace
