// How a page is scaled and turned: what is measured, what is reported, and that the print agrees.
// SPDX-License-Identifier: Apache-2.0
#include "tools/preview/page_placement.h"

#include <gtest/gtest.h>

#include "tests/spooler/documents.h"
#include "tests/spooler/picture.h"
#include "tests/tools/preview/preview_runner.h"

namespace korvel {

void PrintTo(const PagePlacement& placement, std::ostream* out) {
  *out << "scale " << placement.scale << (placement.turned ? ", turned" : "");
}

namespace {

TEST(PagePlacement, ReadsTheBoxesOfAPage) {
  const std::string page = "Page    2 rot:   270\n";
  const std::string media = "Page    2 MediaBox:      0.00     0.00   612.00   792.00\n";
  const std::string crop = "Page    2 CropBox:       9.00     9.00   603.00   783.00\n";
  const std::string trim = "Page    2 TrimBox:      18.00    36.00   594.00   756.50\n";
  const struct {
    const char* sentence;
    std::string text;
    bool found;
    double width;
  } kCases[] = {
      {"a page", media + crop + trim, true, 576},
      {"a page that is shown lying", page + media + crop + trim, true, 720.5},
      {"a title that looks like a box", "Title: TrimBox: 1 1 2 2\n" + media + crop + trim, true,
       576},
      {"a box is missing", media + crop, false, 0},
      {"a box is not complete", media + crop + "Page    2 TrimBox:      18.00    36.00\n", false,
       0},
      {"a page without area", media + crop + "Page    2 TrimBox:  9.00  9.00  9.00  9.00\n", false,
       0},
      {"nothing", "", false, 0},
  };
  for (const auto& c : kCases) {
    const std::optional<PdfBoxes> have = parsePdfInfo(c.text);
    ASSERT_EQ(have.has_value(), c.found) << c.sentence;
    if (!have) continue;
    EXPECT_DOUBLE_EQ(have->shownWidth(), c.width) << c.sentence;
  }
}

// A grey page of 200 x 160 pixels at 100 dpi with stripes of `step` pixels.
struct Stripes {
  int left, top, right, bottom;
  int step;
  bool down;   // they follow each other downwards
  bool paler;  // and become lighter
};

RasterPage pageWith(const Stripes& stripes) {
  RasterPage page;
  page.header.cupsWidth = page.header.cupsBytesPerLine = 200;
  page.header.cupsHeight = 160;
  page.header.cupsBitsPerPixel = 8;
  page.header.HWResolution[0] = page.header.HWResolution[1] = 100;
  page.pixels.assign(200 * 160, 0);
  for (int y = stripes.top; y < stripes.bottom; ++y) {
    for (int x = stripes.left; x < stripes.right; ++x) {
      const int stripe = (stripes.down ? y - stripes.top : x - stripes.left) / stripes.step;
      const int level = stripes.paler ? 240 - 15 * stripe : 15 + 15 * stripe;
      const size_t at = static_cast<size_t>(y) * 200 + static_cast<size_t>(x);
      page.pixels[at] = static_cast<unsigned char>(level);
    }
  }
  return page;
}

// A page of 115.2 points is 160 pixels wide at 100 dpi, so that a stripe has 10.
TEST(PagePlacement, IsMeasuredByStripes) {
  const struct {
    const char* sentence;
    Stripes stripes;
    std::optional<PagePlacement> want;
  } kCases[] = {
      {"as it is", {20, 0, 180, 160, 10, false, false}, PagePlacement{1, false}},
      {"half the size", {20, 0, 100, 80, 5, false, false}, PagePlacement{0.5, false}},
      {"twice the size, cropped", {0, 0, 200, 160, 20, false, false}, PagePlacement{2, false}},
      {"turned", {0, 0, 160, 160, 10, true, false}, PagePlacement{1, true}},
      {"turned to the other side", {0, 0, 160, 160, 10, true, true}, PagePlacement{1, true}},
      {"upside down", {20, 0, 180, 160, 10, false, true}, PagePlacement{1, true}},
      {"half the size, turned", {20, 0, 100, 80, 5, true, false}, PagePlacement{0.5, true}},
      {"too small to measure", {0, 0, 32, 32, 2, false, false}, std::nullopt},
      {"cropped to two stripes", {0, 0, 20, 160, 10, false, false}, std::nullopt},
      {"blank", {0, 0, 0, 0, 1, false, false}, std::nullopt},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(measureStripes(pageWith(c.stripes), 115.2), c.want) << c.sentence;
  }
}

TEST(PagePlacement, IsOneSentence) {
  const struct {
    PagePlacement placement;
    const char* sentence;
  } kCases[] = {
      {{1, false}, ""},
      {{1, true}, "a.pdf: turned."},
      {{0.4706, true}, "a.pdf: scaled to 47 %, turned."},
      {{0.4706, false}, "a.pdf: scaled to 47 %."},
      {{2, false}, "a.pdf: scaled to 200 %."},
      {{0.997, false}, "a.pdf: scaled to 99 %."},
      {{1.004, false}, "a.pdf: scaled to 101 %."},
  };
  for (const auto& c : kCases) EXPECT_EQ(placementSentence("a.pdf", c.placement), c.sentence);
}

// Two bars whose left edges are 50 points apart, 141 dots at 203 dpi: what they are on the print
// does not depend on stripes. Which edge is measured depends on whether the page was turned.
std::string twoBars(double width, double height) {
  const auto place = [](double x, double y, const char* size) {
    return std::to_string(x) + " " + std::to_string(y) + size;
  };
  return makePdf({{width, height,
                   place(width / 2 - 25, height / 2 - 5, " 5 20 re f ") +
                       place(width / 2 + 25, height / 2 - 5, " 5 20 re f")}});
}

// The distance between the first dots of two bars side by side; 0 when they are not.
int distance(const Picture& page, bool down) {
  std::vector<int> starts;
  bool before = false;
  const size_t length = down ? page.height : page.width;
  for (size_t i = 0; i < length; ++i) {
    const bool any =
        (down ? page.part(0, i, page.width, 1) : page.part(i, 0, 1, page.height)).printed() != 0;
    if (any && !before) starts.push_back(static_cast<int>(i));
    before = any;
  }
  return starts.size() == 2 ? starts[1] - starts[0] : 0;
}

TEST(PagePlacement, IsReportedAsItIsPrinted) {
  const struct {
    const char* sentence;
    double width, height;  // points
    const char* description;
    const char* options;
    const char* line;  // after the name of the file
    int dots;          // between the bars
    bool down;         // they are below each other
  } kCases[] = {
      {"a page as large as the label", 288, 432, "korvel-label-203", "PageSize=4x6", "", 141,
       false},
      {"a page in whole millimetres", 283.46, 425.2, "korvel-label-203", "PageSize=100x150mm", "",
       141, false},
      {"a lying page", 432, 288, "korvel-label-203", "PageSize=4x6", ": turned.", 141, true},
      {"half the label's size", 144, 216, "korvel-label-203", "PageSize=4x6", "", 141, false},
      {"made to fit", 144, 216, "korvel-label-203", "PageSize=4x6 print-scaling=fit",
       ": scaled to 200 %.", 282, false},
      {"a Letter page on a label", 612, 792, "korvel-label-203", "PageSize=4x6 fit-to-page",
       ": scaled to 47 %.", 66, false},
      {"a lying Letter page on a label", 792, 612, "korvel-label-203", "PageSize=4x6 fit-to-page",
       ": scaled to 47 %, turned.", 66, true},
      {"an A4 page on a label, not scaled", 595, 842, "korvel-label-203",
       "PageSize=4x6 print-scaling=none", "", 141, false},
      {"turned on request", 288, 432, "korvel-label-203", "PageSize=4x6 orientation-requested=6",
       ": turned.", 141, false},
      {"two pages on a label", 288, 432, "korvel-label-203", "PageSize=4x6 number-up=2",
       ": scaled to 67 %, turned.", 94, true},
      {"mirrored, but not turned", 288, 432, "korvel-label-203", "PageSize=4x6 mirror", "", 141,
       false},
      {"a label at 300 dpi", 288, 432, "korvel-label-300", "PageSize=4x6", "", 208, false},
      {"a small label", 85, 57, "korvel-label-203", "PageSize=20x30mmRotated", "", 141, false},
      {"an A4 page within a stencil's printable area", 595, 842, "korvel-stencil-300",
       "PageSize=A4 fit-to-page", ": scaled to 93 %.", 193, false},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.sentence);
    PreviewRunner runner;
    const std::string file = runner.files().write("page.pdf", twoBars(c.width, c.height));
    const std::string shown = runner.files().file("shown");
    const std::string options = std::string(c.options) + " HalftoneType=None";
    const CommandResult result = runner.preview(
        {"--pages", "-p", ppdOf(c.description), "-o", options, "--out", shown, file});
    EXPECT_EQ(result.status, 0);
    const std::string line = *c.line == '\0' ? "" : "korvel-preview: " + file + c.line + "\n";
    EXPECT_EQ(result.output, line + shown + "/page-1.png\n");
    EXPECT_NEAR(distance(readPicture(shown + "/page-1.png"), c.down), c.dots, 1);
  }
}

TEST(PagePlacement, IsThatOfTheFirstPageThatIsPrinted) {
  PreviewRunner runner;
  const std::string file = runner.files().write(
      "pages.pdf", makePdf({{288, 432, "9 9 99 9 re f"}, {432, 288, "9 9 99 9 re f"}}));
  const std::string shown = runner.files().file("shown");
  const struct {
    const char* options;
    std::string line;
  } kCases[] = {
      {"PageSize=4x6", ""},
      {"PageSize=4x6 page-ranges=2", "korvel-preview: " + file + ": turned.\n"},
  };
  for (const auto& c : kCases) {
    const CommandResult result =
        runner.preview({"-p", ppdOf("korvel-label-203"), "-o", c.options, "--out", shown, file});
    EXPECT_EQ(result.output.substr(0, result.output.find(shown)), c.line) << c.options;
  }
}

}  // namespace
}  // namespace korvel
