// The preview's sheets are those of the emulated printer, dot for dot: place across the head,
// feeds, frames, tear and cut included. The contact sheet's pages are those of single previews.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "tests/spooler/picture.h"
#include "tests/support/hex_text.h"
#include "tests/tools/preview/preview_runner.h"

namespace {

namespace fs = std::filesystem;

const char kTwoLabels[] = "640x300 203dpi picture=noise:7\n640x200 203dpi picture=text:3";

struct SheetCase {
  const char* sentence;
  const char* description;
  const char* document;  // an example, or the words of raster pages
  const char* options;
  int copies;
  Words printer;
  size_t sheets;
  // Of the last sheet, counted by hand: the head is 1728 or 2592 dots wide, a gap is 23 lines at
  // 203 dpi, the mark of a tear or a cut 3. The label is below some columns of the head, and the
  // preview shows an outline of 2 dots around it.
  size_t head, printedHeight;
  LabelColumns label;
  size_t shownHeight;
  const char* placement = "";  // reported after the name of the document
};

const SheetCase kSheetCases[] = {
    {"a label from PDF",
     "korvel-label-203",
     "label.pdf",
     "",
     1,
     {},
     1,
     1728,
     1218,
     {456, 812},
     1222},
    {"two copies, cut after the job",
     "korvel-label-203",
     "label.pdf",
     "PostAction=Cut Occurrence=AfterJob",
     2,
     {},
     2,
     1728,
     1244,
     {456, 812},
     1246},
    {"raster, torn off after every page",
     "korvel-k220-203-oneway",
     kTwoLabels,
     "PostAction=TearOff Occurrence=EveryPage HalftoneType=Stucki",
     1,
     {},
     2,
     1728,
     226,
     {544, 640},
     228},
    {"black marks, turned",
     "korvel-r57-203-oneway",
     kTwoLabels,
     "PaperType=LabelMark PostAction=TearOff Origin=Rotation180",
     1,
     {"--media", "mark"},
     2,
     1728,
     226,
     {544, 640},
     228},
    // 12 mm of feed are 141 lines, and the printed sheet ends where the page ends. The outline is
    // that of A4, 2480 x 3507 dots.
    {"a framed stencil",
     "korvel-stencil-300",
     "stencil.pdf",
     "AntiWrinkle=2",
     1,
     {"--dpi", "300", "--media", "sheet"},
     1,
     2592,
     3413,
     {56, 2480},
     3511},
    // 297.64 x 419.53 points.
    {"a small stencil in the fine halftone",
     "korvel-z4-oneway",
     "label.png",
     "PageSize=Tattoo_A6",
     1,
     {"--dpi", "300", "--media", "sheet"},
     1,
     2592,
     1535,
     {672, 1240},
     1752,
     ": turned."},
};

TEST(Preview, ShowsTheSheetsOfTheEmulatedPrinter) {
  for (const SheetCase& c : kSheetCases) {
    SCOPED_TRACE(c.sentence);
    PreviewRunner runner;
    const bool raster = std::string(c.document).find(' ') != std::string::npos;
    const std::string document =
        raster ? runner.files().write("pages.ras", rasterOf(c.document)) : exampleFile(c.document);
    const std::string shown = runner.files().file("shown");
    Words words = {"-p", ppdOf(c.description), "--out", shown, document};
    if (*c.options != '\0') words.insert(words.end(), {"-o", c.options});
    if (c.copies != 1) words.insert(words.end(), {"-n", std::to_string(c.copies)});
    const CommandResult result = runner.preview(words);
    EXPECT_EQ(result.status, 0) << result.output;
    const std::string printed =
        runner.print(document, ppdOf(c.description), c.options, c.copies, c.printer);
    for (size_t i = 1; i <= c.sheets + 1; ++i) {
      const std::string name = "/sheet-" + std::to_string(i) + ".png";
      EXPECT_EQ(fs::exists(shown + name), i <= c.sheets) << name;
      EXPECT_EQ(fs::exists(printed + name), i <= c.sheets) << name;
      if (i <= c.sheets) expectCropped(shown + name, printed + name, c.label);
    }
    const std::string lastName = "/sheet-" + std::to_string(c.sheets) + ".png";
    const std::string line =
        *c.placement == '\0' ? "" : "korvel-preview: " + document + c.placement + "\n";
    EXPECT_EQ(result.output, line + shown + "/sheet-1.png" +
                                 (c.sheets == 1 ? "" : " to " + shown + lastName) + "\n");
    const Picture wanted = readPicture(printed + lastName);
    EXPECT_EQ(wanted.width, c.head);
    EXPECT_EQ(wanted.height, c.printedHeight);
    const Picture last = readPicture(shown + lastName);
    EXPECT_EQ(last.width, c.label.width + 4);
    EXPECT_EQ(last.height, c.shownHeight);
  }
}

TEST(Preview, WarnsOfAPictureThatIsScaled) {
  const struct {
    const char* sentence;
    const char* size;
    const char* warning;
  } kCases[] = {
      {"240 x 160 pixels, turned and scaled to a label of 4 by 6 inches", "PageSize=4x6",
       "label.png is 240 x 160 dots and will be scaled to 1218 x 812; barcodes may not scan. A "
       "picture of 812 x 1218 dots is not scaled.\n"},
      {"a label of 240 x 160 dots", "PageSize=20x30mmRotated", ""},
  };
  for (const auto& c : kCases) {
    PreviewRunner runner;
    const CommandResult result =
        runner.preview({"-p", ppdOf("korvel-label-203"), "-o", c.size, "-o", "center-of-pixel",
                        "--out", runner.files().file("shown"), exampleFile("label.png")});
    EXPECT_EQ(result.status, 0) << result.output;
    const size_t at = result.output.find("label.png is");
    const std::string warning =
        at == std::string::npos ? ""
                                : result.output.substr(at, result.output.find('\n', at) + 1 - at);
    EXPECT_EQ(warning, c.warning) << c.sentence;
  }
}

// 16 x 8 pixels of 8 bits, the left half black, in one strip.
std::string smallTiff() {
  std::string file;
  for (const uint8_t byte :
       hexBytes("49492A00 08000000 0900 00010300 01000000 10000000 01010300 01000000 08000000"
                "02010300 01000000 08000000 03010300 01000000 01000000 06010300 01000000 01000000"
                "11010400 01000000 7A000000 15010300 01000000 01000000 16010300 01000000 08000000"
                "17010400 01000000 80000000 00000000")) {
    file += static_cast<char>(byte);
  }
  for (int row = 0; row < 8; ++row) file += std::string(8, '\0') + std::string(8, '\xFF');
  return file;
}

TEST(Preview, ShowsATiffAsItIsPrinted) {
  PreviewRunner runner;
  const std::string document = runner.files().write("half.tiff", smallTiff());
  const std::string shown = runner.files().file("shown");
  const CommandResult result =
      runner.preview({"-p", ppdOf("korvel-label-203"), "--out", shown, document});
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_NE(result.output.find("half.tiff is 16 x 8 dots and will be scaled to 1218 x 609"),
            std::string::npos)
      << result.output;
  // The black half is at the left of the file, and at the top or the bottom of the label.
  EXPECT_NE(result.output.find("half.tiff: turned.\n"), std::string::npos) << result.output;
  const Picture sheet = readPicture(shown + "/sheet-1.png");
  // Enlarging blends its edge, one pixel of eight.
  const auto percent = [&sheet](size_t width, size_t height) {
    return sheet.part(0, 0, width, height).printed() * 100 / sheet.printed();
  };
  const size_t above = percent(sheet.width, sheet.height / 2);
  EXPECT_TRUE(above < 10 || above > 90) << above;
  EXPECT_NEAR(static_cast<double>(percent(sheet.width / 2, sheet.height)), 50, 5);
  const std::string printed = runner.print(document, ppdOf("korvel-label-203"), "", 1, {});
  expectCropped(shown + "/sheet-1.png", printed + "/sheet-1.png", {456, 812});
}

TEST(Preview, ReportsAPictureThatWasCutShort) {
  PreviewRunner runner;
  const std::string tiff = smallTiff();
  const std::string png = fileBytes(exampleFile("label.png"));
  const struct {
    const char* name;
    std::string content;
    int status;  // the spooler's filter prints what there is of a TIFF, and ends at a PNG
    bool reported;
  } kCases[] = {
      {"whole.tiff", tiff, 0, false},
      {"cut.tiff", tiff.substr(0, tiff.size() - 40), 0, true},
      {"whole.png", png, 0, false},
      {"cut.png", png.substr(0, png.size() / 2), 1, true},
  };
  for (const auto& c : kCases) {
    const std::string file = runner.files().write(c.name, c.content);
    const CommandResult result = runner.preview(
        {"-p", ppdOf("korvel-label-203"), "--out", runner.files().file("shown"), file});
    EXPECT_EQ(result.status, c.status) << result.output;
    const std::string sentence = "korvel-preview: " + file +
                                 " is incomplete, and a part of the picture is missing; save or "
                                 "copy it again.\n";
    EXPECT_EQ(result.output.starts_with(sentence), c.reported) << result.output;
  }
}

TEST(Preview, AReportingModelPrintsTheDotsOfItsOneWayTwin) {
  PreviewRunner runner;
  const std::string document =
      runner.files().write("page.ras", rasterOf("640x300 203dpi picture=noise:7"));
  const std::string shown = runner.files().file("shown");
  EXPECT_EQ(runner.preview({"-p", ppdOf("korvel-k220-203"), "--out", shown, document}).status, 0);
  const std::string printed = runner.print(document, ppdOf("korvel-k220-203"), "", 1, {});
  expectCropped(shown + "/sheet-1.png", printed + "/sheet-1.png", {544, 640});
}

TEST(Preview, CompressedRasterIsRasterAsWell) {
  PreviewRunner runner;
  const std::string plain = runner.files().write("pages.ras", rasterOf(kTwoLabels));
  const std::string packed = runner.files().write("packed.ras", rasterOf(kTwoLabels));
  ASSERT_EQ(run({"gzip", packed}).status, 0);
  const std::string ppd = ppdOf("korvel-label-203");
  EXPECT_EQ(runner.preview({"-p", ppd, "--out", runner.files().file("a"), plain}).status, 0);
  EXPECT_EQ(runner.preview({"-p", ppd, "--out", runner.files().file("b"), packed + ".gz"}).status,
            0);
  EXPECT_TRUE(fileBytes(runner.files().file("a/sheet-2.png")) ==
              fileBytes(runner.files().file("b/sheet-2.png")));
  EXPECT_NE(fileBytes(runner.files().file("b/sheet-2.png")), "(none)");
}

TEST(Preview, StreamAndPagesAreForWhoeverLooksCloser) {
  PreviewRunner runner;
  const std::string document =
      runner.files().write("bars.ras", rasterOf("16x5 203dpi picture=checker:4"));
  const std::string shown = runner.files().file("shown");
  // An earlier preview of four pages; the third is the user's own picture now.
  const std::string earlier = runner.files().write(
      "earlier.ras", rasterOf("8x8 203dpi\n8x8 203dpi\n8x8 203dpi\n8x8 203dpi"));
  EXPECT_EQ(
      runner.preview({"--pages", "-p", ppdOf("korvel-label-203"), "--out", shown, earlier}).status,
      0);
  runner.files().write("shown/page-3.png", "mine");
  runner.files().write("shown/page-x.png", "mine");
  const CommandResult result =
      runner.preview({"--stream", "--pages", "-p", ppdOf("korvel-label-203"), "--out", shown, "-o",
                      "HalftoneType=None", document});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, document +
                               " (application/vnd.cups-raster), printer Korvel Label 203 dpi\n"
                               "rasteriser: none; options: HalftoneType=None; copies: 1\n"
                               "filter: 1 page at 203 dpi, 185 bytes for the printer\n" +
                               shown + "/stream.bin  " + shown + "/stream.txt  " + shown +
                               "/messages.txt\n" + shown + "/page-1.png\n");
  EXPECT_EQ(runner.files().read("shown/stream.txt"),
            "000000 page start 64 nul\n000064 control 0\n000075 density 8\n000086 control 1\n"
            "000097 control 0\n000108 area offset 856 width 16\n000122 image 4 rows x 2 bytes\n"
            "000140 image 1 rows x 2 bytes\n000152 control 1\n000163 control 0\n"
            "000174 control 1\n");
  EXPECT_NE(runner.files().read("shown/messages.txt").find("\nINFO: page 1\n"), std::string::npos);
  const Picture page = readPicture(shown + "/page-1.png");
  EXPECT_EQ(page.width, 16u);
  EXPECT_EQ(page.height, 5u);
  EXPECT_FALSE(fs::exists(shown + "/sheet-1.png"));
  EXPECT_FALSE(fs::exists(shown + "/page-2.png"));
  EXPECT_EQ(runner.files().read("shown/page-3.png"), "mine");
  EXPECT_FALSE(fs::exists(shown + "/page-4.png"));
  EXPECT_EQ(runner.files().read("shown/page-x.png"), "mine");
}

