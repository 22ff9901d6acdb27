// The commands that are sent around a page: setup, controls, feeds, the image, the post action.
// The page is one row of eight dots at 203 dpi.
// SPDX-License-Identifier: Apache-2.0
#include "driver/page_sequence.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "printer/text.h"
#include "tests/filter/printer/caught_dumps.h"
#include "tests/support/captured_stderr.h"
#include "tests/support/fake_channels.h"
#include "tests/support/hex_text.h"
#include "tests/support/memory_stream.h"

namespace {

const std::string kSetup =
    "64 0E 40 01 00 00 00 00 00 00 9B 64 41 00 01 00 08 00 00 00 00 9B "
    "64 0E 40 01 00 01 00 00 00 00 9B";
const std::string kBegin = "64 0E 40 01 00 00 00 00 00 00 9B ";
const std::string kImage =
    "64 43 00 04 00 58 03 08 00 00 00 00 00 9B 64 03 00 01 00 FF 00 00 00 00 9B ";
const std::string kFinish = "64 0E 40 01 00 01 00 00 00 00 9B";
const std::string kPreFeed = "64 00 00 03 00 00 5F 00 00 00 00 00 9B ";
const std::string kTear = "64 00 00 03 00 03 00 00 00 00 00 00 9B ";
const std::string kBack = "64 00 00 03 00 04 00 00 00 00 00 00 9B ";
const std::string kTearMark = "64 00 00 03 00 05 00 00 00 00 00 00 9B ";
const std::string kCut = "64 02 00 00 00 00 00 00 00 9B ";
const std::string kRequest = "64 10 40 00 00 00 00 00 00 9B ";

// A printer with its page, as the job holds them.
struct PageJob {
  PageJob() {
    header.HWResolution[0] = 203;
    header.HWResolution[1] = 203;
    header.cupsWidth = 8;
    header.cupsHeight = 1;
    header.cupsBytesPerLine = 8;
    settings.Darkness = 8;
    printer.getOutputStreams() = {stream.get()};
    bNeedGoBack = 0;
  }
  ~PageJob() {
    bNeedGoBack = 0;
    takeDumps();
    takeDumpPaths();
  }

  // Both return the log; standard output is captured too.
  std::string start() {
    CapturedStdout caughtOutput;
    CapturedStderr captured;
    startPage(&printer, &settings, &header);
    const std::string log = captured.text();
    output = caughtOutput.text();
    return log;
  }
  std::string print(int32_t page) {
    const std::vector<unsigned char> pixels(8, 255);
    CapturedStderr captured;
    printPage(&printer, settings, header, pixels.data(), page);
    return captured.text();
  }

