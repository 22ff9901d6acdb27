// A job that is terminated: always status 1, quickly, and no finished page is lost.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <signal.h>

#include "tests/job/job_text.h"

namespace {

const char kPage[] = "8x4 203dpi picture=checker:2";

// The filter itself needs less than a tenth of this. The rest allows for a busy machine, on which
// a signalled process may have to wait before it runs.
constexpr double kSoon = 1.0;

// The complete output of one finished small page.
std::string finishedPage() {
  static const std::string whole = runJob(labelJob({kPage})).output;
  return whole.substr(0, whole.size() - 22);  // without the two packets at the end of the job
}

void expectEndedSoon(const JobRunner& runner, const JobResult& job) {
  EXPECT_FALSE(job.timedOut);
  EXPECT_EQ(job.exitStatus, 1);
  EXPECT_EQ(job.signal, 0);
  EXPECT_LT(runner.timeToEnd().count(), kSoon * slowness());
  EXPECT_EQ(countOf(job.messages, "jobEnd"), 0u);
  EXPECT_EQ(countOf(job.messages, "STATE: -media-empty-warning"), 0u);
}

void expectFinishedPages(const JobResult& job, int pages) {
  std::string want;
  for (int i = 0; i < pages; ++i) want += finishedPage();
  EXPECT_EQ(hexText(job.output.substr(0, want.size())), hexText(want));
}

TEST(Termination, BeforeTheFirstByteArrives) {
  JobPlan plan = labelJob({});
  plan.input.clear();
  plan.inputStaysOpen = true;
  JobRunner runner(plan);
  ASSERT_TRUE(runner.runUntilMessage("settings->Contrast:0\n"));
  runner.sendSignal(SIGTERM);
  const JobResult& job = runner.finish();
  expectEndedSoon(runner, job);
  EXPECT_EQ(job.output, "");
}

TEST(Termination, WhileReadingThePixelsOfALaterPage) {
  JobPlan plan = labelJob({kPage, kPage, "8x400 203dpi cut=100"});
  plan.inputStaysOpen = true;
  JobRunner runner(plan);
  ASSERT_TRUE(runner.runUntilMessage("header.cupsHeight:400\n"));
  runner.sendSignal(SIGTERM);
  const JobResult& job = runner.finish();
  expectEndedSoon(runner, job);
  expectFinishedPages(job, 2);
  EXPECT_EQ(countOf(job.messages, "INFO: page"), 2u);
}

TEST(Termination, WhileWaitingForTheNextPage) {
  JobPlan plan = labelJob({kPage});
  plan.inputStaysOpen = true;
  JobRunner runner(plan);
  // A finished page reaches the printer although the job goes on.
  ASSERT_TRUE(runner.runUntil(
      [](const JobResult& job) { return job.output.size() >= finishedPage().size(); }));
  runner.sendSignal(SIGTERM);
  const JobResult& job = runner.finish();
  expectEndedSoon(runner, job);
  EXPECT_EQ(hexText(job.output), hexText(finishedPage()));
}

TEST(Termination, WhileComputing) {
  JobPlan plan = labelJob({kPage, "2400x3600 203dpi picture=noise:1"}, "HalftoneType=Tattoo");
  const JobPlan alone = labelJob({kPage}, "HalftoneType=Tattoo");
  const std::string whole = runJob(alone).output;
  const std::string page = whole.substr(0, whole.size() - 22);
  JobRunner runner(plan);
  ASSERT_TRUE(runner.runUntil([](const JobResult& job) {
    return countOf(job.messages, "PageProcess: Copied pixels to the output buffer") == 2;
  }));
  runner.sendSignal(SIGTERM);
  const JobResult& job = runner.finish();
  expectEndedSoon(runner, job);
  EXPECT_EQ(countOf(job.messages, "PageProcess: Applied QM dithering"), 1u)
      << "the page was finished before the signal arrived";
  EXPECT_EQ(hexText(job.output.substr(0, page.size())), hexText(page));
}

TEST(Termination, WhileThePrinterStalls) {
  JobPlan plan = labelJob({kPage, "1600x1600 203dpi picture=noise:1"});
  plan.outputStalls = true;
  JobRunner runner(plan);
  ASSERT_TRUE(runner.runUntilMessage("SendImage sizel(1600, 1600)"));
  runner.runFor(0.5 * slowness());  // until the pipe is full
  EXPECT_EQ(countOf(runner.result().messages, "doPrintImage: Image sent to the printer."), 1u);
  runner.sendSignal(SIGTERM);
  const JobResult& job = runner.finish();
  expectEndedSoon(runner, job);
  expectFinishedPages(job, 1);
}

TEST(Termination, WhileWaitingForStatus) {
  JobPlan plan = labelJob({kPage});
  plan.ppd = testPpd("label", "K220");
  plan.answers = {{-1, {}, ""}};
  JobRunner runner(plan);
  // The request leaves the process before the answer is awaited.
  ASSERT_TRUE(runner.runUntil([](const JobResult& job) { return shape(job.output) == "S(d)s"; }));
  runner.sendSignal(SIGTERM);
  const JobResult& job = runner.finish();
  expectEndedSoon(runner, job);
  EXPECT_EQ(countOf(job.messages, "INFO: page"), 0u);
}

TEST(Termination, WhileASecondSignalFollowsTheFirst) {
  JobPlan plan = labelJob({kPage});
  plan.inputStaysOpen = true;
  JobRunner runner(plan);
  ASSERT_TRUE(runner.runUntilMessage("INFO: page 1"));
  runner.sendSignal(SIGTERM);
  runner.sendSignal(SIGTERM);
  expectEndedSoon(runner, runner.finish());
}

TEST(BrokenPipe, EndsAFilterWhosePrinterIsGone) {
  JobPlan plan = labelJob({"1600x1600 203dpi picture=noise:1"});
  plan.inputStaysOpen = true;
  JobRunner runner(plan);
  runner.closeOutput();
  const JobResult& job = runner.finish();
  EXPECT_FALSE(job.timedOut);
  EXPECT_EQ(job.signal, SIGPIPE);
  EXPECT_EQ(countOf(job.messages, "jobEnd"), 0u);
}

}  // namespace
