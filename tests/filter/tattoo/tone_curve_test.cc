// The two-segment tone curve: whole tables of 256 entries at chosen knees.
// Worked out separately with the same approximations, one rounding per operation.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/tone_curve.h"

#include <gtest/gtest.h>

#include "tattoo/tattoo_reference.h"
#include "tests/filter/tattoo/grey_image.h"

namespace {

TEST(ToneCurve, BendsTheTwoSegments) {
  struct Case {
    const char* sentence;
    int knee;
    float low, high;
    const char* table;
  };
  constexpr Case kCases[] = {
      {"the first halftone's curve", 64, 0.85f, 0.7f,
       "00 01 03 04 06 07 08 09 0A 0C 0D 0E 0F 10 11 12 13 14 15 16 17 18 19 1A 1B 1C 1D 1E 1F 20 "
       "21 22 "
       "23 24 25 26 27 28 29 2A 2A 2B 2C 2D 2E 2F 30 31 32 33 33 34 35 36 37 38 39 39 3A 3B 3C 3D "
       "3E 3F "
       "40 44 47 4A 4C 4E 50 52 54 56 58 59 5B 5D 5E 60 61 63 64 65 67 68 6A 6B 6C 6E 6F 70 71 73 "
       "74 75 "
       "76 77 79 7A 7B 7C 7D 7E 7F 81 82 83 84 85 86 87 88 89 8A 8B 8C 8D 8E 8F 90 91 92 93 94 95 "
       "96 97 "
       "98 99 9A 9B 9C 9D 9E 9F A0 A1 A2 A3 A4 A5 A6 A6 A7 A8 A9 AA AB AC AD AE AF AF B0 B1 B2 B3 "
       "B4 B5 "
       "B6 B6 B7 B8 B9 BA BB BB BC BD BE BF C0 C0 C1 C2 C3 C4 C5 C5 C6 C7 C8 C9 C9 CA CB CC CD CD "
       "CE CF "
       "D0 D1 D1 D2 D3 D4 D5 D5 D6 D7 D8 D8 D9 DA DB DB DC DD DE DF DF E0 E1 E2 E2 E3 E4 E5 E5 E6 "
       "E7 E7 "
       "E8 E9 EA EA EB EC ED ED EE EF F0 F0 F1 F2 F2 F3 F4 F5 F5 F6 F7 F7 F8 F9 FA FA FB FC FC FD "
       "FE FF "},
      {"the second one's exponents at 64", 64, 0.5f, 1.5f,
       "00 08 0B 0D 10 11 13 15 16 17 19 1A 1B 1C 1D 1E 20 20 21 22 23 24 25 26 27 28 28 29 2A 2B "
       "2B 2C "
       "2D 2D 2E 2F 2F 30 31 31 32 33 33 34 35 35 36 36 37 38 38 39 39 3A 3A 3B 3B 3C 3C 3D 3D 3E "
       "3E 3F "
       "40 40 40 40 40 40 41 41 41 41 42 42 43 43 43 44 44 45 45 45 46 46 47 47 48 49 49 4A 4A 4B "
       "4B 4C "
       "4D 4D 4E 4E 4F 50 50 51 52 52 53 54 55 55 56 57 58 58 59 5A 5B 5B 5C 5D 5E 5F 5F 60 61 62 "
       "63 64 "
       "65 65 66 67 68 69 6A 6B 6C 6D 6E 6E 6F 70 71 72 73 74 75 76 77 78 79 7A 7B 7C 7D 7E 7F 80 "
       "81 82 "
       "84 85 86 87 88 89 8A 8B 8C 8D 8E 90 91 92 93 94 95 96 98 99 9A 9B 9C 9D 9F A0 A1 A2 A3 A5 "
       "A6 A7 "
       "A8 AA AB AC AD AE B0 B1 B2 B4 B5 B6 B7 B9 BA BB BD BE BF C0 C2 C3 C4 C6 C7 C8 CA CB CC CE "
       "CF D1 "
       "D2 D3 D5 D6 D7 D9 DA DC DD DE E0 E1 E3 E4 E6 E7 E8 EA EB ED EE F0 F1 F3 F4 F6 F7 F9 FA FC "
       "FD FF "},
      {"knee in the middle", 128, 0.5f, 1.5f,
       "00 0B 10 13 16 19 1B 1D 20 21 23 25 27 28 2A 2B 2D 2E 2F 31 32 33 35 36 37 38 39 3A 3B 3C "
       "3D 3E "
       "40 40 41 42 43 44 45 46 47 48 49 4A 4B 4B 4C 4D 4E 4F 50 50 51 52 53 53 54 55 56 56 57 58 "
       "59 59 "
       "5A 5B 5B 5C 5D 5D 5E 5F 5F 60 61 61 62 63 63 64 65 65 66 67 67 68 68 69 6A 6A 6B 6B 6C 6D "
       "6D 6E "
       "6E 6F 70 70 71 71 72 72 73 73 74 75 75 76 76 77 77 78 78 79 79 7A 7A 7B 7B 7C 7C 7D 7D 7E "
       "7E 7F "
       "80 80 80 80 80 80 81 81 82 82 82 83 83 84 84 85 85 86 86 87 87 88 89 89 8A 8B 8B 8C 8D 8D "
       "8E 8F "
       "90 90 91 92 93 93 94 95 96 97 98 99 99 9A 9B 9C 9D 9E 9F A0 A1 A2 A3 A4 A5 A6 A7 A8 A9 AA "
       "AB AC "
       "AD AE AF B0 B1 B2 B3 B5 B6 B7 B8 B9 BA BB BD BE BF C0 C1 C3 C4 C5 C6 C8 C9 CA CB CD CE CF "
       "D0 D2 "
       "D3 D4 D6 D7 D8 DA DB DC DE DF E0 E2 E3 E4 E6 E7 E9 EA EC ED EE F0 F1 F3 F4 F6 F7 F9 FA FC "
       "FD FF "},
      {"knee on black", 0, 0.5f, 1.5f,
       "00 00 00 00 00 00 00 01 01 01 01 02 02 02 03 03 04 04 04 05 05 06 06 06 07 07 08 08 09 09 "
       "0A 0A "
       "0B 0B 0C 0C 0D 0E 0E 0F 0F 10 11 11 12 12 13 14 14 15 16 16 17 18 18 19 1A 1A 1B 1C 1D 1D "
       "1E 1F "
       "20 20 21 22 23 23 24 25 26 27 27 28 29 2A 2B 2B 2C 2D 2E 2F 30 31 31 32 33 34 35 36 37 38 "
       "39 39 "
       "3A 3B 3C 3D 3E 3F 40 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 51 52 53 54 55 56 57 "
       "58 59 "
       "5A 5B 5C 5D 5E 60 61 62 63 64 65 66 67 68 69 6B 6C 6D 6E 6F 70 71 73 74 75 76 77 78 7A 7B "
       "7C 7D "
       "7E 7F 81 82 83 84 85 87 88 89 8A 8C 8D 8E 8F 90 92 93 94 95 97 98 99 9B 9C 9D 9E A0 A1 A2 "
       "A4 A5 "
       "A6 A7 A9 AA AB AD AE AF B1 B2 B3 B5 B6 B7 B9 BA BB BD BE BF C1 C2 C4 C5 C6 C8 C9 CA CC CD "
       "CF D0 "
       "D1 D3 D4 D6 D7 D9 DA DB DD DE E0 E1 E3 E4 E5 E7 E8 EA EB ED EE F0 F1 F3 F4 F6 F7 F9 FA FC "
       "FD FF "},
      {"knee on 1", 1, 0.5f, 1.5f,
       "00 01 01 01 01 01 01 01 02 02 02 02 03 03 03 04 04 05 05 05 06 06 07 07 07 08 08 09 09 0A "
       "0A 0B "
       "0B 0C 0C 0D 0D 0E 0F 0F 10 10 11 12 12 13 13 14 15 15 16 17 17 18 19 19 1A 1B 1C 1C 1D 1E "
       "1E 1F "
       "20 21 21 22 23 24 24 25 26 27 28 28 29 2A 2B 2C 2D 2D 2E 2F 30 31 32 33 33 34 35 36 37 38 "
       "39 3A "
       "3B 3C 3C 3D 3E 3F 40 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 51 52 53 54 55 56 57 "
       "58 59 "
       "5A 5B 5C 5E 5F 60 61 62 63 64 65 66 67 68 6A 6B 6C 6D 6E 6F 70 71 73 74 75 76 77 78 7A 7B "
       "7C 7D "
       "7E 7F 81 82 83 84 85 87 88 89 8A 8C 8D 8E 8F 91 92 93 94 96 97 98 99 9B 9C 9D 9E A0 A1 A2 "
       "A4 A5 "
       "A6 A7 A9 AA AB AD AE AF B1 B2 B3 B5 B6 B7 B9 BA BB BD BE BF C1 C2 C4 C5 C6 C8 C9 CA CC CD "
       "CF D0 "
       "D1 D3 D4 D6 D7 D9 DA DB DD DE E0 E1 E3 E4 E5 E7 E8 EA EB ED EE F0 F1 F3 F4 F6 F7 F9 FA FC "
       "FD FF "},
      {"no knee", -1, 0.5f, 1.5f,
       "00 00 00 00 00 00 00 00 00 00 01 01 01 02 02 02 03 03 04 04 05 05 05 06 06 07 07 08 08 09 "
       "09 0A "
       "0A 0B 0B 0C 0D 0D 0E 0E 0F 10 10 11 11 12 13 13 14 15 15 16 17 17 18 19 19 1A 1B 1C 1C 1D "
       "1E 1E "
       "1F 20 21 22 22 23 24 25 25 26 27 28 29 2A 2A 2B 2C 2D 2E 2F 2F 30 31 32 33 34 35 36 37 37 "
       "38 39 "
       "3A 3B 3C 3D 3E 3F 40 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 51 52 53 54 55 56 57 "
       "58 59 "
       "5A 5B 5C 5D 5E 5F 61 62 63 64 65 66 67 68 69 6A 6C 6D 6E 6F 70 71 72 74 75 76 77 78 79 7B "
       "7C 7D "
       "7E 7F 81 82 83 84 85 87 88 89 8A 8B 8D 8E 8F 90 92 93 94 95 97 98 99 9A 9C 9D 9E A0 A1 A2 "
       "A3 A5 "
       "A6 A7 A9 AA AB AD AE AF B1 B2 B3 B5 B6 B7 B9 BA BB BD BE BF C1 C2 C4 C5 C6 C8 C9 CA CC CD "
       "CF D0 "
       "D1 D3 D4 D6 D7 D9 DA DB DD DE E0 E1 E3 E4 E5 E7 E8 EA EB ED EE F0 F1 F3 F4 F6 F7 F9 FA FC "
       "FD FF "},
      {"a high knee", 200, 0.5f, 1.5f,
       "00 0E 14 18 1C 1F 22 25 27 2A 2C 2E 30 32 34 36 38 3A 3C 3D 3F 40 42 43 45 46 48 49 4A 4C "
       "4D 4E "
       "4F 51 52 53 54 56 57 58 59 5A 5B 5C 5D 5E 5F 60 61 62 64 64 65 66 67 68 69 6A 6B 6C 6D 6E "
       "6F 70 "
       "71 72 72 73 74 75 76 77 78 78 79 7A 7B 7C 7C 7D 7E 7F 80 80 81 82 83 83 84 85 86 86 87 88 "
       "89 89 "
       "8A 8B 8C 8C 8D 8E 8E 8F 90 90 91 92 92 93 94 94 95 96 96 97 98 98 99 9A 9A 9B 9C 9C 9D 9E "
       "9E 9F "
       "A0 A0 A1 A1 A2 A3 A3 A4 A4 A5 A6 A6 A7 A7 A8 A9 A9 AA AA AB AC AC AD AD AE AE AF B0 B0 B1 "
       "B1 B2 "
       "B2 B3 B4 B4 B5 B5 B6 B6 B7 B7 B8 B8 B9 BA BA BB BB BC BC BD BD BE BE BF BF C0 C0 C1 C1 C2 "
       "C2 C3 "
       "C3 C4 C4 C5 C5 C6 C6 C7 C8 C8 C8 C8 C9 C9 C9 CA CB CB CC CC CD CE CF CF D0 D1 D2 D3 D4 D4 "
       "D5 D6 "
       "D7 D8 D9 DA DB DD DE DF E0 E1 E2 E3 E5 E6 E7 E8 EA EB EC EE EF F0 F2 F3 F4 F6 F7 F9 FA FC "
       "FD FF "},
      {"knee on 254", 254, 0.5f, 1.5f,
       "00 0F 16 1B 1F 23 27 2A 2D 2F 32 34 37 39 3B 3D 3F 41 43 45 47 49 4A 4C 4E 4F 51 52 54 55 "
       "57 58 "
       "5A 5B 5C 5E 5F 60 62 63 64 66 67 68 69 6A 6C 6D 6E 6F 70 71 72 74 75 76 77 78 79 7A 7B 7C "
       "7D 7E "
       "7F 80 81 82 83 84 85 86 87 88 89 8A 8A 8B 8C 8D 8E 8F 90 91 92 92 93 94 95 96 97 98 98 99 "
       "9A 9B "
       "9C 9C 9D 9E 9F A0 A0 A1 A2 A3 A4 A4 A5 A6 A7 A7 A8 A9 AA AA AB AC AD AD AE AF B0 B0 B1 B2 "
       "B2 B3 "
       "B4 B5 B5 B6 B7 B7 B8 B9 B9 BA BB BB BC BD BD BE BF BF C0 C1 C1 C2 C3 C3 C4 C5 C5 C6 C7 C7 "
       "C8 C8 "
       "C9 CA CA CB CC CC CD CD CE CF CF D0 D1 D1 D2 D2 D3 D4 D4 D5 D5 D6 D7 D7 D8 D8 D9 D9 DA DB "
       "DB DC "
       "DC DD DD DE DF DF E0 E0 E1 E1 E2 E3 E3 E4 E4 E5 E5 E6 E6 E7 E8 E8 E9 E9 EA EA EB EB EC EC "
       "ED ED "
       "EE EF EF F0 F0 F1 F1 F2 F2 F3 F3 F4 F4 F5 F5 F6 F6 F7 F7 F8 F8 F9 F9 FA FA FB FB FC FC FD "
       "FE FF "},
      {"knee on white: white stays", 255, 0.5f, 1.5f,
       "00 0F 16 1B 1F 23 27 2A 2D 2F 32 34 37 39 3B 3D 3F 41 43 45 47 49 4A 4C 4E 4F 51 52 54 55 "
       "57 58 "
       "5A 5B 5D 5E 5F 61 62 63 64 66 67 68 69 6B 6C 6D 6E 6F 70 72 73 74 75 76 77 78 79 7A 7B 7C "
       "7D 7E "
       "7F 80 81 82 83 84 85 86 87 88 89 8A 8B 8C 8D 8D 8E 8F 90 91 92 93 94 94 95 96 97 98 99 99 "
       "9A 9B "
       "9C 9D 9E 9E 9F A0 A1 A2 A2 A3 A4 A5 A5 A6 A7 A8 A8 A9 AA AB AB AC AD AE AE AF B0 B1 B1 B2 "
       "B3 B3 "
       "B4 B5 B6 B6 B7 B8 B8 B9 BA BA BB BC BC BD BE BE BF C0 C0 C1 C2 C2 C3 C4 C4 C5 C6 C6 C7 C8 "
       "C8 C9 "
       "C9 CA CB CB CC CD CD CE CE CF D0 D0 D1 D2 D2 D3 D3 D4 D5 D5 D6 D6 D7 D8 D8 D9 D9 DA DA DB "
       "DC DC "
       "DD DD DE DE DF E0 E0 E1 E1 E2 E2 E3 E4 E4 E5 E5 E6 E6 E7 E7 E8 E9 E9 EA EA EB EB EC EC ED "
       "ED EE "
       "EE EF F0 F0 F1 F1 F2 F2 F3 F3 F4 F4 F5 F5 F6 F6 F7 F7 F8 F8 F9 F9 FA FA FB FB FC FC FD FD "
       "FE FF "},
      {"straight, but for what the approximations lose", 100, 1.0f, 1.0f,
       "00 01 02 02 03 04 06 06 07 08 0A 0A 0C 0D 0E 0E 0F 11 12 13 13 14 15 17 17 18 19 1B 1B 1C "
       "1E 1E "
       "1F 21 22 23 24 25 26 27 27 28 2A 2A 2B 2D 2D 2E 2F 31 32 33 33 35 36 37 37 38 39 3A 3B 3C "
       "3D 3F "
       "3F 40 42 42 44 45 45 47 48 48 4A 4B 4C 4D 4E 4F 50 51 52 53 53 55 56 57 58 59 5A 5A 5B 5C "
       "5D 5E "
       "60 61 62 62 64 65 66 67 68 69 6A 6A 6C 6D 6E 6F 70 71 72 73 74 75 76 77 78 79 7A 7B 7B 7C "
       "7D 7E "
       "80 81 82 83 84 85 86 87 88 89 8A 8B 8C 8D 8E 8E 8F 90 91 93 94 95 96 96 98 99 9A 9B 9C 9D "
       "9E 9F "
       "A0 A1 A2 A3 A4 A5 A6 A7 A8 A9 AA AB AB AD AE AF B0 B1 B2 B3 B4 B5 B6 B7 B8 B8 B9 BA BB BC "
       "BD BE "
       "BF C0 C2 C2 C4 C5 C6 C6 C8 C8 CA CB CC CD CE CE D0 D1 D1 D2 D4 D5 D6 D6 D8 D9 DA DA DC DC "
       "DE DF "
       "E0 E1 E2 E3 E4 E5 E6 E7 E8 E9 E9 EB EC EC EE EE EF F0 F1 F2 F3 F4 F6 F7 F7 F8 FA FB FC FD "
       "FD FF "},
  };
  for (const Case& c : kCases) {
    const ToneTable table = toneTable(c.knee, c.low, c.high);
    EXPECT_EQ(hexText(table.levels, sizeof table.levels), hexLine(c.table)) << c.sentence;
    QMImage image = everyLevel();
    const unsigned char* pixels = image.data;
    reference::enh_piecewise_gamma(image, c.knee, c.low, c.high);
    EXPECT_EQ(pixelBytes(image), hexLine(c.table)) << c.sentence;
    EXPECT_EQ(image.data, pixels) << c.sentence << ": in place";
  }
}

TEST(ToneCurve, ReplacesEveryPixelOnce) {
  QMImage image = greyImage(3, 2, "00 40 FF  FF 40 00");
  reference::enh_piecewise_gamma(image, 64, 0.85f, 0.7f);
  EXPECT_EQ(pixelBytes(image), hexLine("00 40 FF  FF 40 00"));
}

}  // namespace
