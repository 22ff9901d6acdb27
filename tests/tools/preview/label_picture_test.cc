// Labels as pictures of characters: '#' a dot, '.' paper, '!' a mark, 'o' the outline.
// SPDX-License-Identifier: Apache-2.0
#include "tools/preview/label_picture.h"

#include <gtest/gtest.h>

#include "tests/support/character_picture.h"
#include "tests/support/hex_text.h"

namespace korvel {
namespace {

struct Case {
  const char* sentence;
  size_t headDots;
  const char* area;                 // offset and width, low bytes first
  std::vector<const char*> blocks;  // image packets
  size_t lead;
  size_t feed;
  SheetEnd end;
  DotSize label;
  size_t outside;
  PictureRows picture;
};

const Case kCases[] = {
    {"a page as large as its label, in the middle of the head",
     24,
     "08 00 08 00",
     {"81 42"},
     0,
     0,
     SheetEnd::kAttached,
     {8, 2},
     0,
     {"oooooooooooo", "oooooooooooo", "oo#......#oo", "oo.#....#.oo", "oooooooooooo",
      "oooooooooooo"}},
    {"bits after the label's last column are paper",
     24,
     "08 00 08 00",
     {"F8"},
     0,
     0,
     SheetEnd::kAttached,
     {5, 1},
     0,
     {"ooooooooo", "ooooooooo", "oo#####oo", "ooooooooo", "ooooooooo"}},
    {"the outline ends in the gap, and the mark is where the paper ends",
     24,
     "08 00 08 00",
     {"FF"},
     0,
     3,
     SheetEnd::kTear,
     {8, 1},
     0,
     {"oooooooooooo", "oooooooooooo", "oo########oo", "oooooooooooo", "oooooooooooo",
      "............", "!!........!!", "!!........!!", "!!........!!"}},
    {"a cut at the label's end is below the outline",
     24,
     "08 00 08 00",
     {"FF"},
     0,
     0,
     SheetEnd::kCut,
     {8, 1},
     0,
     {"oooooooooooo", "oooooooooooo", "oo########oo", "oooooooooooo", "oooooooooooo",
      "!!!!!!!!!!!!", "!!!!!!!!!!!!", "!!!!!!!!!!!!"}},
    {"a stencil is larger than its page",
     32,
     "0C 00 08 00",
     {"FF"},
     1,
     0,
     SheetEnd::kAttached,
     {16, 3},
     0,
     {"oooooooooooooooooooo", "oooooooooooooooooooo", "oo................oo",
      "oo....########....oo", "oo................oo", "oooooooooooooooooooo",
      "oooooooooooooooooooo"}},
    {"a label as wide as the head",
     8,
     "00 00 08 00",
     {"81"},
     0,
     0,
     SheetEnd::kAttached,
     {8, 1},
     0,
     {"oooooooooooo", "oooooooooooo", "oo#......#oo", "oooooooooooo", "oooooooooooo"}},
    {"dots beside the label are counted and shown, and hide the outline",
     24,
     "00 00 18 00",
     {"81 FF 81"},
     0,
     0,
     SheetEnd::kAttached,
     {8, 1},
     4,
     {"......oooooooooooo......", "......oooooooooooo......", "#.....o##########o.....#",
      "......oooooooooooo......", "......oooooooooooo......"}},
    {"paper at the top moves dots past the label's end",
     24,
     "08 00 08 00",
     {"FF 81"},
     1,
     0,
     SheetEnd::kAttached,
     {8, 2},
     2,
     {"......oooooooooooo......", "......oooooooooooo......", "......oo........oo......",
      "......oo########oo......", "......oo#oooooo#oo......", "......oooooooooooo......"}},
    {"without a size, the page is the label",
     24,
     "08 00 08 00",
     {"81"},
     0,
     0,
     SheetEnd::kAttached,
     {0, 0},
     0,
     {"oooooooooooo", "oooooooooooo", "oo#......#oo", "oooooooooooo", "oooooooooooo"}},
};

SheetPicture sheetOf(const Case& c) {
  PagePicture page;
  StreamItem item;
  item.data = hexBytes(c.area);
  page.begin(item);
  for (const char* block : c.blocks) {
    item.data = hexBytes(block);
    page.add(item);
  }
  SheetPicture sheet(page, c.headDots);
  sheet.lead(c.lead);
  sheet.feed(c.feed);
  sheet.end(c.end);
  return sheet;
}

TEST(LabelPicture, ShowsTheLabelAndLosesNoDot) {
  for (const Case& c : kCases) {
    const SheetPicture sheet = sheetOf(c);
    const LabelPicture label(sheet, c.label);
    const SheetSize size = label.size();
    EXPECT_EQ(pictureText(c.picture),
              drawPicture(
                  size.width, size.height,
                  [&](size_t x, size_t y) { return ".#!o"[static_cast<size_t>(label.at(x, y))]; }))
        << c.sentence;
    EXPECT_EQ(c.outside, label.dotsOutside()) << c.sentence;
  }
}

}  // namespace
}  // namespace korvel
