// What happens when there is no memory: one command, one packet or one page is left out, and the
// rest goes on.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "printer/settings.h"
#include "protocol/job_sequence.h"
#include "protocol/korvel_printer.h"
#include "tests/filter/printer/caught_dumps.h"
#include "tests/support/captured_stderr.h"
#include "tests/support/hex_text.h"
#include "tests/support/memory_stream.h"
#include "tests/support/scarce_memory.h"

namespace {

TEST(ShortMemory, LeavesACommandOutAndItsNote) {
  const MemoryStream stream;
  KorvelPrinter printer;
  printer.getOutputStreams() = {stream.get()};
  for (const int note : {0, 1}) {
    bNeedGoBack = note;
    const ScarceMemory none(13);  // a feed's packet
    printer.FeedPaper(note == 0 ? 3 : 4, 0);
    EXPECT_EQ(bNeedGoBack, note);
  }
  EXPECT_EQ(stream.text(), "");
  {
    const ScarceMemory none(13);
    bNeedGoBack = 0;
    printer.DoFeedCutPaper();
    EXPECT_EQ(hexText(stream.text()), "64 02 00 00 00 00 00 00 00 9B") << "the cut goes on alone";
    EXPECT_EQ(bNeedGoBack, 0);
  }
  const ScarceMemory none(11);  // controls and density
  EXPECT_TRUE(printer.SendPrintSetting());
  const Settings settings{};
  CapturedStderr captured;
  jobSetup(&printer, &settings);
  EXPECT_EQ(captured.text(), "DEBUG: Enter jobSetup\nDEBUG: Exit jobSetup\n");
  EXPECT_EQ(stream.text().size(), 10u);
}

TEST(ShortMemory, TellsTheLengthOfThePacketItCannotBuild) {
  const uint8_t data[] = {1, 2, 3};
  const _ASTRAPV2 record = makePacket(1, 2, data, 3);
  int64_t length = 0;
  const ScarceMemory none(13);
  EXPECT_EQ(RapToArray(&record, &length), nullptr);
  EXPECT_EQ(length, 13);
}

TEST(ShortMemory, SkipsAnImagePacketAndItsRows) {
  const MemoryStream stream;
  KorvelPrinter printer;
  printer.getOutputStreams() = {stream.get()};
  auto rows = hexBytes("01 02 03 04  05 06 07 08  09 0A 0B 0C  0D");
  const ScarceMemory none(14, 2);  // area, first block, then the second one fails and the third
  CapturedStderr quiet;
  printer.SendImage(13, {8, 13}, rows.data());
  quiet.text();
  EXPECT_EQ(hexText(stream.text()), hexLine("64 43 00 04 00 08 05 08 00 00 00 00 00 9B"
                                            "64 03 00 04 00 01 02 03 04 00 00 00 00 9B"
                                            "64 03 00 01 00 0D 00 00 00 00 9B"));
}

struct Page {
  const char* sentence;
  size_t size;
  std::vector<std::string> log;
};

// A page of 3 rows of 71 bytes and pixels: 213 bytes.
const Page kPages[] = {
    {"without the page's first buffer",
     213,
     {"DEBUG:printImage: Start processing image, input width: 71, height: 3, bytes per line: 71",
      "ERROR:printImage: Memory allocation failed, unable to process image, exiting processing",
      "DEBUG:printImage: Image processing completed"}},
    {"without the result buffer",
     426,
     {"DEBUG:printImage: Start processing image, input width: 71, height: 3, bytes per line: 71",
      "DEBUG:printImage: Memory allocated successfully, size: 213 bytes",
      "DEBUG:printImage: Saving original image, file path will be generated based on time",
      "ERROR:printImage: Memory allocation for processing result failed, unable to continue "
      "processing",
      "DEBUG:printImage: Freed the allocated memory, address: (nil)",
      "DEBUG:printImage: Image processing completed"}},
};

TEST(ShortMemory, EndsAPageWithALine) {
  for (const Page& c : kPages) {
    const MemoryStream stream;
    KorvelPrinter printer;
    printer.getOutputStreams() = {stream.get()};
    const std::vector<uint8_t> pixels(213, 255);
    std::string want;
    for (const std::string& line : c.log) want += line + "\n";
    CapturedStderr captured;
    {
      const ScarceMemory none(c.size);
      printer.printImage(pixels.data(), 71, 3, 71);
    }
    EXPECT_EQ(captured.text(), want) << c.sentence;
    EXPECT_EQ(stream.text(), "") << c.sentence;
  }
  takeDumps();
  takeDumpPaths();
}

// An image of 71 by 3 takes 40 bytes of header, 1024 of palette and 3 rows of 72: 1280.
TEST(ShortMemory, EndsAPageWithoutAnImage) {
  struct Case {
    const char* sentence;
    DitherType halftone;
    int grantedBefore;
    const char* line;
  };
  const Case cases[] = {
      {"the grey image", kHalftoneNone, 0, "CRIT:cximage.CreateFromArray with grey failed!\n"},
      {"the stencil's image", kHalftoneTattoo, 1,
       "ERROR:PageProcess: Failed to create a new CxImage from QM dithered data\n"},
  };
  for (const Case& c : cases) {
    const MemoryStream stream;
    KorvelPrinter printer;
    printer.getOutputStreams() = {stream.get()};
    printer.setHalftoneType(c.halftone);
    printer.setNegativePrint(true);
    const std::vector<uint8_t> pixels(213, 255);
    std::vector<uint8_t> result(426);
    CapturedStderr captured;
    int length = -1;
    {
      const ScarceMemory none(1280, c.grantedBefore);
      length = printer.PageProcess(c.halftone, pixels.data(), 71, 71, 3, result.data());
    }
    const std::string log = captured.text();
    EXPECT_EQ(length, 0) << c.sentence;
    EXPECT_TRUE(log.ends_with(c.line)) << c.sentence << "\n" << log;
  }
}

}  // namespace
