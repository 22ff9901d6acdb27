// The two helpers for C strings.
// Paths of either style, and copies that always end.
// SPDX-License-Identifier: Apache-2.0
#include "printer/text.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/hex_text.h"

namespace {

TEST(PathBasename, IsWhatFollowsTheLastSeparator) {
  struct Case {
    const char* path;
    const char* want;
  };
  const Case cases[] = {
      {"/usr/lib/cups/filter/rastertokorvel", "rastertokorvel"},
      {"rastertokorvel", "rastertokorvel"},
      {"C:\\filter\\raster.exe", "raster.exe"},
      {"a/b\\c", "c"},
      {"a\\b/c", "c"},
      {"folder/", ""},
      {"folder\\", ""},
      {"/", ""},
      {"", ""},
  };
  for (const Case& c : cases) EXPECT_STREQ(pellamPathGetBasename(c.path), c.want) << c.path;
}

TEST(PathBasename, PointsIntoThePath) {
  const char path[] = "a/b/c";
  EXPECT_EQ(pellamPathGetBasename(path), path + 4);
  const char name[] = "c";
  EXPECT_EQ(pellamPathGetBasename(name), name);
  EXPECT_EQ(pellamPathGetBasename(nullptr), nullptr);
}

TEST(BoundedCopy, PadsCutsAndEnds) {
  struct Case {
    const char* sentence;
    const char* text;
    size_t length;
    const char* want;  // all eight bytes of the target, FF where nothing was written
  };
  const Case cases[] = {
      {"six characters into four bytes", "abcdef", 4, "61 62 63 00 FF FF FF FF"},
      {"a short text is padded with zeros", "ab", 6, "61 62 00 00 00 00 FF FF"},
      {"a text that just fits", "abc", 4, "61 62 63 00 FF FF FF FF"},
      {"one character too many", "abcd", 4, "61 62 63 00 FF FF FF FF"},
      {"an empty text", "", 3, "00 00 00 FF FF FF FF FF"},
      {"room for the end only", "abc", 1, "00 FF FF FF FF FF FF FF"},
  };
  for (const Case& c : cases) {
    char target[8];
    std::memset(target, 0xFF, sizeof target);
    EXPECT_EQ(pellamStrCpy(target, c.text, c.length), target) << c.sentence;
    EXPECT_EQ(hexText(target, sizeof target), c.want) << c.sentence;
  }
}

}  // namespace
