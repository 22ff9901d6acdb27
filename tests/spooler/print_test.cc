// Documents through a queue: the emulated printer's pages are those of ./dev print, dot for dot,
// and paper moves, tears and is cut where the options say so.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/spooler/documents.h"
#include "tests/spooler/picture.h"
#include "tests/spooler/private_spooler.h"
#include "tests/spooler/reference_print.h"
#include "tests/support/raster_maker.h"
#include "tests/tools/emulator/printer_process.h"

namespace {

using Words = std::vector<std::string>;

constexpr double kJobSeconds = 200;  // a guard against hanging, no measure

Words lpArguments(const std::string& document, const Words& options, int copies) {
  Words words = {"-n", std::to_string(copies)};
  for (const std::string& option : options) words.insert(words.end(), {"-o", option});
  words.push_back(document);
  return words;
}

std::string example(const char* name) { return std::string(KORVEL_SOURCE_DIR "/examples/") + name; }

std::string noiseRaster() {
  RasterPage page;
  EXPECT_TRUE(parseRasterPage("640x300 203dpi picture=noise:7", &page));
  return makeRaster({page, page});
}

// Where a page lies on its sheet.
struct Place {
  size_t left;
  size_t top;
};

// The printer's pages `first` and on are the reference's; their sheets hold the same dots at
// `place` and none beside.
void expectPages(const ListeningPrinter& printer, int first, const std::vector<Picture>& want,
                 Place place) {
  for (size_t i = 0; i < want.size(); ++i) {
    const int number = first + static_cast<int>(i);
    const Picture page = readPicture(printer.pagePath(number));
    EXPECT_GT(page.printed(), 0u) << "page " << number;
    EXPECT_EQ(difference(page, want[i]), "") << "page " << number;
    const Picture sheet = readPicture(printer.sheetPath(number));
    const Picture part = sheet.part(place.left, place.top, page.width, page.height);
    EXPECT_EQ(difference(part, want[i]), "") << "sheet " << number;
    EXPECT_EQ(sheet.printed(), want[i].printed()) << "sheet " << number;
  }
  const std::string next = printer.pagePath(first + static_cast<int>(want.size()));
  EXPECT_FALSE(std::filesystem::exists(next)) << next;
}

TEST(QueueOfALabelPrinter, PrintsWhatTheScriptShows) {
  const TemporaryFolder files;
  const std::string raster = files.write("noise.ras", noiseRaster());
  const std::string two = files.write("two.pdf", makePdf({barLabel(3), barLabel(8)}));
  const struct {
    const char* sentence;
    std::string document;
    Words options;
    int copies;
    size_t pages;
    size_t left;  // the middle of the head's 1728 dots, on a whole byte
  } kCases[] = {
      {"a PDF file", example("label.pdf"), {}, 1, 1, 456},
      {"a PNG file", example("label.png"), {}, 1, 1, 456},
      {"a text", example("note.txt"), {}, 1, 1, 456},
      {"raster, two pages of 640 dots", raster, {}, 1, 2, 544},
      {"two pages twice", two, {}, 2, 4, 456},
      {"heat, halftone, mirror and turn on the command line",
       example("label.pdf"),
       {"Darkness=Dark", "HalftoneType=Stucki", "MirrorImage=True", "Origin=Rotation180"},
       1,
       1,
       456},
      {"contrast and brightness",
       example("label.pdf"),
       {"Contrast=40", "Brightness=-20"},
       1,
       1,
       456},
      {"another size, 400 dots wide", example("label.png"), {"PageSize=Custom.50x80mm"}, 1, 1, 664},
  };

  PrivateSpooler spooler;
  ASSERT_FALSE(HasFatalFailure());
  const ListeningPrinter printer(spooler.toolPath("korvel-printer"), {"--speed", "5000"});
  spooler.addQueue("label", "korvel-label-203", printer.port());
  int printed = 0;
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.sentence);
    const int job = spooler.print("label", lpArguments(c.document, c.options, c.copies));
    ASSERT_TRUE(spooler.waitForJob(job, kJobSeconds));
    const std::vector<Picture> want = referencePages(
        c.document, spooler.descriptionPath("korvel-label-203"), c.options, c.copies);
    EXPECT_EQ(want.size(), c.pages);
    const std::string last =
        "sheet " + std::to_string(printed + static_cast<int>(c.pages)) + " out";
    ASSERT_TRUE(printer.waitForEvent(last, kJobSeconds));
    expectPages(printer, printed + 1, want, {c.left, 0});
    printed += static_cast<int>(c.pages);
  }
}

