// A queue whose printer is in trouble: no paper, open cover, no answer, no connection. The queue
// reports the reason, continues when it is removed, and lets a job be cancelled.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "tests/spooler/documents.h"
#include "tests/spooler/private_spooler.h"
#include "tests/tools/emulator/printer_process.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr double kSeconds = 60;       // for what should take a few
constexpr double kCancelSeconds = 2;  // from the command to a queue that is free again
constexpr char kFilter[] = "rastertokorvel";
constexpr char kNoPaper[] = "media-empty-warning";
constexpr char kCoverOpen[] = "cover-open-warning";

// The queue of a stencil printer that reports its status; small sheets.
class ReportingQueue : public testing::Test {
 protected:
  ReportingQueue()
      : printer_(spooler_.toolPath("korvel-printer"),
                 {"--dpi", "300", "--media", "sheet", "--speed", "1000"}) {
    spooler_.addQueue("m6", "korvel-m6", printer_.port());
  }

  void SetUp() override { ASSERT_FALSE(HasFailure()); }

  int print(int pages, const char* copies = "1") {
    std::vector<PdfPage> all;
    for (int i = 0; i < pages; ++i) {
      all.push_back({297.64, 419.53, "0 g 60 100 " + std::to_string(50 + 20 * i) + " 200 re f"});
    }
    const std::string path = files_.write("sheets.pdf", makePdf(all));
    return spooler_.print("m6", {"-n", copies, "-o", "PageSize=Tattoo_A6", path});
  }
  bool waitForReason(const char* reason, bool set) {
    return waitUntil(kSeconds, [&] { return spooler_.reasons("m6").contains(reason) == set; });
  }
  bool isRunning(const char* program) const { return spooler_.jobPrograms().contains(program); }
  bool isFree() {
    return spooler_.queueState("m6") == IPP_PRINTER_IDLE && spooler_.jobPrograms().empty();
  }
  size_t sheetsOut() const { return printer_.events({"sheet "}).size(); }

  // Cancels, and returns how long the queue takes to be free.
  double secondsToCancel(int job) {
    const Clock::time_point start = Clock::now();
    spooler_.cancel(job);
    EXPECT_TRUE(waitUntil(kSeconds, [this] { return isFree(); }));
    const std::chrono::duration<double> took = Clock::now() - start;
    std::printf("Cancelled and free again after %.3f s.\n", took.count());
    return took.count();
  }

  TemporaryFolder files_;
  PrivateSpooler spooler_;
  ListeningPrinter printer_;
};

TEST_F(ReportingQueue, TellsOfMissingPaperBeforeTheJobAndGoesOnWithNewPaper) {
  printer_.command("out-of-paper");
  const int job = print(1);
  ASSERT_TRUE(waitForReason(kNoPaper, true));
  EXPECT_EQ(printer_.events({"area"}).size(), 0u);  // nothing is sent to an empty printer
  EXPECT_FALSE(spooler_.reasons("m6").contains(kCoverOpen));
  printer_.command("load");
  ASSERT_TRUE(printer_.waitForEvent("area", kSeconds));
  ASSERT_TRUE(spooler_.waitForJob(job, kSeconds));
  ASSERT_TRUE(waitForReason(kNoPaper, false));
  EXPECT_EQ(sheetsOut(), 1u);
}

TEST_F(ReportingQueue, TellsOfPaperThatRunsOutInMidJobAndPrintsTheRest) {
  printer_.command("out-of-paper after 0.5");
  const int job = print(2);
  ASSERT_TRUE(printer_.waitForEvent("out of paper", kSeconds));
  ASSERT_TRUE(waitForReason(kNoPaper, true));
  EXPECT_EQ(sheetsOut(), 0u);
  printer_.command("load");
  ASSERT_TRUE(spooler_.waitForJob(job, kSeconds));
  ASSERT_TRUE(waitForReason(kNoPaper, false));
  EXPECT_EQ(sheetsOut(), 2u);
}

TEST_F(ReportingQueue, TellsOfAnOpenCoverAndGoesOnWhenItIsShut) {
  printer_.command("cover open");
  const int job = print(1);
  ASSERT_TRUE(waitForReason(kCoverOpen, true));
  EXPECT_FALSE(spooler_.reasons("m6").contains(kNoPaper));
  EXPECT_EQ(printer_.events({"area"}).size(), 0u);
  printer_.command("cover close");
  ASSERT_TRUE(waitForReason(kCoverOpen, false));
  ASSERT_TRUE(spooler_.waitForJob(job, kSeconds));
  EXPECT_EQ(sheetsOut(), 1u);
}

TEST_F(ReportingQueue, IsFreeAgainAtOnceWhenAJobOfASilentPrinterIsCancelled) {
  printer_.command("silent");
  const int job = print(1);
  ASSERT_TRUE(printer_.waitForEvent("status request -> silence", kSeconds));
  EXPECT_TRUE(isRunning(kFilter));
  EXPECT_LT(secondsToCancel(job), kCancelSeconds);
  EXPECT_EQ(spooler_.jobState(job), IPP_JOB_CANCELED);

  printer_.command("silent off");
  const int next = print(1);
  ASSERT_TRUE(spooler_.waitForJob(next, kSeconds));
  EXPECT_EQ(sheetsOut(), 1u);
}