TEST(Preview, ReplacesOnlyWhatAPreviewHasMade) {
  const struct {
    const char* sentence;
    const char* file;  // the user's own
    Words words;
  } kCases[] = {
      {"a sheet", "sheet-1.png", {}},           {"a later sheet", "sheet-2.png", {}},
      {"a page", "page-1.png", {"--pages"}},    {"the halftones", "halftones.png", {"--halftones"}},
      {"a stream", "stream.bin", {"--stream"}}, {"messages", "messages.txt", {"--stream"}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.sentence);
    PreviewRunner runner;
    const TemporaryFolder& files = runner.files();
    const std::string raster =
        files.write("two.ras", rasterOf("8x8 203dpi picture=black\n8x8 203dpi picture=black"));
    const std::string shown = files.file("shown");
    fs::create_directory(shown);
    const std::string path = std::string("shown/") + c.file;
    files.write(path, "mine");
    Words words = {"-p", ppdOf("korvel-label-203"), "--out", shown, raster};
    words.insert(words.end(), c.words.begin(), c.words.end());
    const CommandResult refused = runner.preview(words);
    EXPECT_EQ(refused.status, 1);
    const std::string named =
        c.words == Words{"--stream"} ? shown + "/stream.bin" : files.file(path);
    EXPECT_EQ(refused.output, "korvel-preview: " + named +
                                  " was not made by a preview; choose another folder, or replace "
                                  "it with --force.\n");
    EXPECT_EQ(files.read(path), "mine");
    words.push_back("--force");
    EXPECT_EQ(runner.preview(words).status, 0);
    EXPECT_NE(files.read(path), "mine");
    words.pop_back();
    EXPECT_EQ(runner.preview(words).status, 0) << "its own";
  }
}

