// The bytes sent around each page, feeds and cuts, and pages that end the job.
// Streams are written byte by byte, or with one letter per packet.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/job/job_text.h"

namespace {

const char kPage[] = "8x4 203dpi picture=checker:2";

// 64 NUL bytes, then print control, density 8 and print control.
std::string pageStart() {
  return std::string(64, '\0') + bytesOf(
                                     "64 0E 40 01 00 00 00 00 00 00 9B"
                                     "64 41 00 01 00 08 00 00 00 00 9B"
                                     "64 0E 40 01 00 01 00 00 00 00 9B");
}

// Control, area (8 dots centred on 1728: offset 856), four rows, control.
std::string smallPage() {
  return bytesOf(
      "64 0E 40 01 00 00 00 00 00 00 9B"
      "64 43 00 04 00 58 03 08 00 00 00 00 00 9B"
      "64 03 00 04 00 33 33 CC CC 00 00 00 00 9B"
      "64 0E 40 01 00 01 00 00 00 00 9B");
}

std::string jobEnd() {
  return bytesOf(
      "64 0E 40 01 00 00 00 00 00 00 9B"
      "64 0E 40 01 00 01 00 00 00 00 9B");
}

TEST(PageLoop, FramesEveryPageInFull) {
  std::string want;
  std::vector<std::string> recipes;
  for (int pages = 1; pages <= 3; ++pages) {
    want += pageStart() + smallPage();
    recipes.push_back(kPage);
    const JobResult job = runJob(labelJob(recipes));
    EXPECT_EQ(job.exitStatus, 0) << pages;
    EXPECT_EQ(hexText(job.output), hexText(want + jobEnd())) << pages;
    EXPECT_EQ(countOf(job.messages, "INFO: page "), static_cast<size_t>(pages));
    EXPECT_NE(job.messages.find("INFO: page " + std::to_string(pages) + "\n"), std::string::npos);
  }
}

TEST(PageLoop, FeedsAndCutsAccordingToActionOccurrenceAndPaper) {
  struct Case {
    const char* options;
    const char* shape;
  };
  // S start, d density, I image, digits feed modes, x cut, parentheses print control.
  const Case kCases[] = {
      {"PostAction=None Occurrence=EveryPage PaperType=LabelGap", "S(d)(I)S(d)(I)()"},
      {"PostAction=None Occurrence=EveryPage PaperType=LabelMark", "S(d)(4I)S(d)(4I)()"},
      {"PostAction=None Occurrence=EveryPage PaperType=Continuous", "S(d)(I)S(d)(I)()"},
      {"PostAction=None Occurrence=AfterJob PaperType=LabelGap", "S(d)(I)S(d)(I)()"},
      {"PostAction=None Occurrence=AfterJob PaperType=LabelMark", "S(d)(4I)S(d)(4I)()"},
      {"PostAction=None Occurrence=AfterJob PaperType=Continuous", "S(d)(I)S(d)(I)()"},
      {"PostAction=TearOff Occurrence=EveryPage PaperType=LabelGap", "S(d)(I3)S(d)(4I3)()"},
      {"PostAction=TearOff Occurrence=EveryPage PaperType=LabelMark", "S(d)(4I5)S(d)(4I5)()"},
      {"PostAction=TearOff Occurrence=EveryPage PaperType=Continuous", "S(d)(I3)S(d)(4I3)()"},
      {"PostAction=TearOff Occurrence=AfterJob PaperType=LabelGap", "S(d)(I)S(d)(I)(3)"},
      {"PostAction=TearOff Occurrence=AfterJob PaperType=LabelMark", "S(d)(4I)S(d)(4I)()"},
      {"PostAction=TearOff Occurrence=AfterJob PaperType=Continuous", "S(d)(I)S(d)(I)(3)"},
      {"PostAction=TearOff Occurrence=Never PaperType=LabelGap", "S(d)(I)S(d)(I)()"},
      {"PostAction=TearOff Occurrence=Never PaperType=LabelMark", "S(d)(4I)S(d)(4I)()"},
      {"PostAction=Cut Occurrence=EveryPage PaperType=LabelGap", "S(d)(I3x)S(d)(4I3x)()"},
      {"PostAction=Cut Occurrence=EveryPage PaperType=LabelMark", "S(d)(4I3x)S(d)(4I3x)()"},
      {"PostAction=Cut Occurrence=EveryPage PaperType=Continuous", "S(d)(I3x)S(d)(4I3x)()"},
      {"PostAction=Cut Occurrence=AfterJob PaperType=LabelGap", "S(d)(I)S(d)(I)(3x)"},
      {"PostAction=Cut Occurrence=AfterJob PaperType=LabelMark", "S(d)(4I)S(d)(4I)(3x)"},
      {"PostAction=Cut Occurrence=AfterJob PaperType=Continuous", "S(d)(I)S(d)(I)(3x)"},
      {"PostAction=Cut Occurrence=Never PaperType=LabelGap", "S(d)(I)S(d)(I)()"},
      {"PostAction=Cut Occurrence=Never PaperType=LabelMark", "S(d)(4I)S(d)(4I)()"},
  };
  for (const Case& c : kCases) {
    const JobResult job = runJob(labelJob({kPage, kPage}, c.options));
    EXPECT_EQ(shape(job.output), c.shape) << c.options;
    EXPECT_EQ(job.exitStatus, 0) << c.options;
  }
}

TEST(PageLoop, FeedAndCutPacketsToTheByte) {
  const JobResult cut = runJob(labelJob({kPage}, "PostAction=Cut Occurrence=AfterJob"));
  EXPECT_EQ(hexText(cut.output), hexText(pageStart() + smallPage() +
                                         bytesOf("64 0E 40 01 00 00 00 00 00 00 9B"
                                                 "64 00 00 03 00 03 00 00 00 00 00 00 9B"
                                                 "64 02 00 00 00 00 00 00 00 9B"
                                                 "64 0E 40 01 00 01 00 00 00 00 9B")));
}

TEST(PageLoop, AStencilPrinterFeedsTwelveMillimetresBeforeTheImage) {
  struct Case {
    const char* page;
    const char* feed;
  };
  const Case kCases[] = {{"8x4 203dpi picture=checker:2", "feed mode 0 lines 95"},
                         {"8x4 300dpi picture=checker:2", "feed mode 0 lines 141"},
                         {"8x4 200dpi picture=checker:2", "feed mode 0 lines 94"}};
  for (const Case& c : kCases) {
    const JobResult job = runJob(stencilJob({c.page, c.page}, "HalftoneType=None"));
    EXPECT_EQ(shape(job.output), "S(d)(0I)S(d)(40I)()") << c.page;
    EXPECT_EQ(countOf(readStream(job.output).text(), c.feed), 2u) << c.page;
  }
}

TEST(PageLoop, DensityFollowsDarkness) {
  struct Case {
    const char* options;
    const char* line;
  };
  const Case kCases[] = {{"Darkness=Light", "density 1"},
                         {"Darkness=Middle", "density 8"},
                         {"Darkness=Dark", "density 15"}};
  for (const Case& c : kCases) {
    const JobResult job = runJob(labelJob({kPage}, c.options));
    EXPECT_EQ(readStream(job.output).lines.at(2), c.line) << c.options;
  }
}

TEST(PageLoop, TheAreaIsCentredOnAByteBoundary) {
  struct Case {
    const char* page;
    const char* area;
  };
  const Case kCases[] = {
      {"1000x4 203dpi", "area offset 360 width 1000"},
      {"1000x4 300dpi", "area offset 792 width 1000"},
      {"1000x4 200dpi", "area offset 792 width 1000"},
      {"1727x4 203dpi", "area offset 0 width 1728"},
      {"1711x4 203dpi", "area offset 8 width 1712"},
      {"1728x4 203dpi", "area offset 0 width 1728"},
      {"1800x4 203dpi", "area offset 0 width 1728"},
      {"2592x4 300dpi", "area offset 0 width 2592"},
      {"3000x4 204dpi", "area offset 0 width 2592"},
      {"9x4 300dpi", "area offset 1288 width 16"},  // 12 bytes per row: two bytes of dots
  };
  for (const Case& c : kCases) {
    const JobResult job = runJob(labelJob({c.page}));
    const StreamText stream = readStream(job.output);
    EXPECT_EQ(stream.fault, "") << c.page;
    EXPECT_EQ(countOf(stream.text(), std::string(c.area) + "\n"), 1u)
        << c.page << " want " << c.area << " in\n"
        << stream.text();
  }
}

TEST(PageLoop, BlocksHoldFourRowsAndTheRestFollows) {
  struct Case {
    const char* page;
    std::vector<size_t> blocks;  // bytes
  };
  const Case kCases[] = {{"1000x10 203dpi", {500, 500, 250}},
                         {"1000x8 203dpi", {500, 500}},
                         {"1000x1 203dpi", {125}},
                         {"8x7 203dpi", {4, 3}},
                         {"131080x9 203dpi", {4, 4, 16385}}};  // 65540 keeps its low 16 bits
  for (const Case& c : kCases) {
    const StreamText stream = readStream(runJob(labelJob({c.page})).output);
    ASSERT_EQ(stream.fault, "") << c.page;
    ASSERT_EQ(stream.pictures.size(), 1u) << c.page;
    std::vector<size_t> sizes;
    for (const std::string& block : stream.pictures[0].blocks) sizes.push_back(block.size());
    EXPECT_EQ(sizes, c.blocks) << c.page;
  }
}

TEST(PageLoop, OtherDepthsEndTheJobAfterThePagesBeforeThem) {
  std::string leftOut;
  for (const int bits : {1, 16, 24}) {
    SCOPED_TRACE(bits);
    const std::string odd = "8x4 203dpi bpp=" + std::to_string(bits);
    if (!libraryReads(rasterOf({odd}))) {
      leftOut += "; " + std::to_string(bits) + " bits per pixel";
      continue;
    }
    const JobResult job = runJob(labelJob({kPage, odd, kPage}));
    EXPECT_EQ(job.exitStatus, 1);
    EXPECT_EQ(hexText(job.output), hexText(pageStart() + smallPage()));
    EXPECT_TRUE(job.messages.ends_with("ERROR:Unsupported bits per pixel : " +
                                       std::to_string(bits) + " ! Requires 8 bits per pixel!\n"))
        << job.messages;
    EXPECT_EQ(countOf(job.messages, "jobEnd"), 0u);
    EXPECT_EQ(countOf(job.messages, "INFO: page"), 1u);
    EXPECT_EQ(countOf(job.messages, "STATE:"), 0u);
  }
  if (!leftOut.empty()) GTEST_SKIP() << kLibraryRefuses << leftOut;
}

TEST(PageLoop, APageCutShortIsDroppedAfterItsSetup) {
  for (const char* cut : {"8x4 203dpi cut=0", "8x4 203dpi cut=31", "8x400 203dpi cut=8"}) {
    SCOPED_TRACE(cut);
    const JobResult job = runJob(labelJob({kPage, cut}));
    EXPECT_EQ(job.exitStatus, 0);
    EXPECT_EQ(hexText(job.output), hexText(pageStart() + smallPage() + pageStart() + jobEnd()));
    EXPECT_EQ(countOf(job.messages, "DEBUG:PAGE: 1 1\n"), 1u);
    EXPECT_EQ(countOf(job.messages, "INFO: page"), 1u);
    EXPECT_TRUE(job.messages.ends_with("STATE: -media-empty-warning\n"));
  }
}

TEST(PageLoop, APageWithoutRowsOrBytesIsTheEndOfTheInput) {
  for (const char* empty : {"8x0 203dpi", "0x8 203dpi"}) {
    SCOPED_TRACE(empty);
    const JobResult job = runJob(labelJob({kPage, empty, kPage}));
    EXPECT_EQ(job.exitStatus, 0);
    EXPECT_EQ(hexText(job.output), hexText(pageStart() + smallPage() + jobEnd()));
    EXPECT_TRUE(job.messages.ends_with("STATE: -media-empty-warning\n"));
  }
}

TEST(PageLoop, PagesThatCannotBeHeldAreRefusedAtOnce) {
  struct Case {
    const char* sentence;
    const char* page;
  };
  const Case kCases[] = {
      {"rows shorter than the width", "100x4 203dpi line=99 cut=0"},
      {"rows much shorter than the width", "4000000000x4 203dpi line=8 cut=0"},
      {"one byte above 256 MiB", "268435457x1 203dpi cut=0"},
      {"one row above 256 MiB", "16384x16385 203dpi cut=0"},
      {"more than 32 bits can count", "65536x65536 203dpi cut=0"},
      {"nothing after 32 bits", "65536x65537 203dpi cut=0"},
  };
  std::string leftOut;
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    if (!libraryReads(rasterOf({c.page}))) {
      leftOut += std::string("; ") + c.sentence;
      continue;
    }
    JobPlan plan = labelJob({kPage, c.page});
    plan.inputStaysOpen = true;  // the header alone must be enough
    plan.timeout = 10;
    const JobResult job = runJob(plan);
    EXPECT_FALSE(job.timedOut);
    EXPECT_EQ(job.exitStatus, 1);
    EXPECT_EQ(hexText(job.output), hexText(pageStart() + smallPage()));
    EXPECT_EQ(countOf(job.messages, "\nERROR:"), 1u) << job.messages;
    EXPECT_TRUE(linesOf(job.messages).back().starts_with("ERROR:"));
    EXPECT_EQ(countOf(job.messages, "jobEnd"), 0u);
  }
  if (!leftOut.empty()) GTEST_SKIP() << kLibraryRefuses << leftOut;
}