TEST(QueueOfALabelPrinter, MovesTearsAndCutsThePaperAsTold) {
  const std::string kArea = "area offset 456 width 816";
  const std::string kToEdge = "feed mode 3 lines 0";
  const std::string kBack = "feed mode 4 lines 0";
  const std::string kToMarkEdge = "feed mode 5 lines 0";
  const struct {
    const char* sentence;
    Words options;
    Words events;
  } kCases[] = {
      {"nothing to do", {}, {kArea, kArea, kArea}},
      {"torn off after every page, and back again before the next",
       {"PostAction=TearOff", "Occurrence=EveryPage"},
       {kArea, kToEdge, kBack, kArea, kToEdge, kBack, kArea, kToEdge}},
      {"torn off after every page on black marks, brought back before the first as well",
       {"PaperType=LabelMark", "PostAction=TearOff", "Occurrence=EveryPage"},
       {kBack, kArea, kToMarkEdge, kBack, kArea, kToMarkEdge, kBack, kArea, kToMarkEdge}},
      {"torn off after the job",
       {"PostAction=TearOff", "Occurrence=AfterJob"},
       {kArea, kArea, kArea, kToEdge}},
      {"cut after the job",
       {"PostAction=Cut", "Occurrence=AfterJob"},
       {kArea, kArea, kArea, kToEdge, "cut"}},
      {"cut after every page",
       {"PostAction=Cut", "Occurrence=EveryPage"},
       {kArea, kToEdge, "cut", kBack, kArea, kToEdge, "cut", kBack, kArea, kToEdge, "cut"}},
  };

  const TemporaryFolder files;
  const std::string document =
      files.write("three.pdf", makePdf({barLabel(1), barLabel(2), barLabel(3)}));
  PrivateSpooler spooler;
  ASSERT_FALSE(HasFatalFailure());
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.sentence);
    const ListeningPrinter printer(spooler.toolPath("korvel-printer"), {"--speed", "5000"});
    spooler.addQueue("label", "korvel-label-203", printer.port());
    const int job = spooler.print("label", lpArguments(document, c.options, 1));
    ASSERT_TRUE(spooler.waitForJob(job, kJobSeconds));
    ASSERT_TRUE(printer.waitForEvent("sheet 3 out", kJobSeconds));
    ASSERT_TRUE(printer.waitForEvent("disconnected", kJobSeconds));
    EXPECT_EQ(printer.events({"area", "feed mode", "cut"}), c.events);
  }
}

TEST(QueueOfALabelPrinter, PrintsTwoJobsInARow) {
  const TemporaryFolder files;
  const std::string first = files.write("first.pdf", makePdf({barLabel(2)}));
  const std::string second = files.write("second.pdf", makePdf({barLabel(9)}));
  PrivateSpooler spooler;
  ASSERT_FALSE(HasFatalFailure());
  const ListeningPrinter printer(spooler.toolPath("korvel-printer"), {"--speed", "5000"});
  spooler.addQueue("label", "korvel-label-203", printer.port());
  const int one = spooler.print("label", {first});
  const int two = spooler.print("label", {second});
  ASSERT_TRUE(spooler.waitForJob(one, kJobSeconds));
  ASSERT_TRUE(spooler.waitForJob(two, kJobSeconds));
  ASSERT_TRUE(printer.waitForEvent("sheet 2 out", kJobSeconds));
  const std::string description = spooler.descriptionPath("korvel-label-203");
  std::vector<Picture> want = referencePages(first, description, {});
  for (const Picture& page : referencePages(second, description, {})) want.push_back(page);
  ASSERT_EQ(want.size(), 2u);
  EXPECT_NE(difference(want[0], want[1]), "");
  expectPages(printer, 1, want, {456, 0});
}

