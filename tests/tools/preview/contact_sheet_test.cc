// Where pages lie on a contact sheet, and that what is around them is no paper.
// SPDX-License-Identifier: Apache-2.0
#include "tools/preview/contact_sheet.h"

#include <gtest/gtest.h>

#include "tests/spooler/picture.h"
#include "tests/support/temporary_folder.h"
#include "tests/tools/result_text.h"

namespace {

korvel::StreamItem item(korvel::ItemKind kind, std::vector<uint8_t> data) {
  korvel::StreamItem item;
  item.kind = kind;
  item.data = std::move(data);
  return item;
}

// A page of whole bytes and blocks of four rows, all dots.
korvel::PagePicture blackPage(size_t bytes, size_t blocks) {
  korvel::PagePicture page;
  const auto width = static_cast<unsigned>(bytes * 8);
  page.begin(item(korvel::ItemKind::kArea,
                  {8, 0, static_cast<uint8_t>(width & 0xFF), static_cast<uint8_t>(width >> 8)}));
  for (size_t i = 0; i < blocks; ++i) {
    page.add(item(korvel::ItemKind::kImage, std::vector<uint8_t>(bytes * 4, 0xFF)));
  }
  return page;
}

TEST(ContactSheet, LaysPagesOutByTheirShape) {
  const struct {
    const char* sentence;
    size_t bytes, blocks, cells;
    size_t columns, unit, width, height;
  } kCases[] = {
      {"tall pages, five a row", 100, 300, 10, 5, 4, 48 + 5 * 848, 112 + 2 * (104 + 1200 + 48)},
      {"flat ones, two a row", 100, 50, 10, 2, 4, 48 + 2 * 848, 112 + 5 * (104 + 200 + 48)},
      {"small ones take the room of their names", 10, 100, 10, 5, 2, 24 + 5 * 396,
       56 + 2 * (52 + 400 + 24)},
      {"a single one", 100, 100, 1, 1, 4, 48 + 848, 112 + 104 + 400 + 48},
  };
  for (const auto& c : kCases) {
    std::vector<korvel::ContactCell> cells;
    for (size_t i = 0; i < c.cells; ++i) cells.push_back({"a", "b", blackPage(c.bytes, c.blocks)});
    const korvel::ContactSheet sheet("title", std::move(cells));
    EXPECT_EQ(sheet.layout().columns, c.columns) << c.sentence;
    EXPECT_EQ(sheet.layout().textUnit, c.unit) << c.sentence;
    EXPECT_EQ(sheet.width(), c.width) << c.sentence;
    EXPECT_EQ(sheet.height(), c.height) << c.sentence;
  }
}

TEST(ContactSheet, HoldsEveryDotAndPrintsNoOther) {
  const TemporaryFolder folder;
  std::vector<korvel::ContactCell> cells;
  for (int i = 0; i < 10; ++i) cells.push_back({"A name", "A note", blackPage(50, 30)});
  const korvel::ContactSheet sheet("A title that is cut off where the sheet ends",
                                   std::move(cells));
  ASSERT_EQ(failureOf(sheet.writePng(folder.file("all.png"), 203)), "");
  const Picture all = readPicture(folder.file("all.png"));
  EXPECT_EQ(all.printed(), 10u * 400 * 120);
  EXPECT_EQ(all.part(24, 56 + 52, 400, 120).printed(), 400u * 120);
  EXPECT_EQ(failureOf(sheet.writePng(folder.path() + "/no/all.png", 203)),
            "Cannot write " + folder.path() + "/no/all.png: No such file or directory.");
}

}  // namespace
