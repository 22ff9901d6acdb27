// Image dumps must not harm the machine: how much of the disk one job may take, what stays free,
// what happens when jobs meet at one name, and how to turn dumps off.
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>

#include "tests/hardening/hard_job.h"

namespace {

namespace fs = std::filesystem;

const char kPage[] = "8x4 203dpi picture=checker:2";
const char kOrigin[] = "origin_2024-5-7_9_3_41_0.bmp";
const char kDithered[] = "dithered_2024-5-7_9_3_41_1.bmp";
constexpr size_t kMebibyte = size_t{1} << 20;

std::vector<std::string> warningsOf(const JobResult& job) {
  std::vector<std::string> warnings;
  for (const std::string& line : linesOf(job.messages)) {
    if (line.starts_with("WARN:")) warnings.push_back(line);
  }
  return warnings;
}

// The job as it would be without the limit: same bytes, same log but for the warning.
void expectSameJob(const JobResult& job, const JobResult& usual) {
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(hexText(job.output), hexText(usual.output));
  std::string rest;
  for (const std::string& line : linesOf(maskAddresses(job.messages))) {
    if (!line.starts_with("WARN:")) rest += line + "\n";
  }
  EXPECT_EQ(rest, maskAddresses(usual.messages));
}

// A white square page as compressed raster: one line stands for up to 256, one pixel for up to 128.
std::string compressedPage(unsigned side) {
  std::string bytes = headerBytes(plainHeader(side, side));
  for (unsigned row = 0; row < side; row += 256) {
    bytes += static_cast<char>(std::min(256u, side - row) - 1);
    for (unsigned pixel = 0; pixel < side; pixel += 128) {
      bytes += static_cast<char>(std::min(128u, side - pixel) - 1);
      bytes += '\0';
    }
  }
  return bytes;
}

std::string compressedSyncWord() {
  const unsigned word = CUPS_RASTER_SYNCv2;
  return {reinterpret_cast<const char*>(&word), sizeof word};
}

TEST(DumpBudget, IsTwoHundredAndFiftySixMebibytesPerJob) {
  // Dumps of 61 MiB each: four fit, and so do those of the small page at the end.
  constexpr unsigned kSide = 8000;
  JobPlan plan = labelJob({});
  plan.input = compressedSyncWord();
  for (int page = 0; page < 3; ++page) plan.input += compressedPage(kSide);
  plan.input += compressedPage(8);
  plan.timeout = 120;
  const JobResult job = runJob(plan);
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(countOf(job.messages, "INFO: page"), 4u);
  const std::vector<std::string> want = {"WARN:saveImage: No image dumps beyond 256 MiB per job"};
  EXPECT_EQ(warningsOf(job), want) << "one line, although two dumps are missing";
  std::string sizes;
  size_t all = 0;
  for (const auto& [name, bytes] : job.dumps) {
    sizes += name + " " + std::to_string(bytes.size()) + "\n";
    all += bytes.size();
  }
  EXPECT_EQ(sizes,
            "dithered_2024-5-7_9_3_41_1.bmp 64001078\ndithered_2024-5-7_9_3_41_3.bmp 64001078\n"
            "dithered_2024-5-7_9_3_41_7.bmp 1142\norigin_2024-5-7_9_3_41_0.bmp 64001078\n"
            "origin_2024-5-7_9_3_41_2.bmp 64001078\norigin_2024-5-7_9_3_41_6.bmp 1142\n");
  EXPECT_LE(all, 256 * kMebibyte);
}

TEST(DumpReserve, OneGibibyteOrFivePercentStaysFree) {
  struct Case {
    const char* sentence;
    const char* disk;  // MiB free and in all
    bool dumps;
  };
  const Case kCases[] = {
      {"a large disk, half empty", "500000/1000000", true},
      {"1 GiB of a small disk", "1024/10000", true},
      {"less than 1 GiB of a small disk", "1023/10000", false},
      {"5 % of a large disk", "50000/1000000", true},
      {"less than 5 % of a large disk", "49999/1000000", false},
      {"nothing free", "0/1000000", false},
  };
  const JobPlan plan = labelJob({kPage, kPage});
  const JobResult usual = runJob(plan);
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    JobPlan limited = plan;
    limited.environment["KORVEL_SANDBOX_DISK"] = c.disk;
    const JobResult job = runJob(limited);
    expectSameJob(job, usual);
    EXPECT_EQ(job.dumps.size(), c.dumps ? 4u : 0u) << "and no empty file";
    const std::vector<std::string> want = {
        "WARN:saveImage: No image dumps, less than 1 GiB or 5 % of the disk is free"};
    EXPECT_EQ(warningsOf(job), c.dumps ? std::vector<std::string>{} : want);
    EXPECT_TRUE(job.pageNote.has_value());
  }
}

