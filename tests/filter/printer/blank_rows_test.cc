// Blank rows counted from both ends. Each picture has the row after the image as its last row,
// since the count from the top looks at it.
// SPDX-License-Identifier: Apache-2.0
#include "printer/blank_rows.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Case {
  const char* sentence;
  std::vector<std::string> rows;  // '#' is ink; the last row is after the image
  size_t widthBytes;
  size_t skipRight;
  size_t front;
  size_t back;
};

// Rows as long as the text: that is the stride.
std::vector<unsigned char> bytesOf(const std::vector<std::string>& rows) {
  std::vector<unsigned char> bytes;
  for (const std::string& row : rows) {
    for (const char c : row) bytes.push_back(c == '#' ? 7 : 0);
  }
  return bytes;
}

const Case kCases[] = {
    {"nothing but blank rows", {"....", "....", "....", "...."}, 4, 0, 3, 0},
    {"ink on row 0 alone is never looked at", {"####", "....", "....", "...."}, 4, 0, 3, 1},
    {"ink on row 1", {"....", "...#", "....", "...."}, 4, 0, 0, 2},
    {"ink on the last row", {"....", "....", "#...", "...."}, 4, 0, 1, 3},
    {"ink after the image counts from the top", {"....", "....", "....", "#..."}, 4, 0, 2, 0},
    {"ink on rows 0 and 2", {"#...", "....", ".#..", "...."}, 4, 0, 1, 3},
    {"every row", {"####", "####", "####", "####"}, 4, 0, 0, 3},
    {"ink in the skipped bytes only", {"..##", "..##", "..##", "..##"}, 4, 2, 3, 0},
    {"ink just before the skipped bytes", {"....", ".###", "....", "...."}, 4, 2, 0, 2},
    {"a skip of the whole row sees nothing", {"####", "####", "####", "####"}, 4, 4, 3, 0},
    {"a skip larger than the row is left out", {"....", "...#", "....", "...."}, 4, 5, 0, 2},
    {"bytes between width and stride", {"..##", "..##", "..##", "..##"}, 2, 0, 3, 0},
    {"one row that is blank", {"....", "...."}, 4, 0, 1, 0},
    {"one row of ink", {"####", "...."}, 4, 0, 1, 1},
    {"no rows at all", {"####"}, 4, 0, 0, 0},
};

TEST(BlankRowsFromFront, CountWhatFollowsRowZero) {
  for (const Case& c : kCases) {
    const auto bytes = bytesOf(c.rows);
    EXPECT_EQ(pellamImageCountBlankLinesFromFront(bytes.data(), c.widthBytes, c.rows.size() - 1,
                                                  c.skipRight, c.rows[0].size()),
              c.front)
        << c.sentence;
  }
}

TEST(BlankRowsFromBack, CountUpToTheLastInk) {
  for (const Case& c : kCases) {
    const auto bytes = bytesOf(c.rows);
    EXPECT_EQ(pellamImageCountBlankLinesFromBack(bytes.data(), c.widthBytes, c.rows.size() - 1,
                                                 c.skipRight, c.rows[0].size()),
              c.back)
        << c.sentence;
  }
}

TEST(BlankRows, WalkByAStrideThatIsShorterThanTheRow) {
  // Rows of three bytes, two apart: row 0 is 0 0 0, row 1 is 0 9 0, row 2 is 0 0 0.
  const unsigned char bytes[] = {0, 0, 0, 9, 0, 0, 0, 0, 0};
  EXPECT_EQ(pellamImageCountBlankLinesFromFront(bytes, 3, 3, 0, 2), 0u);
  EXPECT_EQ(pellamImageCountBlankLinesFromBack(bytes, 3, 3, 0, 2), 2u);
}

}  // namespace
