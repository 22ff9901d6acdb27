// Sheets of the emulated printer as pictures of characters: '#' a dot, '.' paper, '!' a mark.
// SPDX-License-Identifier: Apache-2.0
#include "tools/emulator/sheet_picture.h"

#include <gtest/gtest.h>
#include <png.h>

#include <string>
#include <vector>

#include "tests/support/character_picture.h"
#include "tests/support/hex_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/tools/result_text.h"

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
  PictureRows picture;
};

const Case kCases[] = {
    {"a page across the whole head",
     8,
     "00 00 08 00",
     {"81 42 24 18"},
     0,
     0,
     SheetEnd::kAttached,
     {"#......#", ".#....#.", "..#..#..", "...##..."}},
    {"a page in the middle of the head",
     24,
     "08 00 08 00",
     {"F0 0F"},
     0,
     0,
     SheetEnd::kAttached,
     {"........####............", "............####........"}},
    {"packets follow each other downwards",
     8,
     "00 00 08 00",
     {"80 40 20 10", "08"},
     0,
     0,
     SheetEnd::kAttached,
     {"#.......", ".#......", "..#.....", "...#....", "....#..."}},
    {"fed length is blank before and after",
     8,
     "00 00 08 00",
     {"FF"},
     2,
     1,
     SheetEnd::kAttached,
     {"........", "........", "########", "........"}},
    {"a cut is a whole line after the paper",
     8,
     "00 00 08 00",
     {"FF"},
     0,
     1,
     SheetEnd::kCut,
     {"########", "........", "!!!!!!!!", "!!!!!!!!", "!!!!!!!!"}},
    {"the tear-off edge is a broken line",
     24,
     "00 00 08 00",
     {"FF"},
     0,
     0,
     SheetEnd::kTear,
     {"########................", "!!!!!!!!........!!!!!!!!", "!!!!!!!!........!!!!!!!!",
      "!!!!!!!!........!!!!!!!!"}},
    {"a page past the head's end loses no dot",
     8,
     "04 00 08 00",
     {"81"},
     0,
     0,
     SheetEnd::kAttached,
     {"....#......#"}},
    {"bytes that miss in the last row are paper",
     16,
     "00 00 10 00",
     {"FF FF FF"},
     0,
     0,
     SheetEnd::kAttached,
     {"################", "########........"}},
};

std::string drawn(const SheetPicture& sheet) {
  return drawPicture(sheet.width(), sheet.height(), [&](size_t x, size_t y) {
    return ".#!"[static_cast<size_t>(sheet.at(x, y))];
  });
}

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

// The file's colours as the same characters; '?' is any other colour.
std::string drawnFile(const std::string& path) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&image, path.c_str()) == 0) return image.message;
  image.format = PNG_FORMAT_RGB;
  std::vector<uint8_t> pixels(PNG_IMAGE_SIZE(image));
  if (png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr) == 0) return image.message;
  return drawPicture(image.width, image.height, [&](size_t x, size_t y) {
    const std::string colour = hexText(&pixels[(y * image.width + x) * 3], 3);
    if (colour == "FF FF FF") return '.';
    if (colour == "00 00 00") return '#';
    return colour == "FF 00 00" ? '!' : '?';
  });
}

TEST(PrinterSheet, ShowsWhatAUserHoldsInHand) {
  for (const Case& c : kCases) {
    EXPECT_EQ(pictureText(c.picture), drawn(sheetOf(c))) << c.sentence;
  }
}

TEST(PrinterSheet, IsWrittenInThreeColours) {
  const TemporaryFolder folder;
  for (const Case& c : kCases) {
    EXPECT_EQ("", failureOf(sheetOf(c).writePng(folder.file("sheet.png"), 203))) << c.sentence;
    EXPECT_EQ(pictureText(c.picture), drawnFile(folder.file("sheet.png"))) << c.sentence;
  }
}

TEST(PrinterSheet, TakesTheAreasWidthWhenThePacketsLeaveTheRowOpen) {
  // 1296 bytes may be four rows of 324 bytes, three of 432 or less of more.
  StreamItem item;
  item.data = hexBytes("00 00 20 0A");
  PagePicture page;
  page.begin(item);
  item.data.assign(1296, 0xFF);
  page.add(item);
  const SheetPicture sheet(page, 2592);
  EXPECT_EQ(0u, page.rowBytes());
  EXPECT_EQ(324u, sheet.rowBytes());
  EXPECT_EQ(4u, sheet.height());
}

TEST(PrinterSheet, TellsWhyItCannotBeWritten) {
  const TemporaryFolder folder;
  const SheetPicture sheet = sheetOf(kCases[0]);
  EXPECT_EQ("Cannot write " + folder.path() + "/no/sheet.png: No such file or directory.",
            failureOf(sheet.writePng(folder.path() + "/no/sheet.png", 203)));
  const Case narrow = {"", 8, "00 00 00 00", {"FF"}, 0, 0, SheetEnd::kAttached, {}};
  EXPECT_EQ("The sheet has no length, so there is no picture.",
            failureOf(sheetOf(narrow).writePng(folder.file("sheet.png"), 203)));
}

}  // namespace
}  // namespace korvel
