// The diagnostic files of a job: the page's dimensions, and two page dumps per page.
// They must never damage files of other users.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/job/job_text.h"

namespace {

namespace fs = std::filesystem;

const char kPage[] = "8x4 203dpi picture=checker:2";

TEST(PageNote, IsRewrittenForEveryPage) {
  JobPlan plan = labelJob({"100x20 203dpi pad=4"});
  plan.inputStaysOpen = true;
  JobRunner runner(plan);
  const auto note = [&runner] {
    std::ifstream in(runner.pageNotePath());
    return std::string(std::istreambuf_iterator<char>(in), {});
  };
  ASSERT_TRUE(runner.runUntilMessage("printImage: Image processing completed"));
  EXPECT_EQ(note(), "cupsWidth:100, cupsHeight:20, cupsBytesPerLine:104, cupsBitsPerPixel:8\n");
  runner.feed(rasterOf({kPage}).substr(4));
  ASSERT_TRUE(runner.runUntilMessage("INFO: page 2"));
  EXPECT_EQ(note(), "cupsWidth:8, cupsHeight:4, cupsBytesPerLine:8, cupsBitsPerPixel:8\n");
  runner.closeInput();
  EXPECT_EQ(runner.finish().exitStatus, 0);
}

TEST(PageNote, IsWrittenForARefusedPageButNotForAnotherDepth) {
  const JobResult refused = runJob(labelJob({"100x4 203dpi line=99 cut=0"}));
  EXPECT_EQ(refused.pageNote.value_or("none"),
            "cupsWidth:100, cupsHeight:4, cupsBytesPerLine:99, cupsBitsPerPixel:8\n");
  const JobResult otherDepth = runJob(labelJob({"8x4 203dpi bpp=1"}));
  EXPECT_FALSE(otherDepth.pageNote.has_value());
}

// What exists at the path of the dimensions file when the filter starts.
class PageNoteTrap : public testing::Test {
 protected:
  PageNoteTrap() : runner_(waiting()) {}

