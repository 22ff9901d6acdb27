// The diagnostic files with everything in their way: whatever lies at their names stays as it is,
// and the printer's bytes do not change. SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/hardening/hard_job.h"

namespace {

namespace fs = std::filesystem;

const char kPage[] = "8x4 203dpi picture=checker:2";
const char* const kNames[] = {"origin_2024-5-7_9_3_41_0.bmp", "dithered_2024-5-7_9_3_41_1.bmp"};

std::string textOf(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// A job whose filter has started and waits for its raster, so that the test comes first.
class Obstacle : public testing::Test {
 protected:
  Obstacle() : runner_(waiting()) {}

  static JobPlan waiting() {
    JobPlan plan = labelJob({});
    plan.input.clear();
    plan.inputStaysOpen = true;
    return plan;
  }
  std::string precious(int number) const {
    return runner_.dumpPath("../precious" + std::to_string(number));
  }
  // Calls `place(path, precious file)` for the note and both dumps of the first page.
  template <typename Place>
  void placeAll(const Place& place) {
    int number = 0;
    for (const std::string& path :
         {runner_.pageNotePath(), runner_.dumpPath(kNames[0]), runner_.dumpPath(kNames[1])}) {
      std::ofstream(precious(number)) << "precious";
      place(path, precious(number++));
    }
  }
  void expectAnOrdinaryJob() {
    runner_.feed(rasterOf({kPage}));
    ASSERT_TRUE(runner_.runUntilMessage("INFO: page 1"));
    runner_.closeInput();
    ASSERT_TRUE(runner_.runUntil([this](const JobResult&) { return runner_.pid() == -1; }));
    EXPECT_EQ(runner_.result().exitStatus, 0);
    for (int number = 0; number < 3; ++number) EXPECT_EQ(textOf(precious(number)), "precious");
    EXPECT_EQ(countOf(runner_.result().messages, "saveImage: unable to open the file"), 2u);
  }
  void expectItsDots() { EXPECT_EQ(imageHex(runner_.finish().output), "33 33 CC CC"); }

  JobRunner runner_;
};

TEST_F(Obstacle, SymbolicLinksAreNotFollowed) {
  placeAll(
      [](const std::string& path, const std::string& target) { fs::create_symlink(target, path); });
  expectAnOrdinaryJob();
  expectItsDots();
}

TEST_F(Obstacle, FilesWithAnotherNameAreNotEmptied) {
  placeAll([](const std::string& path, const std::string& target) {
    fs::create_hard_link(target, path);
  });
  expectAnOrdinaryJob();
  expectItsDots();
}

TEST_F(Obstacle, PipesDoNotBlock) {
  placeAll([](const std::string& path, const std::string&) { mkfifo(path.c_str(), 0600); });
  expectAnOrdinaryJob();
  placeAll([](const std::string& path, const std::string&) { fs::remove(path); });  // unreadable
  expectItsDots();
}

TEST_F(Obstacle, FoldersAreLeftAlone) {
  placeAll([](const std::string& path, const std::string&) { fs::create_directory(path); });
  expectAnOrdinaryJob();
  placeAll([](const std::string& path, const std::string&) { fs::remove(path); });
  expectItsDots();
}

TEST_F(Obstacle, AnotherOwnersFilesKeepTheirContent) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a file away";
  placeAll([](const std::string& path, const std::string&) {
    std::ofstream(path) << "somebody else's";
    fs::permissions(path, fs::perms(0666));
    ASSERT_EQ(chown(path.c_str(), 12345, 12345), 0);
  });
  expectAnOrdinaryJob();
  placeAll([](const std::string& path, const std::string&) {
    EXPECT_EQ(textOf(path), "somebody else's");
    struct stat found {};
    EXPECT_EQ(stat(path.c_str(), &found), 0);
    EXPECT_EQ(found.st_uid, 12345u);
  });
  expectItsDots();
}

TEST(DumpFolder, ThatIsReadOnlyOrNobodysIsToldAndForgotten) {
  constexpr unsigned kNobody = 65534;
  JobPlan plan = labelJob({});
  plan.input.clear();
  plan.inputStaysOpen = true;
  if (geteuid() == 0) plan.user = kNobody;  // no folder is read-only to root
  JobRunner runner(plan);
  runner.runFor(0.2 * slowness());
  if (runner.pid() == -1) {
    GTEST_SKIP() << "the build's folders are closed to another user";
  }
  fs::permissions(runner.dumpPath(""), fs::perms(0500));
  runner.feed(rasterOf({kPage}));
  ASSERT_TRUE(runner.runUntilMessage("INFO: page 1"));
  runner.closeInput();
  const JobResult& job = runner.finish();
  fs::permissions(runner.dumpPath(""), fs::perms(0700));
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(imageHex(job.output), "33 33 CC CC");
  EXPECT_EQ(countOf(job.messages, "saveImage: unable to open the file"), 2u) << job.messages;
  EXPECT_EQ(job.dumps.size(), 0u);
}

TEST(DumpFolder, ThatIsFullChangesNoByteAndIsLoggedOnce) {
  if (underSanitizer()) GTEST_SKIP() << "the sanitizer stands in for the same function";
  JobPlan plan = labelJob({kPage, "200x300 203dpi picture=noise:2"});
  const JobResult usual = runJob(plan);
  plan.preloads = {KORVEL_FULL_DISK};
  const JobResult full = runJob(plan);
  EXPECT_EQ(full.exitStatus, 0);
  EXPECT_EQ(hexText(full.output), hexText(usual.output));
  std::string complaints;
  std::string rest;
  for (const std::string& line : linesOf(maskAddresses(full.messages))) {
    (line.starts_with("WARN:") ? complaints : rest) += line + "\n";
  }
  EXPECT_EQ(rest, maskAddresses(usual.messages));
  EXPECT_EQ(complaints, "WARN:saveImage: Unable to write the file /var/spool/cups/tmp/" +
                            std::string(kNames[0]) + "\n");
  EXPECT_EQ(full.dumps.size(), 0u);
  EXPECT_FALSE(full.pageNote.has_value()) << "an empty file would be left";
}

}  // namespace
