// The picture that image packets make, and the files it is written to.
// PNG files are read back with the library: what counts are the dots that a viewer shows.
// SPDX-License-Identifier: Apache-2.0
#include "tools/stream/page_picture.h"

#include <gtest/gtest.h>
#include <png.h>

#include <string>
#include <vector>

#include "tests/support/hex_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/tools/result_text.h"

namespace {

korvel::StreamItem item(korvel::ItemKind kind, const char* data) {
  korvel::StreamItem made;
  made.kind = kind;
  made.data = hexBytes(data);
  return made;
}

// An area of 16 dots, then rows of two bytes.
korvel::PagePicture pictureOf(const char* rows) {
  korvel::PagePicture picture;
  picture.begin(item(korvel::ItemKind::kArea, "50 03 10 00"));
  picture.add(item(korvel::ItemKind::kImage, rows));
  return picture;
}

// The dots that a viewer shows, '#' for black.
std::string shownDots(const std::string& path, unsigned* width) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&image, path.c_str()) == 0) return "not a PNG file";
  image.format = PNG_FORMAT_GRAY;
  std::vector<png_byte> grey(PNG_IMAGE_SIZE(image));
  if (png_image_finish_read(&image, nullptr, grey.data(), 0, nullptr) == 0) return "unreadable";
  *width = image.width;
  std::string dots;
  for (const png_byte level : grey) dots += level == 0 ? '#' : '.';
  return dots;
}

}  // namespace

TEST(PagePicture, ShowsPrintedDotsBlack) {
  const TemporaryFolder folder;
  const std::string path = folder.path() + "/page.png";
  ASSERT_EQ("", failureOf(pictureOf("80 01 00 FF").writePng(path, 203)));
  unsigned width = 0;
  EXPECT_EQ(
      "#..............#"
      "........########",
      shownDots(path, &width));
  EXPECT_EQ(16u, width);
}

TEST(PagePicture, WritesPortableBitmapsAsTheyPrint) {
  const TemporaryFolder folder;
  const std::string path = folder.path() + "/page.pbm";
  ASSERT_EQ("", failureOf(pictureOf("80 01 00 FF").writePbm(path)));
  EXPECT_EQ(hexText(std::string("P4\n16 2\n\x80\x01\x00\xFF", 12)),
            hexText(folder.read("page.pbm")));
}

TEST(PagePicture, TellsWhyThereIsNoPicture) {
  const TemporaryFolder folder;
  struct Case {
    const char* sentence;
    korvel::PagePicture picture;
    std::string path;
    std::string answer;
  };
  const Case cases[] = {
      {"rows that are not whole", pictureOf("80 01 00"), folder.path() + "/a.pbm",
       "The image of 3 bytes does not consist of whole rows of 2 bytes."},
      {"a folder that is not there", pictureOf("80 01"), folder.path() + "/none/a.pbm",
       "Cannot write " + folder.path() + "/none/a.pbm: No such file or directory."},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.answer, failureOf(c.picture.writePbm(c.path))) << c.sentence;
  }
}

TEST(PagePicture, CollectsThePacketsOfAPageAndForgetsThemAtTheNext) {
  korvel::PagePicture picture = pictureOf("80 01 00 FF 00 00 11 22");
  picture.add(item(korvel::ItemKind::kImage, "33 44"));
  EXPECT_EQ("80 01 00 FF 00 00 11 22 33 44", hexText(picture.dots()));
  EXPECT_EQ(5u, picture.height());
  picture.begin(item(korvel::ItemKind::kArea, "58 03 08 00"));
  EXPECT_TRUE(picture.empty());
  EXPECT_EQ(8u, picture.width());
}
