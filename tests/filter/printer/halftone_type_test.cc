// The halftone setting's names and numbers, both ways.
// A name that nobody knows means no halftoning.
// SPDX-License-Identifier: Apache-2.0
#include "printer/halftone_type.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

struct Name {
  int value;
  const char* text;
};

constexpr Name kNames[] = {
    {0, "None"},   {1, "FloydSteinberg"},    {2, "Ordered"}, {3, "Burkes"},
    {4, "Stucki"}, {5, "JarvisJudiceNinke"}, {6, "Sierra"},  {7, "StevensonArce"},
    {8, "Tattoo"}, {9, "Tattoo_Z4"},
};

TEST(HalftoneNames, GoBothWays) {
  for (const Name& name : kNames) {
    EXPECT_STREQ(pellamHalftoneTypeToStr(static_cast<DitherType>(name.value)), name.text);
    EXPECT_EQ(pellamHalftoneTypeFromStr(name.text), name.value) << name.text;
  }
}

TEST(HalftoneNames, AreNoneForValuesBeyondTheTable) {
  for (const int value : {10, 11, 1000, INT_MAX}) {
    EXPECT_STREQ(pellamHalftoneTypeToStr(static_cast<DitherType>(value)), "None") << value;
  }
}

TEST(HalftoneNames, MustMatchToTheLetter) {
  for (const char* text : {"", "tattoo", "TATTOO", "Tattoo ", " Tattoo", "Tattoo_Z", "Tattoo_Z44",
                           "Floyd-Steinberg", "floydsteinberg", "none", "9", "Sierra2"}) {
    EXPECT_EQ(pellamHalftoneTypeFromStr(text), 0) << '"' << text << '"';
  }
}

TEST(HalftoneNames, AreStoredAsThirtyTwoBits) { EXPECT_EQ(sizeof(DitherType), 4u); }

}  // namespace