TEST(PageLoop, TwoHundredAndFiftySixMebibytesAreAccepted) {
  const JobResult job = runJob(labelJob({"16384x16384 203dpi cut=0"}));
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(hexText(job.output), hexText(pageStart() + jobEnd()));
  EXPECT_EQ(countOf(job.messages, "ERROR"), 0u);
}

TEST(PageLoop, WithoutMemoryForThePixelsTheJobEndsWithoutAMessage) {
  if (underSanitizer() || underMemcheck() || underEmulator()) {
    GTEST_SKIP() << "valgrind or the emulator itself maps more memory than the limit";
  }
  JobPlan plan = labelJob({kPage, "16384x16000 203dpi cut=0"});
  plan.addressSpace = size_t{160} << 20;
  const JobResult job = runJob(plan);
  EXPECT_EQ(job.exitStatus, 1);
  EXPECT_EQ(hexText(job.output), hexText(pageStart() + smallPage()));
  EXPECT_EQ(countOf(job.messages, "ERROR"), 0u);
  EXPECT_EQ(countOf(job.messages, "jobEnd"), 0u);
}

TEST(PageLoop, LogsThePageInMillimetresWhateverTheResolution) {
  struct Case {
    const char* sentence;
    const char* page;
    const char* line;
  };
  const Case cases[] = {
      {"single precision shows", "16x5 203x300dpi", "pageWidth: 2.001971,pageHeight: 0.423333\n"},
      {"no resolution has no end", "16x5 0x300dpi", "pageWidth: inf,pageHeight: 0.423333\n"},
      {"no dots at no resolution, the same on every processor", "0x5 0x300dpi pad=8",
       "pageWidth: -nan,pageHeight: 0.423333\n"},
  };
  std::string leftOut;
  for (const Case& c : cases) {
    const JobPlan plan = labelJob({c.page});
    if (!libraryReads(plan.input)) {
      leftOut += std::string("; ") + c.sentence;
      continue;
    }
    EXPECT_EQ(countOf(runJob(plan).messages, c.line), 1u) << c.sentence;
  }
  if (!leftOut.empty()) GTEST_SKIP() << kLibraryRefuses << leftOut;
}

