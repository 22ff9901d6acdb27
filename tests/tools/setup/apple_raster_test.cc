// A small page as Apple raster, byte by byte.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/apple_raster.h"

#include <gtest/gtest.h>

namespace {

TEST(AppleRaster, WritesAPageDotForDot) {
  korvel::DotCanvas page(3, 2);
  page.set(1, 0);
  page.fill(0, 1, 3, 1, 128);
  const char want[] =
      "UNIRAST\0\0\0\0\1"
      "\10\0\1\4\0\0\0\0\0\0\0\0\0\0\0\3\0\0\0\2\0\0\0\313\0\0\0\0\0\0\0\0"
      "\0\0\377\0\0\0\377"
      "\0\2\177";
  EXPECT_EQ(korvel::appleRaster(page, 203), std::string(want, sizeof want - 1));
}

TEST(AppleRaster, CutsLongRuns) {
  const korvel::DotCanvas page(300, 1);
  const std::string text = korvel::appleRaster(page, 300);
  EXPECT_EQ(text.substr(44), std::string("\0\177\377\177\377\53\377", 7));
}

}  // namespace