  MemoryStream stream;
  KorvelPrinter printer;
  Settings settings{};
  cups_page_header2_t header{};
  std::string output;
};

TEST(PageStart, SendsNulsPastTheStreamsAndThenTheSetup) {
  PageJob job;
  EXPECT_EQ(job.start(), "DEBUG: Enter jobSetup\nDEBUG: Exit jobSetup\n");
  EXPECT_EQ(job.output, std::string(64, '\0'));
  EXPECT_EQ(hexText(job.stream.text()), kSetup) << "a copy of the stream has no NUL bytes";

  job.printer.getOutputStreams() = {stdout};
  job.start();
  EXPECT_EQ(job.output.substr(0, 64), std::string(64, '\0'));
  EXPECT_EQ(hexText(job.output.substr(64)), kSetup);
}

TEST(PageStart, HandsEverySettingToThePrinter) {
  PageJob job;
  job.header.HWResolution[0] = 300;
  job.header.HWResolution[1] = 200;
  job.settings.AntiWrinkle = -1;
  job.settings.Brightness = -30;
  job.settings.Contrast = 4000;
  pellamStrCpy(job.settings.PrintSpeed, "5ips", sizeof job.settings.PrintSpeed);
  job.settings.Darkness = 15;
  job.settings.halftoneType = 9;
  job.settings.MirrorImage = -1;
  job.settings.NegativeImage = 2;
  job.settings.Rotate180 = 1;
  job.settings.IsTattooPrinter = 1;
  job.start();
  EXPECT_EQ(job.printer.resolution_, 300);
  EXPECT_EQ(job.printer.settings_, &job.settings);
  EXPECT_EQ(job.printer.getPageHeader(), &job.header);
  EXPECT_EQ(job.printer.getAntiWrinkle(), -1);
  EXPECT_EQ(job.printer.getBrightness(), -30);
  EXPECT_EQ(job.printer.getContrast(), 100);
  EXPECT_EQ(job.printer.getPrintSpeed(), 5);
  EXPECT_EQ(job.printer.getPrintDensity(), 15);
  EXPECT_EQ(job.printer.getHalftoneType(), 9);
  EXPECT_TRUE(job.printer.isMirrorPrint());
  EXPECT_TRUE(job.printer.isNegativePrint());
  EXPECT_TRUE(job.printer.isRotate180Print());
  EXPECT_EQ(job.printer.tattooPrinter_, 1);
  EXPECT_EQ(hexText(job.stream.text()).substr(33 + 15, 2), "0F") << "the density of the setup";

  job.settings = {};
  job.start();
  EXPECT_EQ(job.printer.getPrintSpeed(), 1);
  EXPECT_EQ(job.printer.getPrintDensity(), 0);
  EXPECT_FALSE(job.printer.isMirrorPrint());
  EXPECT_FALSE(job.printer.isNegativePrint());
  EXPECT_FALSE(job.printer.isRotate180Print());
  EXPECT_EQ(job.printer.tattooPrinter_, 0);
}

struct Case {
  const char* sentence;
  const char* occurrence;
  const char* postAction;
  const char* paperType;
  int32_t tattoo;
  std::string first;   // packets of the first page
  std::string second;  // packets of the next page
};

const std::string kPlain = kBegin + kImage + kFinish;
const std::string kMarked = kBegin + kBack + kImage + kFinish;

const Case kCases[] = {
    {"no post action", "", "", "", 0, kPlain, kPlain},
    {"the job's post action is not the page's", "AfterJob", "TearOff", "LabelGaps", 0, kPlain,
     kPlain},
    {"the job's cut is not the page's", "AfterJob", "Cut", "LabelGaps", 0, kPlain, kPlain},
    {"never", "Never", "Cut", "LabelGaps", 0, kPlain, kPlain},
    {"EveryPage in lower case is unknown", "everypage", "Cut", "LabelGaps", 0, kPlain, kPlain},
    {"black-mark media is re-aligned before every page", "", "", "LabelMark", 0, kMarked, kMarked},
    {"tear off every page", "EveryPage", "TearOff", "LabelGaps", 0,
     kBegin + kImage + kTear + kFinish, kBegin + kBack + kImage + kTear + kFinish},
    {"tear off on plain media", "EveryPage", "TearOff", "", 0, kBegin + kImage + kTear + kFinish,
     kBegin + kBack + kImage + kTear + kFinish},
    {"tear off on marks", "EveryPage", "TearOff", "LabelMark", 0,
     kBegin + kBack + kImage + kTearMark + kFinish, kBegin + kBack + kImage + kTearMark + kFinish},
    {"cut every page", "EveryPage", "Cut", "LabelGaps", 0, kBegin + kImage + kTear + kCut + kFinish,
     kBegin + kBack + kImage + kTear + kCut + kFinish},
    {"cut on marks", "EveryPage", "Cut", "LabelMark", 0,
     kBegin + kBack + kImage + kTear + kCut + kFinish,
     kBegin + kBack + kImage + kTear + kCut + kFinish},
    {"an unknown action is ignored", "EveryPage", "Peel", "LabelGaps", 0, kPlain, kPlain},
    {"the feed before a stencil is fed back as well", "", "", "", 1,
     kBegin + kPreFeed + kImage + kFinish, kBegin + kBack + kPreFeed + kImage + kFinish},
};

TEST(PagePrinting, FramesThePageWithFeedsAndActions) {
  for (const Case& c : kCases) {
    PageJob job;
    pellamStrCpy(job.settings.Occurrence, c.occurrence, sizeof job.settings.Occurrence);
    pellamStrCpy(job.settings.PostAction, c.postAction, sizeof job.settings.PostAction);
    pellamStrCpy(job.settings.PaperType, c.paperType, sizeof job.settings.PaperType);
    job.settings.IsTattooPrinter = c.tattoo;
    job.start();
    job.print(0);
    job.start();
    job.print(1);
    EXPECT_EQ(hexText(job.stream.text()),
              hexLine(kSetup + " " + c.first + " " + kSetup + " " + c.second))
        << c.sentence;
  }
}

TEST(PagePrinting, CountsPagesFromOne) {
  PageJob job;
  job.start();
  EXPECT_EQ(job.print(0).substr(0, 13), "INFO: page 1\n");
  EXPECT_EQ(job.print(41).substr(0, 14), "INFO: page 42\n");
}

TEST(PagePrinting, LeavesNothingInTheBuffers) {
  PageJob job;
  job.start();
  job.print(0);
  EXPECT_EQ(hexText(job.stream.text(false)), hexLine(kSetup + " " + kPlain));
}

TEST(PagePrinting, WaitsBeforeAndAfterOnReportingModels) {
  PageJob job;
  pellamStrCpy(job.settings.ModelName, "K220", sizeof job.settings.ModelName);
  job.start();
  FakeChannels channels(
      {{{"64 FF 00 00 00 00 00 80 00 00 00 00 00"}}, {{"64 FF 00 00 00 00 00 08 00 00 00 00 00"}}});
  const std::string log = job.print(0);
  EXPECT_EQ(channels.finish().size(), 2u);
  EXPECT_EQ(hexText(job.stream.text()), hexLine(kSetup + " " + kRequest + kPlain + " " + kRequest));
  const size_t ready = log.find("DEBUG: Exit WaitForPrinterReady: ready to print.\nINFO: page 1\n");
  const size_t printed = log.find("DEBUG:printImage: Image processing completed\n");
  const size_t out = log.find("INFO: Paper out.\n");
  EXPECT_LT(ready, printed) << log;
  EXPECT_LT(printed, out) << log;
  EXPECT_NE(out, std::string::npos) << log;
}

}  // namespace
