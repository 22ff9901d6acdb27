// A host that starts filters the way newer ones do: SIGPIPE is ignored, standard error and both
// channels do not block, and channels that it does not have are /dev/null. A job behaves as it
// does under the spooler itself.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <signal.h>

#include "tests/job/job_text.h"

namespace {

const std::vector<std::string> kThreePages = {"8x4 203dpi picture=checker:2",
                                              "400x200 203dpi picture=noise:3",
                                              "16x4 203dpi picture=checker:4"};

constexpr int kBackChannel = 3;
constexpr int kSideChannel = 4;

JobPlan underNewerHost(JobPlan plan) {
  plan.ignoredSignals = {SIGPIPE};
  plan.nonBlocking = {STDERR_FILENO, kBackChannel, kSideChannel};
  return plan;
}

JobPlan withoutChannels(JobPlan plan) {
  plan.empty = {kBackChannel, kSideChannel};
  return plan;
}

// Ready before each page, paper out after it.
JobPlan reportingJob() {
  const std::string ready = bytesOf("64 FF 01 08 00 00 00 80 00 00 00 00 00");
  const std::string paperOut = bytesOf("64 FF 01 08 00 00 00 08 00 00 00 00 00");
  JobPlan plan = labelJob(kThreePages, "PostAction=TearOff");
  plan.ppd = testPpd("label", "K220");
  for (size_t page = 0; page < kThreePages.size(); ++page) {
    plan.answers.push_back({1, {ready}, ""});
    plan.answers.push_back({1, {paperOut}, ""});
  }
  return plan;
}

void expectSame(const JobResult& job, const JobResult& usual, size_t pages) {
  EXPECT_EQ(job.exitStatus, 0) << "signal " << job.signal;
  EXPECT_EQ(countOf(job.messages, "INFO: page "), pages);
  EXPECT_EQ(hexText(job.output), hexText(usual.output));
  EXPECT_EQ(maskAddresses(job.messages), maskAddresses(usual.messages));
  EXPECT_EQ(job.dumps, usual.dumps);
  EXPECT_EQ(job.pageNote, usual.pageNote);
}

TEST(NewerFilterHost, PrintsThreePagesWithoutStatus) {
  const JobPlan plan = labelJob(kThreePages, "PostAction=TearOff");
  const JobResult usual = runJob(plan);
  expectSame(runJob(underNewerHost(plan)), usual, 3);
  expectSame(runJob(withoutChannels(underNewerHost(plan))), usual, 3);
}

TEST(NewerFilterHost, PrintsThreePagesWithStatus) {
  const JobResult usual = runJob(reportingJob());
  ASSERT_EQ(shape(usual.output), "S(d)s(I3)sS(d)s(4I3)sS(d)s(4I3)s()") << usual.messages;
  expectSame(runJob(underNewerHost(reportingJob())), usual, 3);
}

TEST(NewerFilterHost, LosesNoLineWhileItIsBusy) {
  const JobPlan plan = labelJob(kThreePages, "PostAction=TearOff");
  const JobResult usual = runJob(plan);
  JobPlan busy = underNewerHost(plan);
  busy.messagesPipe = 4096;
  busy.messagesStall = true;
  JobRunner runner(busy);
  runner.runFor(0.3 * slowness());
  runner.stallMessages(false);
  expectSame(runner.finish(), usual, 3);
}

TEST(NewerFilterHost, EndsAJobWhosePrinterIsGone) {
  JobPlan plan = underNewerHost(labelJob({"1600x1600 203dpi picture=noise:1"}));
  plan.inputStaysOpen = true;
  plan.outputClosesAfter = size_t{4096};
  JobRunner runner(plan);
  const JobResult& job = runner.finish();
  EXPECT_FALSE(job.timedOut);
  EXPECT_EQ(job.signal, SIGPIPE) << "status " << job.exitStatus;
  EXPECT_EQ(countOf(job.messages, "jobEnd"), 0u);
}

}  // namespace