// The 2362 dots of an A4 sheet with a frame of 24 on either side are centred on the head's 2592, on
// a whole byte, 141 rows after the edge of the paper.
TEST(QueueOfAStencilPrinter, PrintsFramedSheetsOfEveryKindByBothHalftones) {
  const TemporaryFolder files;
  const PdfPage shades = {595.28, 841.89,
                          "0.3 g 120 300 300 300 re f 0.8 g 150 500 300 200 re f 0 G 8 w "
                          "100 100 m 300 700 500 100 500 600 c S"};
  const PdfPage blank = {595.28, 841.89, ""};
  const PdfPage blackAndWhite = {595.28, 841.89, "0 g 100 100 200 600 re f 400 300 50 50 re f"};
  const std::string document = files.write("stencils.pdf", makePdf({shades, blank, blackAndWhite}));

  PrivateSpooler spooler;
  ASSERT_FALSE(HasFatalFailure());
  const ListeningPrinter printer(spooler.toolPath("korvel-printer"),
                                 {"--dpi", "300", "--media", "sheet", "--speed", "5000"});
  spooler.addQueue("stencil", "korvel-stencil-300", printer.port());
  int printed = 0;
  for (const char* halftone : {"Tattoo", "Tattoo_Z4"}) {
    SCOPED_TRACE(halftone);
    const Words options = {std::string("HalftoneType=") + halftone, "AntiWrinkle=2"};
    const int job = spooler.print("stencil", lpArguments(document, options, 1));
    ASSERT_TRUE(spooler.waitForJob(job, kJobSeconds));
    ASSERT_TRUE(printer.waitForEvent("sheet " + std::to_string(printed + 3) + " out", kJobSeconds));
    const std::vector<Picture> want =
        referencePages(document, spooler.descriptionPath("korvel-stencil-300"), options);
    ASSERT_EQ(want.size(), 3u);
    expectPages(printer, printed + 1, want, {88, 141});
    // A blank page is its frame and nothing inside, drawn shapes are there.
    const auto inside = [](const Picture& page) {
      return page.part(300, 300, page.width - 600, page.height - 600).printed();
    };
    EXPECT_GT(want[1].printed(), 0u);
    EXPECT_EQ(inside(want[1]), 0u);
    EXPECT_GT(inside(want[0]), 10000u);
    EXPECT_GT(inside(want[2]), 10000u);
    printed += 3;
  }
}

// Printers that report their status: the filter waits before and after each page.
TEST(QueueOfAReportingPrinter, PrintsWhatTheScriptShows) {
  const TemporaryFolder files;
  const std::string labels = files.write("labels.pdf", makePdf({barLabel(3), barLabel(5)}));
  const std::string sheet = files.write(
      "sheet.pdf", makePdf({{297.64, 419.53, "0.5 g 60 100 150 200 re f 0 g 90 330 100 20 re f"}}));
  const struct {
    const char* sentence;
    const char* description;
    Words printer;
    std::string document;
    Words options;
    size_t pages;
    Place place;
  } kCases[] = {
      {"two labels, each torn off",
       "korvel-k220-203",
       {"--dpi", "203"},
       labels,
       {"PostAction=TearOff", "Occurrence=EveryPage"},
       2,
       {456, 0}},
      // 1181 dots of the head's 2592
      {"a stencil sheet in the model's own halftone",
       "korvel-z4",
       {"--dpi", "300", "--media", "sheet"},
       sheet,
       {"PageSize=Tattoo_A6"},
       1,
       {704, 141}},
  };

  PrivateSpooler spooler;
  ASSERT_FALSE(HasFatalFailure());
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.sentence);
    const ListeningPrinter printer(spooler.toolPath("korvel-printer"), c.printer);
    spooler.addQueue("reporting", c.description, printer.port());
    const int job = spooler.print("reporting", lpArguments(c.document, c.options, 1));
    ASSERT_TRUE(spooler.waitForJob(job, kJobSeconds));
    EXPECT_FALSE(printer.events({"status request -> ready"}).empty());
    EXPECT_TRUE(spooler.reasons("reporting").empty());
    const std::vector<Picture> want =
        referencePages(c.document, spooler.descriptionPath(c.description), c.options);
    EXPECT_EQ(want.size(), c.pages);
    expectPages(printer, 1, want, c.place);
  }
}

}  // namespace
