// The sequences around pages and job, for every combination of what the settings can say.
// Most combinations send nothing between the two controls.
// SPDX-License-Identifier: Apache-2.0
#include "protocol/job_sequence.h"

#include <gtest/gtest.h>

#include <string>

#include "printer/settings.h"
#include "printer/text.h"
#include "tests/support/captured_stderr.h"
#include "tests/support/hex_text.h"
#include "tests/support/memory_stream.h"

namespace {

TEST(JobSetup, IsThirtyThreeBytes) {
  struct Case {
    int density;
    const char* want;
  };
  const Case cases[] = {
      {0,
       "64 0E 40 01 00 00 00 00 00 00 9B  64 41 00 01 00 00 00 00 00 00 9B"
       "64 0E 40 01 00 01 00 00 00 00 9B"},
      {1,
       "64 0E 40 01 00 00 00 00 00 00 9B  64 41 00 01 00 01 00 00 00 00 9B"
       "64 0E 40 01 00 01 00 00 00 00 9B"},
      {15,
       "64 0E 40 01 00 00 00 00 00 00 9B  64 41 00 01 00 0F 00 00 00 00 9B"
       "64 0E 40 01 00 01 00 00 00 00 9B"},
  };
  for (const Case& c : cases) {
    const MemoryStream stream;
    KorvelPrinter printer;
    printer.getOutputStreams() = {stream.get()};
    printer.setPrintDensity(c.density);
    const Settings settings{};
    CapturedStderr captured;
    jobSetup(&printer, &settings);
    EXPECT_EQ(captured.text(), "DEBUG: Enter jobSetup\nDEBUG: Exit jobSetup\n");
    EXPECT_EQ(stream.text().size(), 33u);
    EXPECT_EQ(hexText(stream.text()), hexLine(c.want)) << "density " << c.density;
  }
}

constexpr const char* kNothing = "";
constexpr const char* kTearOff = "64 00 00 03 00 03 00 00 00 00 00 00 9B";
constexpr const char* kFeedAndCut =
    "64 00 00 03 00 03 00 00 00 00 00 00 9B 64 02 00 00 00 00 00 00 00 9B";

struct Case {
  const char* occurrence;
  const char* postAction;
  const char* paperType;
  const char* between;
};

const Case kCases[] = {
    {"AfterJob", "TearOff", "LabelGaps", kTearOff},
    {"AfterJob", "TearOff", "Continuous", kTearOff},
    {"AfterJob", "TearOff", "", kTearOff},
    {"AfterJob", "TearOff", "labelmark", kTearOff},
    {"AfterJob", "TearOff", "LabelMark2", kTearOff},
    {"AfterJob", "TearOff", "LabelMark", kNothing},
    {"AfterJob", "Cut", "LabelGaps", kFeedAndCut},
    {"AfterJob", "Cut", "LabelMark", kFeedAndCut},
    {"AfterJob", "Cut", "", kFeedAndCut},
    {"AfterJob", "None", "LabelGaps", kNothing},
    {"AfterJob", "None", "LabelMark", kNothing},
    {"AfterJob", "", "LabelGaps", kNothing},
    {"AfterJob", "cut", "LabelGaps", kNothing},
    {"AfterJob", "Tearoff", "LabelGaps", kNothing},
    {"EveryPage", "TearOff", "LabelGaps", kNothing},
    {"EveryPage", "TearOff", "LabelMark", kNothing},
    {"EveryPage", "Cut", "LabelGaps", kNothing},
    {"EveryPage", "Cut", "LabelMark", kNothing},
    {"EveryPage", "None", "LabelGaps", kNothing},
    {"Never", "TearOff", "LabelGaps", kNothing},
    {"Never", "Cut", "LabelMark", kNothing},
    {"afterjob", "Cut", "LabelGaps", kNothing},
    {"", "TearOff", "LabelGaps", kNothing},
    {"", "Cut", "LabelGaps", kNothing},
    {"", "", "", kNothing},
};

TEST(JobEnd, SendsThePostActionOfTheWholeJob) {
  for (const Case& c : kCases) {
    const std::string sentence =
        std::string(c.occurrence) + " / " + c.postAction + " / " + c.paperType;
    Settings settings{};
    pellamStrCpy(settings.Occurrence, c.occurrence, sizeof settings.Occurrence);
    pellamStrCpy(settings.PostAction, c.postAction, sizeof settings.PostAction);
    pellamStrCpy(settings.PaperType, c.paperType, sizeof settings.PaperType);
    const MemoryStream stream;
    KorvelPrinter printer;
    printer.getOutputStreams() = {stream.get()};
    bNeedGoBack = 0;
    CapturedStderr captured;
    jobEnd(&printer, &settings);
    EXPECT_EQ(captured.text(), "DEBUG: Enter jobEnd\nDEBUG: Exit jobEnd\n") << sentence;
    EXPECT_EQ(hexText(stream.text()), hexLine(std::string("64 0E 40 01 00 00 00 00 00 00 9B ") +
                                              c.between + " 64 0E 40 01 00 01 00 00 00 00 9B"))
        << sentence;
    EXPECT_EQ(bNeedGoBack, c.between == kNothing ? 0 : 1) << sentence;
  }
  bNeedGoBack = 0;
}

}  // namespace