TEST(Preview, FollowsNoPlantedLinks) {
  PreviewRunner runner;
  const TemporaryFolder& files = runner.files();
  const std::string raster = files.write("page.ras", rasterOf("8x8 203dpi picture=black"));
  const std::string precious = files.write("precious", "precious");
  fs::create_directory(files.file("shown"));
  for (const char* name : {"sheet-1.png", "stream.bin", "stream.txt", "messages.txt"}) {
    fs::create_symlink(precious, files.file("shown/") + name);
  }
  for (const Words& more : {Words{}, Words{"--force"}, Words{"--force", "--stream"}}) {
    Words words = {"-p", ppdOf("korvel-label-203"), "--out", files.file("shown"), raster};
    words.insert(words.end(), more.begin(), more.end());
    EXPECT_EQ(runner.preview(words).status, 1);
    EXPECT_EQ(files.read("precious"), "precious");
  }
}

// 400 dots are fewer than the names want, so a cell is 372 dots of names at the least and 400 of
// the page; letters are 2 dots a unit. Five columns come nearest to a screen.
TEST(Preview, AllHalftonesOnOneSheetAreThoseOfSinglePreviews) {
  PreviewRunner runner;
  const std::string document =
      runner.files().write("ramp.ras", rasterOf("400x300 203dpi picture=ramp\n"
                                                "80x80 203dpi picture=noise:1"));
  const std::string ppd = ppdOf("korvel-label-203");
  const CommandResult result =
      runner.preview({"--halftones", "-p", ppd, "--out", runner.files().file("all"), document});
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_NE(result.output.find("/all/halftones.png\n"), std::string::npos);
  const Picture all = readPicture(runner.files().file("all/halftones.png"));
  EXPECT_EQ(all.width, 24u + 5 * 424);
  EXPECT_EQ(all.height, 56u + 2 * (52 + 300 + 24));
  const char* const kSettings[] = {"None",   "FloydSteinberg",    "Ordered", "Burkes",
                                   "Stucki", "JarvisJudiceNinke", "Sierra",  "StevensonArce",
                                   "Tattoo", "Tattoo_Z4"};
  size_t different = 0;
  Picture before;
  for (size_t i = 0; i < std::size(kSettings); ++i) {
    SCOPED_TRACE(kSettings[i]);
    const std::string folder = runner.files().file(kSettings[i]);
    EXPECT_EQ(runner
                  .preview({"--pages", "-p", ppd, "-o", std::string("HalftoneType=") + kSettings[i],
                            "--out", folder, document})
                  .status,
              0);
    const Picture page = readPicture(folder + "/page-1.png");
    const Picture cell = all.part(24 + i % 5 * 424, 56 + 52 + i / 5 * 376, 400, 300);
    EXPECT_EQ(difference(cell, page), "");
    EXPECT_GT(page.printed(), 1000u);
    if (i > 0 && !difference(page, before).empty()) ++different;
    before = page;
  }
  EXPECT_EQ(different, 9u);
}

