// The anti-wrinkle frame: its figures, its bands and their log lines.
// A resolution of 3 dpi makes canvases of a few dots, small enough to be drawn here.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "printer/pellam_printer.h"
#include "tests/support/captured_stderr.h"
#include "tests/support/character_picture.h"

namespace {

class FramingPrinter : public PellamPrinter {
 public:
  FramingPrinter(int resolution, int level, const char* sizeName) {
    resolution_ = resolution;
    setAntiWrinkle(level);
    // A name of 64 characters fills its field without an end.
    std::string_view(sizeName).copy(header_.cupsPageSizeName, sizeof header_.cupsPageSizeName);
    setPageHeader(&header_);
  }
  void doPrintImage(const unsigned char*, size_t, size_t, size_t) override {}

 private:
  cups_page_header2_t header_{};
};

// A blank image with the palette of a halftone: index 0 black, index 1 white.
class BlankImage : public CxImage {
 public:
  BlankImage(uint32_t width, uint32_t height) {
    Create(width, height, 8, 0);
    SetPaletteColor(1, 255, 255, 255, 0);
  }
  ~BlankImage() { Destroy(); }
};

// '#' is the frame's index 255, 'o' the widened margin's index 1, '.' the page's index 0.
std::string pictureOf(CxImage& image) {
  return drawPicture(image.GetWidth(), image.GetHeight(), [&](size_t x, size_t y) {
    const uint8_t index = image.GetBits(static_cast<uint32_t>(y))[x];
    return index == 255 ? '#' : index == 1 ? 'o' : index == 0 ? '.' : '?';
  });
}

std::string logOf(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += "DEBUG:EnableAntiWrink: " + line + "\n";
  return text;
}

PictureRows repeated(size_t count, const std::string& row) { return PictureRows(count, row); }

PictureRows operator+(PictureRows above, const PictureRows& below) {
  above.insert(above.end(), below.begin(), below.end());
  return above;
}

struct Case {
  const char* sentence;
  int resolution;
  int level;
  const char* sizeName;
  uint32_t width;
  uint32_t height;
  std::vector<std::string> log;
  PictureRows picture;
};

const std::string kDots51(51, '.');
const std::string kDots50(50, '.');

const Case kSmall[] = {
    {"an unknown name draws nothing and still logs four bands",
     300,
     1,
     "w10h6",
     10,
     6,
     {"AntiWrinkle level: 1, line_v: 12 points, line_h: 12 points.",
      "Image width is greater than canvas width, offset.x: 5",
      "Image height is greater than canvas height, offset.y: 3",
      "Drawing left line. point(5, 3, 0, 3)", "Drawing top line. point(5, 3, 5, 15)",
      "Drawing right line. point(-7, 3, 5, 3)", "Drawing bottom line. point(5, -9, 5, 3)"},
     repeated(6, "..........")},
    {"a label printer's level has the longest band of all",
     203,
     -1,
     "w144h72",
     16,
     8,
     {"AntiWrinkle level: -1, line_v: 1690924 points, line_h: 8 points.",
      "Image width is greater than canvas width, offset.x: 8",
      "Image height is greater than canvas height, offset.y: 4",
      "Drawing left line. point(8, 4, 0, 4)", "Drawing top line. point(8, 4, 8, 12)",
      "Drawing right line. point(-1690916, 4, 8, 4)", "Drawing bottom line. point(8, -4, 8, 4)"},
     repeated(8, "................")},
    {"a canvas that no memory holds leaves the page alone",
     203,
     -1,
     "A4",
     16,
     8,
     {"AntiWrinkle level: -1, line_v: 1690924 points, line_h: 8 points.",
      "Page size is A4, CanvasWidth: 3383446, CanvasHeight: 2214",
      "Image width is less than canvas width, exPoints: 1691715",
      "Image height is less than canvas height, eyPoints: 1103",
      "Failed to expand image, returning."},
     repeated(8, "................")},
    {"a level that wraps to four hundredths of a millimetre",
     600,
     42949673,
     "w9h3",
     9,
     3,
     {"AntiWrinkle level: 42949673, line_v: 1 points, line_h: 24 points.",
      "Image width is greater than canvas width, offset.x: 4",
      "Image height is greater than canvas height, offset.y: 1",
      "Drawing left line. point(4, 1, 0, 1)", "Drawing top line. point(4, 1, 4, 25)",
      "Drawing right line. point(3, 1, 4, 1)", "Drawing bottom line. point(4, -23, 4, 1)"},
     repeated(3, ".........")},
    {"exactly the canvas: the frame runs along its edges",
     3,
     5,
     "Tattoo_A6",
     14,
     14,
     {"AntiWrinkle level: 5, line_v: 1 points, line_h: 0 points.",
      "Page size is Tattoo_A6, CanvasWidth: 14, CanvasHeight: 14",
      "Drawing left line. point(0, 0, 1, 14)", "Drawing top line. point(0, 0, 1, 0)",
      "Drawing right line. point(13, 0, 14, 14)", "Drawing bottom line. point(0, 14, 14, 14)"},
     repeated(14, "#............#")},
    {"odd differences leave the widened page one dot short",
     3,
     5,
     "Tattoo_A6",
     9,
     7,
     {"AntiWrinkle level: 5, line_v: 1 points, line_h: 0 points.",
      "Page size is Tattoo_A6, CanvasWidth: 14, CanvasHeight: 14",
      "Image width is less than canvas width, exPoints: 2",
      "Image height is less than canvas height, eyPoints: 3", "Image expanded successfully.",
      "Drawing left line. point(0, 0, 1, 14)", "Drawing top line. point(0, 0, 1, 0)",
      "Drawing right line. point(13, 0, 14, 14)", "Drawing bottom line. point(0, 14, 14, 14)"},
     repeated(3, "#oooooooooooo") + repeated(7, "#o.........oo") + repeated(3, "#oooooooooooo")},
    {"one dot too narrow: logged, and not widened",
     3,
     5,
     "Tattoo_A6",
     13,
     14,
     {"AntiWrinkle level: 5, line_v: 1 points, line_h: 0 points.",
      "Page size is Tattoo_A6, CanvasWidth: 14, CanvasHeight: 14",
      "Image width is less than canvas width, exPoints: 0", "Drawing left line. point(0, 0, 1, 14)",
      "Drawing top line. point(0, 0, 1, 0)", "Drawing right line. point(13, 0, 14, 14)",
      "Drawing bottom line. point(0, 14, 14, 14)"},
     repeated(14, "#............")},
    {"the canvas is in the middle of a larger page",
     3,
     5,
     "Tattoo_A6",
     19,
     17,
     {"AntiWrinkle level: 5, line_v: 1 points, line_h: 0 points.",
      "Page size is Tattoo_A6, CanvasWidth: 14, CanvasHeight: 14",
      "Image width is greater than canvas width, offset.x: 2",
      "Image height is greater than canvas height, offset.y: 1",
      "Drawing left line. point(2, 1, 3, 15)", "Drawing top line. point(2, 1, 3, 1)",
      "Drawing right line. point(15, 1, 16, 15)", "Drawing bottom line. point(2, 15, 16, 15)"},
     repeated(1, "...................") + repeated(14, "..#............#...") +
         repeated(2, "...................")},
    {"wider and lower than the canvas",
     3,
     5,
     "Tattoo_A6",
     19,
     7,
     {"AntiWrinkle level: 5, line_v: 1 points, line_h: 0 points.",
      "Page size is Tattoo_A6, CanvasWidth: 14, CanvasHeight: 14",
      "Image height is less than canvas height, eyPoints: 3", "Image expanded successfully.",
      "Image width is greater than canvas width, offset.x: 2",
      "Drawing left line. point(2, 0, 3, 14)", "Drawing top line. point(2, 0, 3, 0)",
      "Drawing right line. point(15, 0, 16, 14)", "Drawing bottom line. point(2, 14, 16, 14)"},
     repeated(3, "oo#oooooooooooo#ooo") + repeated(7, "..#............#...") +
         repeated(3, "oo#oooooooooooo#ooo")},
    {"all four bands, the side ones two dots thick",
     13,
     3,
     "Tattoo_A6",
     55,
     62,
     {"AntiWrinkle level: 3, line_v: 2 points, line_h: 1 points.",
      "Page size is Tattoo_A6, CanvasWidth: 55, CanvasHeight: 62",
      "Drawing left line. point(0, 0, 2, 62)", "Drawing top line. point(0, 0, 55, 1)",
      "Drawing right line. point(53, 0, 55, 62)", "Drawing bottom line. point(0, 61, 55, 62)"},
     repeated(1, std::string(55, '#')) + repeated(60, "##" + kDots51 + "##") +
         repeated(1, std::string(55, '#'))},
    {"the last row and column fall outside a page widened too little",
     13,
     1,
     "Tattoo_A6",
     50,
     61,
     {"AntiWrinkle level: 1, line_v: 1 points, line_h: 1 points.",
      "Page size is Tattoo_A6, CanvasWidth: 53, CanvasHeight: 62",
      "Image width is less than canvas width, exPoints: 1",
      "Image height is less than canvas height, eyPoints: 0", "Image expanded successfully.",
      "Drawing left line. point(0, 0, 1, 62)", "Drawing top line. point(0, 0, 53, 1)",
      "Drawing right line. point(52, 0, 53, 62)", "Drawing bottom line. point(0, 61, 53, 62)"},
     repeated(1, std::string(52, '#')) + repeated(60, "#" + kDots50 + "o")},
};

TEST(AntiWrinkleFrame, DrawsAndTellsTheTable) {
  for (const Case& c : kSmall) {
    FramingPrinter printer(c.resolution, c.level, c.sizeName);
    BlankImage image(c.width, c.height);
    CapturedStderr captured;
    printer.EnableAntiWrink(image);
    EXPECT_EQ(captured.text(), logOf(c.log)) << c.sentence;
    EXPECT_EQ(pictureOf(image), pictureText(c.picture)) << c.sentence;
  }
}

// A halftone stays at one bit when there is no memory to raise it, and 255 is a 1 there.
TEST(AntiWrinkleFrame, IsDrawnAtOneBitToo) {
  FramingPrinter printer(3, 5, "Tattoo_A6");
  CxImage image;
  ASSERT_NE(image.Create(14, 14, 1, 0), nullptr);
  CapturedStderr quiet;
  printer.EnableAntiWrink(image);
  quiet.text();
  const std::string picture = drawPicture(14, 14, [&image](size_t x, size_t y) {
    const uint8_t index = image.GetPixelIndex(static_cast<int64_t>(x), static_cast<int64_t>(y));
    return index == 1 ? '#' : '.';
  });
  EXPECT_EQ(picture, pictureText(repeated(14, "#............#")));
  image.Destroy();
}

struct Sheet {
  const char* sentence;
  int level;
  const char* sizeName;
  uint32_t width;
  uint32_t height;
  std::vector<std::string> log;
};

const Sheet kAt300[] = {
    {"an A4 page of exactly the canvas",
     1,
     "A4",
     2386,
     3272,
     {"AntiWrinkle level: 1, line_v: 12 points, line_h: 12 points.",
      "Page size is A4, CanvasWidth: 2386, CanvasHeight: 3272",
      "Drawing left line. point(0, 0, 12, 3272)", "Drawing top line. point(0, 0, 2386, 12)",
      "Drawing right line. point(2374, 0, 2386, 3272)",
      "Drawing bottom line. point(0, 3260, 2386, 3272)"}},
    {"an A6 page that is widened all around",
     2,
     "Tattoo_A6",
     1181,
     1394,
     {"AntiWrinkle level: 2, line_v: 24 points, line_h: 12 points.",
      "Page size is Tattoo_A6, CanvasWidth: 1229, CanvasHeight: 1418",
      "Image width is less than canvas width, exPoints: 24",
      "Image height is less than canvas height, eyPoints: 12", "Image expanded successfully.",
      "Drawing left line. point(0, 0, 24, 1418)", "Drawing top line. point(0, 0, 1229, 12)",
      "Drawing right line. point(1205, 0, 1229, 1418)",
      "Drawing bottom line. point(0, 1406, 1229, 1418)"}},
    {"a letter sheet",
     3,
     "Letter",
     2550,
     3059,
     {"AntiWrinkle level: 3, line_v: 35 points, line_h: 12 points.",
      "Page size is Letter, CanvasWidth: 2550, CanvasHeight: 3059",
      "Drawing left line. point(0, 0, 35, 3059)", "Drawing top line. point(0, 0, 2550, 12)",
      "Drawing right line. point(2515, 0, 2550, 3059)",
      "Drawing bottom line. point(0, 3047, 2550, 3059)"}},
    {"an A5 sheet, a little larger than its canvas",
     1,
     "Tattoo_A5",
     2400,
     1420,
     {"AntiWrinkle level: 1, line_v: 12 points, line_h: 12 points.",
      "Page size is Tattoo_A5, CanvasWidth: 2386, CanvasHeight: 1418",
      "Image width is greater than canvas width, offset.x: 7",
      "Image height is greater than canvas height, offset.y: 1",
      "Drawing left line. point(7, 1, 19, 1419)", "Drawing top line. point(7, 1, 2393, 13)",
      "Drawing right line. point(2381, 1, 2393, 1419)",
      "Drawing bottom line. point(7, 1407, 2393, 1419)"}},
};

TEST(AntiWrinkleFrame, FitsTheSheetsAt300Dpi) {
  for (const Sheet& c : kAt300) {
    FramingPrinter printer(300, c.level, c.sizeName);
    BlankImage image(c.width, c.height);
    CapturedStderr captured;
    printer.EnableAntiWrink(image);
    EXPECT_EQ(captured.text(), logOf(c.log)) << c.sentence;
  }
}

TEST(AntiWrinkleFrame, SurroundsAWidenedA6Page) {
  FramingPrinter printer(300, 2, "Tattoo_A6");
  BlankImage image(1181, 1394);
  CapturedStderr quiet;
  printer.EnableAntiWrink(image);
  quiet.text();
  ASSERT_EQ(image.GetWidth(), 1229u);
  ASSERT_EQ(image.GetHeight(), 1418u);
  size_t wrong = 0;
  for (uint32_t y = 0; y < 1418; ++y) {
    for (uint32_t x = 0; x < 1229; ++x) {
      const bool framed = x < 24 || x >= 1205 || y < 12 || y >= 1406;
      wrong += image.GetBits(y)[x] != (framed ? 255 : 0);
    }
  }
  EXPECT_EQ(wrong, 0u) << "dots that differ from a frame of 24 and 12";
}

TEST(AntiWrinkleFrame, KnowsNamesToTheLetterOnly) {
  for (const char* name :
       {"a4", "A4 ", " A4", "A4.Transverse", "A5", "letter", "Tattoo_A5x", "Tattoo", "", "A",
        "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA"}) {
    FramingPrinter printer(3, 5, name);
    BlankImage image(4, 2);
    CapturedStderr captured;
    printer.EnableAntiWrink(image);
    EXPECT_EQ(
        captured.text(),
        logOf({"AntiWrinkle level: 5, line_v: 1 points, line_h: 0 points.",
               "Image width is greater than canvas width, offset.x: 2",
               "Image height is greater than canvas height, offset.y: 1",
               "Drawing left line. point(2, 1, 0, 1)", "Drawing top line. point(2, 1, 0, 1)",
               "Drawing right line. point(1, 1, 0, 1)", "Drawing bottom line. point(2, 1, 0, 1)"}))
        << '"' << name << '"';
    EXPECT_EQ(pictureOf(image), "....\n....\n") << '"' << name << '"';
  }
}

TEST(AntiWrinkleFrame, WidensInTheImagesOwnWhite) {
  FramingPrinter printer(3, 5, "Tattoo_A6");
  BlankImage image(10, 10);
  image.SetGrayPalette();  // white is 255, the frame's own index
  CapturedStderr quiet;
  printer.EnableAntiWrink(image);
  quiet.text();
  EXPECT_EQ(pictureOf(image),
            pictureText(repeated(2, "##############") + repeated(10, "##..........##") +
                        repeated(2, "##############")));
}

TEST(AntiWrinkleFrame, NeedsAnImageAndAHeader) {
  FramingPrinter printer(300, 1, "A4");
  const std::string refusal = logOf({"Image or pageHdr_ is not valid, returning."});
  CxImage none;
  CapturedStderr first;
  printer.EnableAntiWrink(none);
  EXPECT_EQ(first.text(), refusal);
  EXPECT_FALSE(none.IsValid());

  printer.setPageHeader(nullptr);
  BlankImage image(4, 1);
  CapturedStderr second;
  printer.EnableAntiWrink(image);
  EXPECT_EQ(second.text(), refusal);
  EXPECT_EQ(pictureOf(image), "....\n");
}

}  // namespace
