// The real filter against a printer that never stops talking, and against channels that go away in
// the middle of its wait.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <signal.h>

#include "tests/hardening/hard_job.h"

namespace {

JobPlan reportingJob(int answers) {
  JobPlan plan = labelJob({"8x4 203dpi picture=checker:2"});
  plan.ppd = testPpd("label", "K220");
  for (int i = 0; i < answers; ++i) plan.answers.push_back({1, {}, ""});
  return plan;
}

TEST(BackChannelStorm, CostsAttemptsAndNothingElse) {
  JobPlan plan = reportingJob(10);
  plan.storm = std::string(4096, '\xFF');  // a pipe full every few milliseconds
  JobRunner runner(plan);
  ASSERT_TRUE(runner.runUntilMessage("Printer Status Data"));
  runner.runFor(2.2);
  runner.sendSignal(SIGTERM);
  const JobResult& job = runner.finish();
  EXPECT_EQ(job.exitStatus, 1);
  // An attempt takes a second's sleep, and no storm makes it longer or shorter.
  const size_t attempts = countOf(job.messages, "cupsBackChannelRead Printer Status Data 1024 ");
  EXPECT_GE(attempts, 2u);
  EXPECT_LE(attempts, 4u);
  EXPECT_EQ(countOf(job.messages, "cupsBackChannelRead bytes 1024\n"), attempts);
  EXPECT_EQ(countOf(job.messages, "STATE:"), 0u);
  EXPECT_EQ(countOf(job.messages, "INFO:"), 0u);
}

TEST(SideChannelAnswer, OfAStatusWithoutANameCostsTheAttempt) {
  JobPlan plan = reportingJob(0);
  plan.answers = {{99, {}, ""}, {100, {}, ""}};
  JobRunner runner(plan);
  EXPECT_TRUE(runner.runUntilMessage("DEBUG: cups_sc_status_t = 100\n"));
  EXPECT_EQ(countOf(runner.result().messages, "DEBUG: cups_sc_status_t = 99\n"), 1u);
  EXPECT_EQ(countOf(runner.result().messages, "cupsBackChannelRead"), 0u);
  runner.sendSignal(SIGTERM);
  EXPECT_EQ(runner.finish().exitStatus, 1);
}

TEST(SideChannelClosed, EndsTheJobByTheBrokenPipe) {
  JobRunner runner(reportingJob(0));
  ASSERT_TRUE(runner.runUntilMessage("Enter WaitForPrinterReady"));
  runner.closeSideChannel();
  const JobResult& job = runner.finish();
  EXPECT_FALSE(job.timedOut);
  EXPECT_EQ(job.signal, SIGPIPE) << job.messages;
  EXPECT_LE(countOf(job.messages, "cups_sc_status_t"), 2u) << job.messages;
}

}  // namespace