  static JobPlan waiting() {
    JobPlan plan = labelJob({});
    plan.input.clear();
    plan.inputStaysOpen = true;
    plan.timeout = 20;
    return plan;
  }
  fs::path precious() const { return runner_.pageNotePath() + ".precious"; }
  void makePrecious() const { std::ofstream(precious()) << "precious"; }
  std::string preciousText() const {
    std::ifstream in(precious());
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  void expectAnOrdinaryJob() {
    runner_.feed(rasterOf({kPage}));
    ASSERT_TRUE(runner_.runUntilMessage("INFO: page 1"));
    runner_.closeInput();
    const JobResult& job = runner_.finish();
    EXPECT_FALSE(job.timedOut);
    EXPECT_EQ(job.exitStatus, 0);
    EXPECT_EQ(imageHex(job.output), "33 33 CC CC");
  }

  JobRunner runner_;
};

TEST_F(PageNoteTrap, LinksAreNotFollowed) {
  makePrecious();
  fs::create_symlink(precious(), runner_.pageNotePath());
  expectAnOrdinaryJob();
  EXPECT_EQ(preciousText(), "precious");
}

TEST_F(PageNoteTrap, AFileWithAnotherNameIsNotEmptied) {
  makePrecious();
  fs::create_hard_link(precious(), runner_.pageNotePath());
  expectAnOrdinaryJob();
  EXPECT_EQ(preciousText(), "precious");
}

TEST_F(PageNoteTrap, APipeDoesNotBlock) {
  ASSERT_EQ(mkfifo(runner_.pageNotePath().c_str(), 0600), 0);
  expectAnOrdinaryJob();
  fs::remove(runner_.pageNotePath());
}

TEST_F(PageNoteTrap, AFolderIsLeftAlone) {
  fs::create_directory(runner_.pageNotePath());
  expectAnOrdinaryJob();
}

TEST_F(PageNoteTrap, OthersMayNotReadIt) {
  expectAnOrdinaryJob();
  struct stat found;
  ASSERT_EQ(stat(runner_.pageNotePath().c_str(), &found), 0);
  EXPECT_EQ(found.st_mode & 0777, 0600u);
}

TEST(PageDumps, AreNumberedAcrossPagesAndKinds) {
  const JobResult job = runJob(labelJob({kPage, kPage}));
  std::string names;
  for (const auto& [name, bytes] : job.dumps) names += name + "\n";
  EXPECT_EQ(names,
            "dithered_2024-5-7_9_3_41_1.bmp\ndithered_2024-5-7_9_3_41_3.bmp\n"
            "origin_2024-5-7_9_3_41_0.bmp\norigin_2024-5-7_9_3_41_2.bmp\n");
}

// A grey picture: 1078 bytes precede the pixels, and the palette is a ramp.
void expectDump(const JobResult& job, const std::string& name, const std::string& headerHex,
                const std::string& pixelHex) {
  SCOPED_TRACE(name);
  ASSERT_EQ(job.dumps.count(name), 1u);
  const std::string& bytes = job.dumps.at(name);
  ASSERT_GE(bytes.size(), 1078u);
  EXPECT_EQ(hexText(bytes.substr(0, 54)), headerHex);
  std::string ramp;
  for (int i = 0; i < 256; ++i) {
    const char level = static_cast<char>(i);
    ramp += std::string{level, level, level, '\0'};
  }
  EXPECT_EQ(bytes.substr(54, 1024), ramp);
  EXPECT_EQ(hexText(bytes.substr(1078)), pixelHex);
}

TEST(PageDumps, ContainThePixelsAsInMemory) {
  // 3 x 2 pixels: the header counts rows of 4 (1086 bytes), but only six bytes follow.
  const std::string header =
      "42 4D 3E 04 00 00 00 00 00 00 36 04 00 00 28 00 00 00 03 00 00 00 02 00 00 00 01 00 08 00 "
      "00 00 00 00 08 00 00 00 00 00 00 00 00 00 00 00 00 01 00 00 00 01 00 00";
  const JobResult plain = runJob(labelJob({"3x2 203dpi picture=checker:1"}));
  expectDump(plain, "origin_2024-5-7_9_3_41_0.bmp", header, "00 FF 00 FF 00 FF");
  // The result's rows have a stride of four bytes, the fourth is blank.
  expectDump(plain, "dithered_2024-5-7_9_3_41_1.bmp", header, "00 01 00 00 01 00");

  const JobResult padded = runJob(labelJob({"3x2 203dpi pad=2 picture=checker:1"}));
  expectDump(padded, "origin_2024-5-7_9_3_41_0.bmp", header, "00 FF 00 81 5C FF");

  const JobResult stencil =
      runJob(stencilJob({"3x2 203dpi picture=checker:1"}, "HalftoneType=Tattoo NegativeImage=1"));
  EXPECT_EQ(stencil.dumps.size(), 2u);
}

TEST(PageDumps, AMissingFolderIsReportedAndIgnored) {
  JobPlan plan = labelJob({kPage});
  plan.dumpFolder = false;
  const JobResult job = runJob(plan);
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(imageHex(job.output), "33 33 CC CC");
  for (const char* name : {"origin_2024-5-7_9_3_41_0.bmp", "dithered_2024-5-7_9_3_41_1.bmp"}) {
    EXPECT_EQ(
        countOf(job.messages, std::string("\nPellamPrinter::saveImage: unable to open the file "
                                          "/var/spool/cups/tmp/") +
                                  name + "\n"),
        1u)
        << name;
  }
}

TEST(PageDumps, AreNotWrittenWhenAPageIsNotPrinted) {
  const JobResult job = runJob(labelJob({"8x4 203dpi cut=5"}));
  EXPECT_EQ(job.dumps.size(), 0u);
}

}  // namespace