TEST_F(ReportingQueue, IsFreeAgainAtOnceWhenAJobWithoutPaperIsCancelled) {
  printer_.command("out-of-paper");
  const int job = print(1);
  ASSERT_TRUE(waitForReason(kNoPaper, true));
  EXPECT_LT(secondsToCancel(job), kCancelSeconds);

  printer_.command("load");
  const int next = print(1);
  ASSERT_TRUE(spooler_.waitForJob(next, kSeconds));
  ASSERT_TRUE(waitForReason(kNoPaper, false));
}

// The backend may go on answering a filter that only asks for the status of a lost printer, so the
// job may stay; it can be cancelled like any other.
TEST_F(ReportingQueue, IsFreeAgainAtOnceWhenAJobOfALostPrinterIsCancelled) {
  printer_.command("disconnect after 20000");
  const int job = print(1);
  ASSERT_TRUE(printer_.waitForEvent("disconnected by the printer", kSeconds));
  ASSERT_TRUE(printer_.waitForEvent("page 1 broken off", kSeconds));
  EXPECT_LT(secondsToCancel(job), kCancelSeconds);

  const int next = print(1);
  ASSERT_TRUE(spooler_.waitForJob(next, kSeconds));
  EXPECT_EQ(printer_.events({"connected"}).size(), 2u);
  EXPECT_EQ(sheetsOut(), 2u);  // the torso, and the whole one
}

TEST_F(ReportingQueue, ItsCheckReportsAJobThatWasPrintedAgain) {
  spooler_.setDefault("m6", "printer-error-policy=retry-current-job");
  const auto check = [this] {
    return run({spooler_.toolPath("korvel-setup"), "--check", "m6"}, kSeconds,
               spooler_.clientEnvironment())
        .output;
  };
  printer_.command("out-of-paper");
  const int job = print(1);
  ASSERT_TRUE(waitForReason(kNoPaper, true));
  EXPECT_EQ(check().find("interrupted"), std::string::npos);
  spooler_.restart();
  printer_.command("load");
  ASSERT_TRUE(spooler_.waitForJob(job, kSeconds));
  EXPECT_NE(check().find("Job 1 was interrupted when the print server stopped, and was printed "
                         "again from its first page; look for labels"),
            std::string::npos)
      << check();
}

// The backend of shared printers ends with its connection; the queue then retries the job.
TEST_F(ReportingQueue, PrintsAJobAgainWhoseConnectionWasLost) {
  spooler_.setDevice("m6", "korvel://127.0.0.1:" + std::to_string(printer_.port()));
  spooler_.setDefault("m6", "printer-error-policy=retry-current-job");
  printer_.command("disconnect after 20000");
  const int job = print(1);
  ASSERT_TRUE(printer_.waitForEvent("disconnected by the printer", kSeconds));
  ASSERT_TRUE(spooler_.waitForJob(job, kSeconds));
  EXPECT_EQ(printer_.events({"connected"}).size(), 2u);
  EXPECT_EQ(sheetsOut(), 2u);  // the torso, and the whole one
}

TEST_F(ReportingQueue, IsFreeAgainAtOnceWhenASharedPrintersJobIsCancelled) {
  spooler_.setDevice("m6", "korvel://127.0.0.1:" + std::to_string(printer_.port()));
  printer_.command("silent");
  const int silent = print(1);
  ASSERT_TRUE(printer_.waitForEvent("status request -> silence", kSeconds));
  EXPECT_LT(secondsToCancel(silent), kCancelSeconds);

  spooler_.setDevice("m6", "korvel://127.0.0.1:9");  // nothing listens there
  const int lost = print(1);
  ASSERT_TRUE(waitUntil(kSeconds, [this] { return isRunning("socket"); }));
  EXPECT_LT(secondsToCancel(lost), kCancelSeconds);
}

// More pages than the connection holds by itself: the filter is still writing.
TEST_F(ReportingQueue, ItsOneWayTwinKeepsNoFilterWhenThePrinterIsLost) {
  spooler_.addQueue("m6", "korvel-m6-oneway", printer_.port());
  printer_.command("disconnect after 20000");
  const int job = print(1, "40");
  ASSERT_TRUE(printer_.waitForEvent("disconnected by the printer", kSeconds));
  ASSERT_TRUE(waitUntil(kSeconds, [this] { return isFree(); }));
  EXPECT_LT(spooler_.jobState(job), IPP_JOB_STOPPED);  // kept, to be tried again
  spooler_.cancel(job);

  const int next = print(1);
  ASSERT_TRUE(spooler_.waitForJob(next, kSeconds));
  ASSERT_TRUE(printer_.waitForEvent("sheet 2 out", kSeconds));
}

}  // namespace