// A job whose filter waits for its raster, and a page for it: the test comes first.
class MeetingJob : public testing::Test {
 protected:
  MeetingJob() : runner_(waiting()) {}

  static JobPlan waiting() {
    JobPlan plan = labelJob({});
    plan.input.clear();
    plan.inputStaysOpen = true;
    plan.environment["KORVEL_SANDBOX_DISK"] = "real";
    return plan;
  }
  const JobResult& print(const std::vector<std::string>& pages) {
    runner_.feed(rasterOf(pages));
    EXPECT_TRUE(runner_.runUntilMessage("INFO: page " + std::to_string(pages.size())));
    runner_.closeInput();
    return runner_.finish();
  }
  bool hasRoomForDumps() const {
    const fs::space_info space = fs::space(runner_.dumpPath(""));
    return space.available >= std::max<uintmax_t>(1 << 30, space.capacity / 20);
  }

  JobRunner runner_;
};

TEST_F(MeetingJob, LeavesAloneWhatAnotherJobIsWriting) {
  if (!hasRoomForDumps()) GTEST_SKIP() << "this disk is almost full";
  const std::string path = runner_.dumpPath(kOrigin);
  std::ofstream(path) << "another job's";
  const int descriptor = open(path.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(flock(descriptor, LOCK_EX | LOCK_NB), 0);
  const JobResult& job = print({kPage, kPage});
  close(descriptor);
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(imageHex(job.output), "33 33 CC CC | 33 33 CC CC");
  EXPECT_EQ(job.dumps.at(kOrigin), "another job's");
  EXPECT_EQ(job.dumps.size(), 4u);
  const std::vector<std::string> want = {
      "WARN:saveImage: Another job is writing the file /var/spool/cups/tmp/" +
      std::string(kOrigin)};
  EXPECT_EQ(warningsOf(job), want);
}

TEST_F(MeetingJob, LeavesTheNoteAloneWhileAnotherWritesIt) {
  std::ofstream(runner_.pageNotePath()) << "another job's";
  const int descriptor = open(runner_.pageNotePath().c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(flock(descriptor, LOCK_EX | LOCK_NB), 0);
  const JobResult& job = print({kPage});
  close(descriptor);
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(job.pageNote.value_or("none"), "another job's");
}

TEST_F(MeetingJob, ReplacesWhatNobodyWritesAnyMore) {
  if (!hasRoomForDumps()) GTEST_SKIP() << "this disk is almost full";
  std::ofstream(runner_.dumpPath(kOrigin)) << std::string(5000, 'x');
  const JobResult& job = print({kPage});
  EXPECT_EQ(job.dumps.at(kOrigin).size(), 1078u + 32);
  EXPECT_EQ(warningsOf(job).size(), 0u);
}

// Twenty jobs of one second: each file has the pixels of one of them, or there is none.
TEST(JobsOfOneSecond, MixNoPixels) {
  constexpr int kJobs = 20;
  constexpr size_t kSide = 1500;
  std::vector<std::unique_ptr<JobRunner>> jobs;
  std::string folder;
  for (int i = 0; i < kJobs; ++i) {
    const std::string level = std::to_string(10 + 10 * i);
    JobPlan plan = labelJob({"1500x1500 203dpi picture=level:" + level});
    plan.byPath = true;
    plan.outputPath = "/dev/null";  // so that none waits for its turn
    plan.environment["KORVEL_SANDBOX"] = folder;
    if (i == 0) plan.environment.clear();
    jobs.push_back(std::make_unique<JobRunner>(plan));
    if (i == 0) folder = fs::path(jobs[0]->pageNotePath()).parent_path();
  }
  size_t refused = 0;
  for (int i = kJobs - 1; i >= 0; --i) {
    const JobResult& job = jobs[static_cast<size_t>(i)]->finish();
    EXPECT_EQ(job.exitStatus, 0);
    for (const std::string& line : warningsOf(job)) {
      EXPECT_TRUE(line.starts_with("WARN:saveImage: Another job is writing the file ")) << line;
      ++refused;
    }
  }
  const std::map<std::string, std::string>& dumps = jobs[0]->result().dumps;
  std::printf("%d jobs, %zu files, %zu refusals\n", kJobs, dumps.size(), refused);
  EXPECT_LE(dumps.size(), 2u);
  ASSERT_EQ(dumps.count(kOrigin), 1u);
  const std::string& origin = dumps.at(kOrigin);
  ASSERT_EQ(origin.size(), 1078 + kSide * kSide);
  EXPECT_EQ(origin.find_first_not_of(origin[1078], 1078), std::string::npos)
      << "pixels of two jobs in one file";
  EXPECT_EQ(dumps.at(kDithered).size(), 1078 + kSide * kSide);
}

// A file system of its own in place of the dump folder.
class SmallDisk : public MeetingJob {
 protected:
  // Mounted after the filter has started, in a name space that both share.
  static bool hasNameSpace() {
    return geteuid() == 0 && unshare(CLONE_NEWNS) == 0 &&
           mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
  }
  bool mountDisk(const char* size) {
    return mount("tmpfs", runner_.dumpPath("").c_str(), "tmpfs", 0,
                 (std::string("size=") + size).c_str()) == 0;
  }
  void TearDown() override { umount2(runner_.dumpPath("").c_str(), MNT_DETACH); }

  static inline const bool mayMount_ = hasNameSpace();
};

TEST_F(SmallDisk, GetsNoDumps) {
  if (!mayMount_ || !mountDisk("512m")) GTEST_SKIP() << "only root can mount";
  const JobResult& job = print({kPage, kPage});
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(imageHex(job.output), "33 33 CC CC | 33 33 CC CC");
  EXPECT_EQ(job.dumps.size(), 0u);
  const std::vector<std::string> want = {
      "WARN:saveImage: No image dumps, less than 1 GiB or 5 % of the disk is free"};
  EXPECT_EQ(warningsOf(job), want);
}

// The guard is made to see a large disk, so that the dump meets the end of the real one.
class FullDisk : public SmallDisk {
 protected:
  FullDisk() {
    JobPlan plan = waiting();
    plan.environment.clear();
    full_ = std::make_unique<JobRunner>(plan);
  }
  std::unique_ptr<JobRunner> full_;
};

TEST_F(FullDisk, GetsNoEmptyAndNoIncompleteFiles) {
  if (!mayMount_) GTEST_SKIP() << "only root can mount";
  const std::string folder = full_->dumpPath("");
  if (mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=64k") != 0) GTEST_SKIP() << "cannot mount";
  // The first page's dumps fit into its sixteen blocks of memory, the second one's do not.
  full_->feed(rasterOf({kPage, "300x300 203dpi picture=noise:1"}));
  ASSERT_TRUE(full_->runUntilMessage("INFO: page 2"));
  full_->closeInput();
  const JobResult job = full_->finish();
  umount2(folder.c_str(), MNT_DETACH);
  EXPECT_EQ(job.exitStatus, 0);
  std::string names;
  for (const auto& [name, bytes] : job.dumps) names += name + "\n";
  EXPECT_EQ(names, std::string(kDithered) + "\n" + kOrigin + "\n");
  const std::vector<std::string> want = {
      "WARN:saveImage: Unable to write the file "
      "/var/spool/cups/tmp/origin_2024-5-7_9_3_41_2.bmp"};
  EXPECT_EQ(warningsOf(job), want);
}

TEST(DumpSwitch, OffLeavesNoFileAndChangesNoByte) {
  const JobPlan plan = labelJob({kPage, kPage});
  const JobResult usual = runJob(plan);
  JobPlan off = plan;
  off.environment["KORVEL_DUMPS"] = "off";
  const JobResult job = runJob(off);
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(hexText(job.output), hexText(usual.output));
  EXPECT_EQ(job.dumps.size(), 0u);
  EXPECT_FALSE(job.pageNote.has_value());
  std::string rest = maskAddresses(job.messages);
  const std::string line = "DEBUG:saveImage: Image dumps are turned off by KORVEL_DUMPS\n";
  const size_t at = rest.find(line);
  ASSERT_NE(at, std::string::npos);
  EXPECT_EQ(rest.erase(at, line.size()), maskAddresses(usual.messages)) << "one line, once";
}

}  // namespace