TEST(Preview, ReportsAHundredPagesInOneLine) {
  PreviewRunner runner;
  std::string words;
  for (int i = 0; i < 105; ++i) words += "8x4 203dpi picture=black\n";
  const std::string document = runner.files().write("many.ras", rasterOf(words));
  const CommandResult result = runner.preview(
      {"-p", ppdOf("korvel-label-203"), "--out", runner.files().file("shown"), document});
  EXPECT_EQ(result.status, 0);
  const std::string shown = runner.files().file("shown");
  EXPECT_EQ(result.output, "page 100\n" + shown + "/sheet-1.png to " + shown + "/sheet-105.png\n");
  EXPECT_NE(fileBytes(shown + "/sheet-105.png"), "(none)");
}

// Whatever the filter of a print job has left stays as it is, and nothing is added.
TEST(Preview, LeavesNothingBehind) {
  const struct {
    const char* sentence;
    Words words;
    int status;
  } kCases[] = {
      {"sheets", {}, 0},
      {"a stream", {"--stream"}, 0},
      {"one picture of all halftones", {"--halftones"}, 0},
      {"a document", {exampleFile("label.pdf")}, 0},
      {"wrong usage", {"-o", "Color=Red"}, 2},
  };
  const std::string ppd = ppdOf("korvel-label-203");
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.sentence);
    PreviewRunner runner;
    const TemporaryFolder& files = runner.files();
    const std::string raster = files.write("page.ras", rasterOf("64x40 203dpi picture=noise:7"));
    Words words = {"-p", ppd, "--out", files.file("shown")};
    words.insert(words.end(), c.words.begin(), c.words.end());
    if (c.words.empty() || !c.words[0].ends_with(".pdf")) words.push_back(raster);
    EXPECT_EQ(runner.preview(words).status, c.status);
    EXPECT_FALSE(fs::exists(files.file("xxxxx.log")));
    files.write("xxxxx.log", "of a print job");
    EXPECT_EQ(runner.preview(words).status, c.status);
    EXPECT_EQ(files.read("xxxxx.log"), "of a print job");
    EXPECT_TRUE(fs::is_empty(files.file("dumps")));
    EXPECT_TRUE(fs::is_empty(runner.passing()));
  }
}

// Else the test above would prove nothing.
TEST(Preview, APrintLeavesTheFilesThatAPreviewDoesNot) {
  PreviewRunner runner;
  const std::string raster =
      runner.files().write("page.ras", rasterOf("64x40 203dpi picture=noise:7"));
  runner.print(raster, ppdOf("korvel-label-203"), "", 1, {});
  EXPECT_TRUE(fs::exists(runner.files().file("xxxxx.log")));
  EXPECT_FALSE(fs::is_empty(runner.files().file("dumps")));
}

}  // namespace
