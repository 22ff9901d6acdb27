// Printers that report their status, over real side and back channels and in real time. An
// attempt takes one or two seconds, so each script is short and no test depends on another.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <signal.h>

#include "tests/job/job_text.h"

namespace {

const char kPage[] = "8x4 203dpi picture=checker:2";

const char kReady[] = "64 FF 01 08 00 00 00 80 00 00 00 00 00";
const char kPaperOut[] = "64 FF 01 08 00 00 00 08 00 00 00 00 00";
const char kReadyButNoPaper[] = "64 FF 01 08 00 00 00 88 00 00 00 00 00";
const char kCoverOpen[] = "64 FF 01 08 00 00 00 01 00 00 00 00 00";

StatusAnswer answer(const std::vector<std::string>& hexReads) {
  StatusAnswer all;
  for (const std::string& hex : hexReads) all.reads.push_back(bytesOf(hex));
  return all;
}

JobPlan reportingJob(const std::string& model, const std::vector<StatusAnswer>& answers) {
  JobPlan plan = labelJob({kPage});
  plan.ppd = testPpd("label", model);
  plan.answers = answers;
  return plan;
}

// The lines of one answered attempt.
std::string attempt(const std::vector<int>& reads, const std::string& hex) {
  std::string text = "DEBUG: cups_sc_status_t = 1\n";
  int total = 0;
  for (const int bytes : reads) {
    text += "DEBUG: cupsBackChannelRead bytes " + std::to_string(bytes) + "\n";
    if (bytes > 0) total += bytes;
  }
  return text + "DEBUG: cupsBackChannelRead Printer Status Data " + std::to_string(total) +
         " bytes - " + hex + (hex.empty() ? "" : " ") + "\n";
}

const char kBefore[] =
    "DEBUG: Enter jobSetup\nDEBUG: Exit jobSetup\nDEBUG: Enter WaitForPrinterReady\n";
const char kPrinting[] =
    "STATE: -media-empty-warning\nINFO: Printing\nSTATE: -cover-open-warning\n";
const char kStarts[] =
    "DEBUG: Exit WaitForPrinterReady: ready to print.\nINFO: page 1\n"
    "DEBUG: Enter WaitForPrinterReady\n";
const char kEmpty[] = "STATE: +media-empty-warning\nINFO: Paper out.\nSTATE: -cover-open-warning\n";
const char kAfter[] = "DEBUG: Enter jobEnd\nDEBUG: Exit jobEnd\nSTATE: -media-empty-warning\n";

// The sheet is out at once: the answer after the page in every ordinary script.
std::string sheetLeaves() { return attempt({13, -1}, kPaperOut) + kEmpty + kAfter; }

void expectJob(const JobPlan& plan, const std::string& messages, const std::string& wantShape) {
  const JobResult job = runJob(plan);
  EXPECT_FALSE(job.timedOut);
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(plainMessages(job.messages), messages);
  EXPECT_EQ(shape(job.output), wantShape);
}

class ReportingModel : public testing::TestWithParam<const char*> {};

TEST_P(ReportingModel, IsAskedBeforeAndAfterThePage) {
  expectJob(reportingJob(GetParam(), {answer({kReady}), answer({kPaperOut})}),
            kBefore + attempt({13, -1}, kReady) + kPrinting + kStarts + sheetLeaves(),
            "S(d)s(I)s()");
}

INSTANTIATE_TEST_SUITE_P(All, ReportingModel, testing::Values("R57", "K220", "M6", "Z4"),
                         [](const auto& model) { return std::string(model.param); });

TEST(StatusWait, NeverAsksAModelWhoseNameOnlyBeginsAlike) {
  for (const char* model : {"K220x", "K22", "k220", "R57 ", "M60", "Z", "L203"}) {
    SCOPED_TRACE(model);
    expectJob(reportingJob(model, {answer({kReady}), answer({kPaperOut})}),
              std::string("DEBUG: Enter jobSetup\nDEBUG: Exit jobSetup\nINFO: page 1\n") + kAfter,
              "S(d)(I)()");
  }
}

TEST(StatusWait, RequestsAreSentAsTheyAre) {
  const JobResult job = runJob(reportingJob("Z4", {answer({kReady}), answer({kPaperOut})}));
  const std::string request = bytesOf("64 10 40 00 00 00 00 00 00 9B");
  EXPECT_EQ(countOf(job.output, request), 2u);
  // After 64 NUL bytes and 33 bytes of setup.
  EXPECT_EQ(hexText(job.output.substr(97, 10)), hexText(request));
}

TEST(StatusWait, WaitsForPaperAlthoughThePrinterIsReady) {
  expectJob(reportingJob("K220", {answer({kReadyButNoPaper}), answer({kReadyButNoPaper}),
                                  answer({kReady}), answer({kPaperOut})}),
            kBefore + attempt({13, -1}, kReadyButNoPaper) + kEmpty +
                attempt({13, -1}, kReadyButNoPaper) + attempt({13, -1}, kReady) + kPrinting +
                kStarts + sheetLeaves(),
            "S(d)sss(I)s()");
}

TEST(StatusWait, ReportsAnOpenCover) {
  expectJob(reportingJob("M6", {answer({kCoverOpen}), answer({kReady}), answer({kPaperOut})}),
            kBefore + attempt({13, -1}, kCoverOpen) +
                "STATE: -media-empty-warning\nINFO: Printing\nSTATE: +cover-open-warning\n" +
                attempt({13, -1}, kReady) + kPrinting + kStarts + sheetLeaves(),
            "S(d)ss(I)s()");
}

TEST(StatusWait, TheSheetIsOutWhateverTheReadyBitSays) {
  expectJob(reportingJob("R57", {answer({kReady}), answer({kReadyButNoPaper})}),
            kBefore + attempt({13, -1}, kReady) + kPrinting + kStarts +
                attempt({13, -1}, kReadyButNoPaper) + kEmpty + kAfter,
            "S(d)s(I)s()");
}

TEST(StatusWait, AReplyOfZeroReportsNothing) {
  const char kNothing[] = "64 FF 00 00 00 00 00 00 00 00 00 00 00";
  expectJob(reportingJob("R57", {answer({kNothing}), answer({kReady}), answer({kPaperOut})}),
            kBefore + attempt({13, -1}, kNothing) + attempt({13, -1}, kReady) + kPrinting +
                kStarts + sheetLeaves(),
            "S(d)ss(I)s()");
}

TEST(StatusWait, GarbageIsShownAndIgnored) {
  const char kGarbage[] = "64 FE 01 08 00 00 00 80 00 00 00 00 00";
  expectJob(reportingJob("K220", {answer({kGarbage}), answer({kReady}), answer({kPaperOut})}),
            kBefore + attempt({13, -1}, kGarbage) + attempt({13, -1}, kReady) + kPrinting +
                kStarts + sheetLeaves(),
            "S(d)ss(I)s()");
}

TEST(StatusWait, ASplitReplyIsReassembled) {
  expectJob(reportingJob("Z4", {answer({"64", "FF 01 08 00", "00 00 80 00 00 00 00 00"}),
                                answer({kPaperOut})}),
            kBefore + attempt({1, 4, 8, -1}, kReady) + kPrinting + kStarts + sheetLeaves(),
            "S(d)s(I)s()");
}

TEST(StatusWait, OfTwoConcatenatedRepliesTheFirstCounts) {
  const std::string both = std::string(kReady) + " " + kPaperOut;
  expectJob(reportingJob("M6", {answer({both}), answer({kPaperOut})}),
            kBefore + attempt({26, -1}, both) + kPrinting + kStarts + sheetLeaves(), "S(d)s(I)s()");
}

TEST(StatusWait, AnEmptyAnswerCostsTheAttempt) {
  expectJob(
      reportingJob("K220", {answer({}), answer({kReady}), answer({kPaperOut})}),
      kBefore + attempt({-1}, "") + attempt({13, -1}, kReady) + kPrinting + kStarts + sheetLeaves(),
      "S(d)ss(I)s()");
}

TEST(StatusWait, OtherDrainResultsCostTheAttempt) {
  // 2: the output failed; 7: the backend cannot drain. The back channel is not read.
  expectJob(reportingJob("K220", {{2, {}, ""}, {7, {}, ""}, answer({kReady}), answer({kPaperOut})}),
            std::string(kBefore) + "DEBUG: cups_sc_status_t = 2\nDEBUG: cups_sc_status_t = 7\n" +
                attempt({13, -1}, kReady) + kPrinting + kStarts + sheetLeaves(),
            "S(d)sss(I)s()");
}

TEST(StatusWait, TheRoomForTheAnswerIsNotRenewed) {
  // The first answer is empty and leaves no room: status 6 means that three bytes are too many.
  StatusAnswer wordy = answer({});
  wordy.data = "abc";
  expectJob(
      reportingJob("K220", {answer({kCoverOpen}), wordy, answer({kReady}), answer({kPaperOut})}),
      kBefore + attempt({13, -1}, kCoverOpen) +
          "STATE: -media-empty-warning\nINFO: Printing\nSTATE: +cover-open-warning\n" +
          "DEBUG: cups_sc_status_t = 6\n" + attempt({13, -1}, kReady) + kPrinting + kStarts +
          sheetLeaves(),
      "S(d)sss(I)s()");
}

TEST(StatusWait, ASilentPrinterIsAskedUntilTheJobIsEnded) {
  JobRunner runner(reportingJob("R57", {}));
  ASSERT_TRUE(runner.runUntilMessage("DEBUG: cups_sc_status_t = 3\n"));
  runner.runFor(0.3);  // now it sleeps
  runner.sendSignal(SIGTERM);
  const JobResult& job = runner.finish();
  EXPECT_EQ(job.exitStatus, 1);
  EXPECT_LT(runner.timeToEnd().count(), 1.0 * slowness());  // generous, for a busy machine
  EXPECT_EQ(plainMessages(job.messages), std::string(kBefore) + "DEBUG: cups_sc_status_t = 3\n");
  EXPECT_EQ(shape(job.output), "S(d)s");
}

// Runs a job for a while that would wait five minutes for a silent printer.
std::string messagesWithClosed(const std::vector<int>& closed) {
  JobPlan plan = reportingJob("K220", {answer({}), answer({}), answer({}), answer({})});
  plan.byPath = true;  // the file is opened when these descriptors are the lowest free ones
  plan.input = rasterOf({kPage, kPage});  // there is more to read while it waits
  plan.closed = closed;
  JobRunner runner(plan);
  EXPECT_TRUE(runner.runUntilMessage("DEBUG: cups_sc_status_t"));
  runner.runFor(2.5);
  runner.sendSignal(SIGTERM);
  EXPECT_EQ(runner.finish().exitStatus, 1);
  return runner.result().messages;
}

TEST(StatusWait, WithoutChannelsItDoesNotSpin) {
  const std::string messages = messagesWithClosed({3, 4});
  EXPECT_LE(countOf(messages, "DEBUG: cups_sc_status_t"), 4u) << messages;
  EXPECT_EQ(countOf(messages, "cups_sc_status_t = 1\n"), 0u);
  EXPECT_EQ(countOf(messages, "cupsBackChannelRead"), 0u);
}

TEST(StatusWait, WithoutABackChannelItDoesNotReadTheRaster) {
  const std::string messages = messagesWithClosed({3});
  EXPECT_GE(countOf(messages, "cups_sc_status_t = 1\n"), 1u);
  EXPECT_LE(countOf(messages, "cups_sc_status_t"), 4u);
  EXPECT_EQ(countOf(messages, "cupsBackChannelRead Printer Status Data "),
            countOf(messages, "cupsBackChannelRead Printer Status Data 0 bytes - \n"))
      << messages;
}

TEST(StatusWait, StateIsReportedOnlyWhenItChanges) {
  JobPlan plan = reportingJob("Z4", {answer({kReady}), answer({kReady}), answer({kPaperOut}),
                                     answer({kReady}), answer({kPaperOut})});
  plan.input = rasterOf({kPage, kPage});
  expectJob(plan,
            kBefore + attempt({13, -1}, kReady) + kPrinting + kStarts + attempt({13, -1}, kReady) +
                attempt({13, -1}, kPaperOut) + kEmpty + kBefore + attempt({13, -1}, kReady) +
                kPrinting +
                "DEBUG: Exit WaitForPrinterReady: ready to print.\nINFO: page 2\n"
                "DEBUG: Enter WaitForPrinterReady\n" +
                sheetLeaves(),
            "S(d)s(I)ssS(d)s(I)s()");
}

}  // namespace
