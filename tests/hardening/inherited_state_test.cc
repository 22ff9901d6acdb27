// What a filter inherits from the process that starts it: ignored and blocked signals, descriptors
// that do not block, limits. A job runs as it does under the spooler itself.
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include "tests/hardening/hard_job.h"

namespace {

// The filter needs some milliseconds; the rest is for a busy machine.
constexpr double kSoon = 3.0;

const char kSmallPage[] = "8x4 203dpi picture=checker:2";
const char kLargePage[] = "1600x800 203dpi picture=noise:1";

const std::vector<int> kPipeSignals = {SIGPIPE};

struct Inherited {
  const char* sentence;
  std::vector<int> ignored;
  std::vector<int> blocked;
};
const Inherited kDeafToPipes[] = {{"SIGPIPE ignored", kPipeSignals, {}},
                                  {"SIGPIPE blocked", {}, kPipeSignals},
                                  {"both", kPipeSignals, kPipeSignals}};

TEST(InheritedSigpipe, ALabelJobWhosePrinterIsGoneEndsByTheSignal) {
  for (const Inherited& c : kDeafToPipes) {
    SCOPED_TRACE(c.sentence);
    JobPlan plan = labelJob({kLargePage, kLargePage});
    plan.dumpFolder = false;
    plan.ignoredSignals = c.ignored;
    plan.blockedSignals = c.blocked;
    plan.outputClosesAfter = size_t{0};
    JobRunner runner(plan);
    const JobResult& job = runner.finish();
    EXPECT_EQ(job.signal, SIGPIPE) << "status " << job.exitStatus;
    EXPECT_LT(runner.timeToEnd().count(), kSoon * slowness());
    EXPECT_EQ(countOf(job.messages, "INFO: page 2"), 0u);
    std::printf("%s: gone after %.0f ms\n", c.sentence, runner.timeToEnd().count() * 1000);
  }
}

TEST(InheritedSigpipe, TheStatusWaitEndsWithinASecond) {
  for (const Inherited& c : kDeafToPipes) {
    SCOPED_TRACE(c.sentence);
    JobPlan plan = labelJob({kSmallPage});
    plan.ppd = testPpd("label", "K220");
    plan.ignoredSignals = c.ignored;
    plan.blockedSignals = c.blocked;
    JobRunner runner(plan);  // whose side channel stays silent
    ASSERT_TRUE(runner.runUntil([](const JobResult& job) { return shape(job.output) == "S(d)s"; }));
    runner.closeOutput();
    const JobResult& job = runner.finish();
    EXPECT_EQ(job.signal, SIGPIPE) << "status " << job.exitStatus;
    // A step of the wait is a second long, and one is under way.
    EXPECT_LT(runner.timeToEnd().count(), 1.0 + kSoon * slowness());
    std::printf("%s: gone after %.0f ms\n", c.sentence, runner.timeToEnd().count() * 1000);
  }
}

TEST(InheritedSigterm, BlockedOrIgnoredItEndsTheJobAllTheSame) {
  const Inherited kCases[] = {
      {"blocked", {}, {SIGTERM}}, {"ignored", {SIGTERM}, {}}, {"both", {SIGTERM}, {SIGTERM}}};
  for (const Inherited& c : kCases) {
    SCOPED_TRACE(c.sentence);
    JobPlan plan = labelJob({kSmallPage});
    plan.inputStaysOpen = true;
    plan.ignoredSignals = c.ignored;
    plan.blockedSignals = c.blocked;
    JobRunner runner(plan);
    ASSERT_TRUE(runner.runUntilMessage("printImage: Image processing completed"));
    runner.sendSignal(SIGTERM);
    const JobResult& job = runner.finish();
    EXPECT_EQ(job.exitStatus, 1) << "signal " << job.signal;
    EXPECT_LT(runner.timeToEnd().count(), kSoon * slowness());
    std::printf("%s: ended after %.1f ms\n", c.sentence, runner.timeToEnd().count() * 1000);
  }
}

// More lines than a pipe of one page holds, with the reader away until all of it is stuck.
JobPlan chattyJob() {
  JobPlan plan = labelJob(std::vector<std::string>(5, kSmallPage));
  plan.dumpFolder = false;
  plan.messagesPipe = 4096;
  return plan;
}

TEST(NonBlockingMessages, LoseNoLineToASlowReader) {
  const std::string want = maskAddresses(runJob(chattyJob()).messages);
  ASSERT_GT(want.size(), size_t{3} * 4096);
  JobPlan plan = chattyJob();
  plan.nonBlocking = {2};
  plan.messagesStall = true;
  JobRunner runner(plan);
  runner.runFor(0.3 * slowness());
  EXPECT_NE(runner.pid(), -1) << "it waits for its reader";
  runner.stallMessages(false);
  const JobResult& job = runner.finish();
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(maskAddresses(job.messages), want);
}

TEST(NonBlockingOutput, CarriesAllBytesToASlowReader) {
  JobPlan plan = labelJob({kLargePage, kSmallPage, kLargePage});
  plan.dumpFolder = false;
  const std::string want = runJob(plan).output;
  ASSERT_GT(want.size(), size_t{4} * 65536);
  plan.nonBlocking = {1};
  plan.outputStalls = true;
  JobRunner runner(plan);
  runner.runFor(0.5 * slowness());
  EXPECT_NE(runner.pid(), -1) << "it waits for its reader";
  runner.stallOutput(false);
  const JobResult& job = runner.finish();
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_TRUE(job.output == want) << "sizes: have " << job.output.size() << ", want "
                                  << want.size();
}

TEST(NonBlockingInput, IsNotReadInABusyLoop) {
  JobPlan plan = labelJob({kSmallPage});
  plan.nonBlocking = {0};
  plan.inputStaysOpen = true;
  JobRunner runner(plan);
  ASSERT_TRUE(runner.runUntilMessage("printImage: Image processing completed"));
  runner.runFor(1.5 * slowness());
  runner.closeInput();
  const JobResult& job = runner.finish();
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_LT(job.processorSeconds, 0.5 * slowness());
}

// The flag belongs to the open file: whoever shares it can set it again while the job runs.
TEST(NonBlockingAgain, WhileTheJobRunsLosesNothing) {
  JobPlan plan = labelJob({kLargePage, kSmallPage, kLargePage});
  plan.dumpFolder = false;
  const JobResult want = runJob(plan);
  plan.inputStaysOpen = true;
  plan.sharesOutputs = true;
  plan.messagesPipe = 4096;
  const std::string raster = std::move(plan.input);
  plan.input.clear();
  JobRunner runner(plan);
  ASSERT_TRUE(runner.runUntilMessage("settings->Contrast"));
  runner.stopOutputsFromBlocking();
  runner.stallOutput(true);
  runner.stallMessages(true);
  runner.feed(raster);
  runner.runFor(0.5 * slowness());
  EXPECT_NE(runner.pid(), -1) << "it waits for its readers";
  runner.stallOutput(false);
  runner.stallMessages(false);
  ASSERT_TRUE(runner.runUntilMessage("INFO: page 3"));
  runner.closeInput();
  const JobResult& job = runner.finish();
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_TRUE(job.output == want.output)
      << "sizes: have " << job.output.size() << ", want " << want.output.size();
  EXPECT_EQ(maskAddresses(job.messages), maskAddresses(want.messages));
}

TEST(FileSizeLimit, ThePagePrintsAndTheDumpsDoNot) {
  if (underMemcheck()) GTEST_SKIP() << "the checker writes files itself";
  const JobPlan plan = labelJob({"200x300 203dpi picture=noise:2"});
  const JobResult usual = runJob(plan);
  for (const size_t limit : {size_t{0}, size_t{1000}, size_t{20000}}) {
    // The emulator writes a file when a library asks for the processor's features.
    if (limit == 0 && underEmulator()) continue;
    SCOPED_TRACE(limit);
    JobPlan limited = plan;
    limited.fileSize = limit;
    const JobResult job = runJob(limited);
    EXPECT_EQ(job.exitStatus, 0) << "signal " << job.signal;
    EXPECT_EQ(hexText(job.output), hexText(usual.output));
    EXPECT_EQ(job.dumps.size(), 0u);
    EXPECT_EQ(
        countOf(job.messages, "\nWARN:saveImage: Unable to write the file /var/spool/cups/tmp"),
        1u);
    EXPECT_EQ(job.pageNote.has_value(), limit != 0);
  }
}

// The loader needs a descriptor to load libraries: two are free when the filter starts, and none
// when it has occupied those of its channels.
TEST(DescriptorLimit, IsNamedWhenThePpdCannotBeOpened) {
  if (underSanitizer() || underMemcheck()) GTEST_SKIP() << "the checker needs descriptors itself";
  JobPlan plan = labelJob({kSmallPage});
  plan.closed = {3, 4};
  plan.descriptors = 5;
  const JobResult job = runJob(plan);
  EXPECT_EQ(job.exitStatus, 1);
  EXPECT_EQ(job.output, "");
  EXPECT_EQ(job.messages, "ERROR:Unable to open the PPD file : Too many open files!\n");
}

TEST(DescriptorLimit, OfOneMoreIsEnough) {
  if (underSanitizer() || underMemcheck()) GTEST_SKIP() << "the checker needs descriptors itself";
  JobPlan plan = labelJob({kSmallPage});
  const JobResult usual = runJob(plan);
  plan.closed = {3, 4};
  plan.descriptors = 6;
  const JobResult job = runJob(plan);
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(hexText(job.output), hexText(usual.output));
  EXPECT_EQ(job.dumps.size(), 2u);
}

}  // namespace
