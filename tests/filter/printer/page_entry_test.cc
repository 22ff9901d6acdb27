// A whole page through the printer object: its log, its dumps, and the data that the model
// receives. Addresses are masked in the log, and held against each other. SPDX-License-Identifier:
// Apache-2.0
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "printer/pellam_printer.h"
#include "tests/filter/printer/caught_dumps.h"
#include "tests/support/captured_stderr.h"
#include "tests/support/hex_text.h"

namespace {

// Keeps what it is given instead of sending it.
class KeepingPrinter : public PellamPrinter {
 public:
  using PellamPrinter::bmpPathFormat_;
  using PellamPrinter::ditheredImage_;
  using PellamPrinter::pimage;

  void doPrintImage(const unsigned char* data, size_t bytesPerLine, size_t height,
                    size_t width) override {
    ++pages;
    given = hexText(data, bytesPerLine * height);
    shape = {bytesPerLine, height, width};
    givenResult = data == pimage->GetBits();
  }

  // Prints a page and returns its log.
  std::string log(const std::vector<uint8_t>& pixels, size_t bytesPerLine, size_t height,
                  size_t width) {
    CapturedStderr captured;
    printImage(pixels.data(), bytesPerLine, height, width);
    return captured.text();
  }

  int pages = 0;
  std::string given;
  std::vector<size_t> shape;
  bool givenResult = false;
};

// Every test starts at dump number 0 and leaves no dumps.
class PageEntry : public testing::Test {
 protected:
  void SetUp() override { page_index = 0; }
  void TearDown() override {
    allowDumps(true);
    takeDumps();
    takeDumpPaths();
  }
};

std::string masked(const std::string& log) {
  const std::string decimal =
      std::regex_replace(log, std::regex("pointer address: [1-9]\\d*,"), "pointer address: N,");
  return std::regex_replace(decimal, std::regex("address: 0x[0-9a-f]+\n"), "address: P\n");
}

using Strings = std::vector<std::string>;

TEST_F(PageEntry, TellsEveryStep) {
  KeepingPrinter printer;
  const std::vector<uint8_t> page(36, 200);
  EXPECT_EQ(
      masked(printer.log(page, 12, 3, 10)),
      "DEBUG:printImage: Start processing image, input width: 10, height: 3, bytes per line: 12\n"
      "DEBUG:printImage: Memory allocated successfully, size: 36 bytes\n"
      "DEBUG:printImage: Saving original image, file path will be generated based on time\n"
      "DEBUG:printImage: Memory for processing result allocated successfully, size: 36 bytes\n"
      "DEBUG:PageProcess: QM dithering is disabled\n"
      "DEBUG:PageProcess: Successfully created CxImage from array with stride 12\n"
      "DEBUG:PageProcess: Applied default dithering and increased bit depth\n"
      "DEBUG:PageProcess: negativePrint_ 0\n"
      "DEBUG:PageProcess: Filled the output buffer with processed pixels, length: 36\n"
      "DEBUG:printImage: Processed image information - pointer address: N, width: 12, height: 3, "
      "bytes per line: 10, number of top blank lines: 0, number of bottom blank lines: 0, "
      "adjusted height: 3\n"
      "DEBUG:printImage: Saving processed image, file path will be generated based on time\n"
      "DEBUG:printImage: Starting to print the processed image\n"
      "DEBUG:printImage: Freed the allocated memory, address: (nil)\n"
      "DEBUG:printImage: Freed the memory for processing result, address: P\n"
      "DEBUG:printImage: Image processing completed\n");
}

TEST_F(PageEntry, GivesTheModelTheResultImageItself) {
  KeepingPrinter printer;
  printer.log(hexBytes("FF 00 FF 00 FF 99  00 FF 00 FF 00 99"), 6, 2, 5);
  EXPECT_EQ(printer.pages, 1);
  EXPECT_TRUE(printer.givenResult);
  EXPECT_EQ(printer.shape, (std::vector<size_t>{8, 2, 5})) << "stride, height, width";
  EXPECT_EQ(printer.given, hexLine("01 00 01 00 01 00 00 00  00 01 00 01 00 00 00 00"));
}

TEST_F(PageEntry, DumpsThePageAndThenTheResult) {
  KeepingPrinter printer;
  printer.log(hexBytes("FF 00 FF 00 FF 99  00 FF 00 FF 00 99"), 6, 2, 5);
  printer.log(hexBytes("FF"), 1, 1, 1);
  EXPECT_EQ(
      takeDumpPaths(),
      (Strings{"/var/spool/cups/tmp/origin_*_0.bmp", "/var/spool/cups/tmp/dithered_*_1.bmp",
               "/var/spool/cups/tmp/origin_*_2.bmp", "/var/spool/cups/tmp/dithered_*_3.bmp"}));
  EXPECT_STREQ(printer.bmpPathFormat_, "/var/spool/cups/tmp/dithered_%d-%d-%d_%d_%d_%d_%ld.bmp");
  const Strings dumps = takeDumps();
  ASSERT_EQ(dumps.size(), 4u);
  // Ten pixels from the start of each buffer, whatever its stride.
  EXPECT_EQ(hexText(dumps[0].substr(18, 8)), "05 00 00 00 02 00 00 00");
  EXPECT_EQ(hexText(dumps[0].substr(1078)), hexLine("FF 00 FF 00 FF 99  00 FF 00 FF"));
  EXPECT_EQ(hexText(dumps[1].substr(18, 8)), "05 00 00 00 02 00 00 00");
  EXPECT_EQ(hexText(dumps[1].substr(1078)), hexLine("01 00 01 00 01 00 00 00  00 01"));
  EXPECT_EQ(hexText(dumps[2].substr(1078)), "FF");
  EXPECT_EQ(hexText(dumps[3].substr(1078)), "01");
}

TEST_F(PageEntry, PrintsThoughNothingCanBeDumped) {
  allowDumps(false);
  KeepingPrinter printer;
  const std::string log = printer.log(hexBytes("FF 00 FF 00"), 4, 1, 4);
  static const std::regex kLine(
      "PellamPrinter::saveImage: unable to open the file /var/spool/cups/tmp/(origin|dithered)_"
      "[-_0-9]+\\.bmp\n");
  EXPECT_EQ(std::distance(std::sregex_iterator(log.begin(), log.end(), kLine), {}), 2) << log;
  EXPECT_EQ(printer.given, "01 00 01 00");
}

// Two hundred rows of 16 bytes and one after them. Ink on row 0, row 10 and row 99.
std::vector<uint8_t> inkedPage() {
  std::vector<uint8_t> page(201 * 16, 0);
  for (const size_t row : {size_t{0}, size_t{10}, size_t{99}}) page[row * 16 + 3] = 255;
  return page;
}

struct Edges {
  const char* sentence;
  unsigned char mask;
  std::vector<std::string> measured;  // lines between the first buffer's and the first dump's
  std::vector<std::string> adjusted;  // lines about the trim
  size_t offset;                      // of the logged pointer from the result's start
};

const Edges kEdges[] = {
    {"nothing is measured unless asked",
     0,
     {},
     {"DEBUG:printImage: Processed image information - pointer address: N, width: 16, height: 200, "
      "bytes per line: 16, number of top blank lines: 0, number of bottom blank lines: 0, adjusted "
      "height: 200"},
     0},
    {"the other bits mean nothing",
     0xF5,
     {},
     {"DEBUG:printImage: Processed image information - pointer address: N, width: 16, height: 200, "
      "bytes per line: 16, number of top blank lines: 0, number of bottom blank lines: 0, adjusted "
      "height: 200"},
     0},
    {"the top alone adjusts nothing",
     0x02,
     {"DEBUG:printImage: Removal of top blank edges detected, number of top blank lines: 9"},
     {"DEBUG:printImage: Processed image information - pointer address: N, width: 16, height: 200, "
      "bytes per line: 16, number of top blank lines: 9, number of bottom blank lines: 0, adjusted "
      "height: 200"},
     0},
    {"the bottom alone keeps the rows up to the last ink",
     0x08,
     {"DEBUG:printImage: Removal of bottom blank edges detected, number of bottom blank lines: "
      "100"},
     {"DEBUG:printImage: Adjusted image height to 100, pointer offset by 0 bytes",
      "DEBUG:printImage: Processed image information - pointer address: N, width: 16, height: 200, "
      "bytes per line: 16, number of top blank lines: 0, number of bottom blank lines: 100, "
      "adjusted height: 100"},
     0},
    {"both, the bottom first",
     0x0A,
     {"DEBUG:printImage: Removal of bottom blank edges detected, number of bottom blank lines: 100",
      "DEBUG:printImage: Removal of top blank edges detected, number of top blank lines: 9"},
     {"DEBUG:printImage: Adjusted image height to 91, pointer offset by 144 bytes",
      "DEBUG:printImage: Processed image information - pointer address: N, width: 16, height: 200, "
      "bytes per line: 16, number of top blank lines: 9, number of bottom blank lines: 100, "
      "adjusted height: 91"},
     144},
};

// The part of a log from one line to another, both included.
std::string between(const std::string& log, const std::string& first, const std::string& last) {
  const size_t from = log.find(first);
  const size_t begin = from == std::string::npos ? from : log.find('\n', from) + 1;
  const size_t end = log.find(last);
  return begin == std::string::npos || end == std::string::npos ? "lines are missing:\n" + log
                                                                : log.substr(begin, end - begin);
}

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

TEST_F(PageEntry, MeasuresBlankEdgesAndTrimsNothing) {
  for (const Edges& c : kEdges) {
    KeepingPrinter printer;
    printer.setRemoveBlankEdges(c.mask);
    const std::string log = printer.log(inkedPage(), 16, 200, 16);
    const std::string lines = masked(log);
    EXPECT_EQ(between(lines, "Memory allocated successfully", "DEBUG:printImage: Saving original"),
              joined(c.measured))
        << c.sentence;
    EXPECT_EQ(between(lines, "Filled the output buffer", "DEBUG:printImage: Saving processed"),
              joined(c.adjusted))
        << c.sentence;
    EXPECT_EQ(printer.shape, (std::vector<size_t>{16, 200, 16})) << c.sentence;

    std::smatch pointer, freed;
    ASSERT_TRUE(std::regex_search(log, pointer, std::regex("pointer address: (\\d+),")));
    ASSERT_TRUE(std::regex_search(log, freed, std::regex("result, address: 0x([0-9a-f]+)\n")));
    EXPECT_EQ(std::stoul(pointer[1]) - std::stoul(freed[1], nullptr, 16), c.offset) << c.sentence;
  }
}

TEST_F(PageEntry, LeavesSkippedPixelsOutOfTheMeasure) {
  KeepingPrinter printer;
  printer.setRemoveBlankEdges(0x0A);
  printer.setSkipRightPixels(13);  // the ink is in column 3, the first that is skipped
  const std::string log = printer.log(inkedPage(), 16, 200, 16);
  EXPECT_EQ(between(log, "Memory allocated successfully", "DEBUG:printImage: Saving original"),
            "DEBUG:printImage: Removal of bottom blank edges detected, number of bottom blank "
            "lines: 0\n"
            "DEBUG:printImage: Removal of top blank edges detected, number of top blank lines: "
            "200\n");
  EXPECT_EQ(log.find("Adjusted image height"), std::string::npos);
}

TEST_F(PageEntry, TakesTheWidthForTheDistanceOfRows) {
  // Two bytes a line of which one is a pixel: rows are measured one byte apart, two bytes long.
  KeepingPrinter printer;
  printer.setRemoveBlankEdges(0x0A);
  const std::string log = printer.log(hexBytes("00 00  00 09  00 00  00 00"), 2, 3, 1);
  EXPECT_EQ(between(log, "Memory allocated successfully", "DEBUG:printImage: Saving original"),
            "DEBUG:printImage: Removal of bottom blank edges detected, number of bottom blank "
            "lines: 3\n"
            "DEBUG:printImage: Removal of top blank edges detected, number of top blank lines: "
            "1\n");
}

constexpr const char* kFailedPage =
    "DEBUG:printImage: Start processing image, input width: 0, height: 2, bytes per line: 8\n"
    "DEBUG:printImage: Memory allocated successfully, size: 16 bytes\n"
    "DEBUG:printImage: Saving original image, file path will be generated based on time\n"
    "DEBUG:printImage: Memory for processing result allocated successfully, size: 16 bytes\n"
    "DEBUG:PageProcess: QM dithering is disabled\n"
    "CRIT:cximage.CreateFromArray with grey failed!\n"
    "DEBUG:printImage: Processed image information - pointer address: N, width: 8, height: 2, "
    "bytes per line: 0, number of top blank lines: 0, number of bottom blank lines: 0, adjusted "
    "height: 2\n"
    "DEBUG:printImage: Saving processed image, file path will be generated based on time\n"
    "DEBUG:printImage: Starting to print the processed image\n"
    "ERROR:printImage: pimage is NULL, unable to print the image\n"
    "DEBUG:printImage: Freed the allocated memory, address: (nil)\n"
    "DEBUG:printImage: Freed the memory for processing result, address: P\n"
    "DEBUG:printImage: Image processing completed\n";

TEST_F(PageEntry, PrintsNothingOfAFirstPageThatFails) {
  KeepingPrinter printer;
  EXPECT_EQ(masked(printer.log(std::vector<uint8_t>(16), 8, 2, 0)), kFailedPage);
  EXPECT_EQ(printer.pages, 0);
  EXPECT_EQ(takeDumpPaths(), Strings{"/var/spool/cups/tmp/origin_*_0.bmp"});
}

TEST_F(PageEntry, PrintsNoFreedImageWhenALaterPageFails) {
  KeepingPrinter printer;
  printer.log(hexBytes("FF 00 FF 00"), 4, 1, 4);
  ASSERT_EQ(printer.pages, 1);
  EXPECT_EQ(masked(printer.log(std::vector<uint8_t>(16), 8, 2, 0)), kFailedPage);
  EXPECT_EQ(printer.pages, 1);
}

TEST_F(PageEntry, PrintsTheFormerStencilAgainWhenAPageFails) {
  KeepingPrinter printer;
  printer.setHalftoneType(kHalftoneTattoo);
  printer.log(hexBytes("FF FF FF FF"), 4, 1, 4);
  ASSERT_EQ(printer.given, "FF FF FF FF");
  printer.given.clear();
  const std::string log = printer.log(std::vector<uint8_t>(16), 8, 2, 0);
  EXPECT_EQ(log.find("pimage is NULL"), std::string::npos);
  EXPECT_EQ(printer.given, "FF FF FF FF");
  EXPECT_EQ(printer.shape, (std::vector<size_t>{4, 1, 4}));
}

TEST_F(PageEntry, OnlyReadsThePage) {
  const auto page = hexBytes("FF 10 80 90 00 FF 20 33");
  for (const int halftone : {0, 3, 8}) {
    KeepingPrinter printer;
    printer.setHalftoneType(static_cast<DitherType>(halftone));
    printer.setBrightness(7);
    printer.setRotate180Print(true);
    printer.setNegativePrint(true);
    printer.log(page, 4, 2, 4);
    EXPECT_EQ(hexText(page), "FF 10 80 90 00 FF 20 33") << halftone;
  }
}

}  // namespace