TEST(PageLoop, LogsTheHeaderBetweenSetupAndPixels) {
  const JobPlan plan = labelJob({"16x5 203x300dpi copies=3 pad=4 picture=checker:1"});
  if (!libraryReads(plan.input)) GTEST_SKIP() << kLibraryRefuses;
  const JobResult job = runJob(plan);
  const std::string want =
      "DEBUG:pageWidth: 2.001971,pageHeight: 0.423333\n"
      "DEBUG: Enter jobSetup\nDEBUG: Exit jobSetup\n"
      "DEBUG:PAGE: 0 3\n\nDEBUG:header.HWResolution[0]:203\n\n"
      "DEBUG:header.HWResolution[1]:300\nDEBUG:header.cupsWidth:16\n"
      "DEBUG:header.cupsHeight:5\nDEBUG:header.cupsMediaType:0\n"
      "DEBUG:header.cupsBitsPerColor:8\nDEBUG:header.cupsBitsPerPixel:8\n"
      "DEBUG:header.cupsBytesPerLine:20\nDEBUG:header.cupsColorOrder:0\n"
      "DEBUG:header.cupsColorSpace:3\nDEBUG:header.cupsCompression:0\n"
      "DEBUG:header.cupsRowCount:0\nDEBUG:header.cupsRowFeed:0\n"
      "DEBUG:header.cupsRowStep:0\nINFO: page 1\n"
      "DEBUG:printImage: Start processing image, input width: 16, height: 5, bytes per line: 20\n";
  EXPECT_NE(job.messages.find(want), std::string::npos) << job.messages;
}

}  // namespace
