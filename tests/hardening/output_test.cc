// Readers of standard output that leave, dawdle or take little at a time. A filter whose printer is
// gone ends soon, by the signal of a broken pipe; a slow reader gets the same bytes.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <signal.h>

#include "tests/hardening/hard_job.h"

namespace {

// It needs some milliseconds; the rest is for a busy machine.
constexpr double kSoon = 3.0;

const char kSmallPage[] = "8x4 203dpi picture=checker:2";
const char kLargePage[] = "1600x800 203dpi picture=noise:1";

void expectGone(const JobRunner& runner, const JobResult& job, double within) {
  EXPECT_FALSE(job.timedOut);
  EXPECT_EQ(job.signal, SIGPIPE) << "status " << job.exitStatus;
  EXPECT_LT(runner.timeToEnd().count(), within * slowness());
  EXPECT_EQ(countOf(job.messages, "jobEnd"), 0u);
}

TEST(LeavingReader, EndsTheFilterWhereverItLeaves) {
  // Larger than a pipe holds, so that something is always left to be written.
  const std::vector<std::string> pages(3, kLargePage);
  for (const size_t bytes : {size_t{0}, size_t{1}, size_t{4096}, size_t{30000}, size_t{170000}}) {
    SCOPED_TRACE(bytes);
    JobPlan plan = labelJob(pages);
    plan.dumpFolder = false;
    plan.outputClosesAfter = bytes;
    JobRunner runner(plan);
    const JobResult& job = runner.finish();
    EXPECT_EQ(job.output.size(), bytes);
    // The first page is computed before anything is written: at 0 that takes its time.
    expectGone(runner, job, kSoon);
  }
}

TEST(LeavingReader, EndsASmallJobAtItsFirstPage) {
  JobPlan plan = labelJob({kSmallPage});
  plan.inputStaysOpen = true;  // the job would go on
  plan.outputClosesAfter = size_t{0};
  JobRunner runner(plan);
  expectGone(runner, runner.finish(), kSoon);
}

// Whatever the wait is at, the connection is looked at once a second.
void expectGoneFromTheWait(const std::vector<StatusAnswer>& answers, double afterSeconds) {
  JobPlan plan = labelJob({kSmallPage});
  plan.ppd = testPpd("label", "K220");
  plan.answers = answers;
  JobRunner runner(plan);
  ASSERT_TRUE(runner.runUntil([](const JobResult& job) { return shape(job.output) == "S(d)s"; }));
  runner.runFor(afterSeconds);
  runner.closeOutput();
  // A step of the wait is a second long, and one is always under way.
  expectGone(runner, runner.finish(), 1.0 + kSoon);
}

TEST(LeavingReader, EndsTheStatusWaitWhileTheDrainIsSilent) { expectGoneFromTheWait({}, 0.1); }

TEST(LeavingReader, EndsTheStatusWaitWhileNoReplyComes) {
  expectGoneFromTheWait({{1, {}, ""}, {1, {}, ""}}, 0.1);
}

TEST(LeavingReader, EndsTheStatusWaitWhileItSleeps) {
  expectGoneFromTheWait({{7, {}, ""}, {7, {}, ""}}, 0.3);
}

TEST(SlowReader, GetsTheSameBytes) {
  JobPlan plan = labelJob({"368x104 203dpi picture=noise:1", kSmallPage});
  const std::string want = runJob(plan).output;
  ASSERT_GT(want.size(), 4096u + 1000u);
  plan.outputPipe = 4096;
  plan.readsByteByByte = true;
  const JobResult job = runJob(plan);
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(hexText(job.output), hexText(want));
}

TEST(SmallPipe, CarriesTheSameBytes) {
  JobPlan plan = labelJob({kLargePage, kSmallPage, kLargePage});
  const std::string want = runJob(plan).output;
  plan.outputPipe = 4096;
  const JobResult job = runJob(plan);
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(job.output == want, true)
      << "sizes: have " << job.output.size() << ", want " << want.size();
}

TEST(FullDevice, EndsTheWaitOfAReportingPrinterToo) {
  JobPlan plan = labelJob({kSmallPage});
  plan.ppd = testPpd("label", "K220");
  plan.answers = {{1, {bytesOf("64 FF 01 08 00 00 00 80 00 00 00 00 00")}, ""},
                  {1, {bytesOf("64 FF 01 08 00 00 00 08 00 00 00 00 00")}, ""}};
  plan.outputPath = "/dev/full";
  const JobResult job = runJob(plan);
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_FALSE(job.timedOut);
}

}  // namespace
