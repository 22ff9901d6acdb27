// Many clients at once: every accepted label is printed exactly once, in the order of its client.
// And two queues of one printer, which never talk to it at the same time. SPDX-License-Identifier:
// Apache-2.0
#include <cups/cups.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/sharing/pages.h"
#include "tests/sharing/turn_taking.h"
#include "tests/spooler/documents.h"
#include "tests/spooler/private_spooler.h"
#include "tests/tools/emulator/printer_process.h"

namespace {

using Words = std::vector<std::string>;

constexpr double kSeconds = 60;
constexpr int kPerClient = 512;  // numbers on labels: client * 512 + label

const char* const kFormats[] = {"application/pdf", "image/urf", "image/pwg-raster", "image/png"};

class Burst : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(HasFailure());
    spooler_.addQueue("labels", "korvel-label-203", printer_.port());
    for (const char* option :
         {"PageSize=2x2", "HalftoneType=None", "printer-error-policy=retry-current-job"}) {
      spooler_.setDefault("labels", option);
    }
    size_ = pageSize(spooler_.queueDescription("labels"));
  }

  // Prints labels one after the other; a label that is refused is tried again, as a client does.
  void client(int number, int labels, std::vector<int>* accepted) {
    const TemporaryFolder files;
    const char* format = kFormats[number % 4];
    for (int i = 0; i < labels; ++i) {
      const korvel::DotCanvas page = numberedPage(size_, number * kPerClient + i);
      const std::string file = writePage(page, size_, format, files.file("page"));
      while (!stop_ && !printOne(file, format)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
      }
      accepted->push_back(number * kPerClient + i);
    }
  }
  bool printOne(const std::string& file, const char* format) {
    http_t* http = httpConnect2(spooler_.address().c_str(), 0, nullptr, AF_LOCAL,
                                HTTP_ENCRYPTION_IF_REQUESTED, 1, 10000, nullptr);
    if (http == nullptr) return false;
    ipp_t* request = ippNewRequest(IPP_OP_PRINT_JOB);
    ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr,
                 "ipp://localhost/printers/labels");
    ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr,
                 "guest");
    ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_MIMETYPE, "document-format", nullptr, format);
    ipp_t* answer = cupsDoFileRequest(http, request, "/printers/labels", file.c_str());
    const bool taken = ippFindAttribute(answer, "job-id", IPP_TAG_INTEGER) != nullptr;
    ippDelete(answer);
    httpClose(http);
    return taken;
  }
  // Starts `clients` and returns their labels, client after client, when all are accepted.
  std::vector<std::vector<int>> runClients(int clients, int labels) {
    std::vector<std::vector<int>> accepted(static_cast<size_t>(clients));
    for (int i = 0; i < clients; ++i) {
      threads_.emplace_back(
          [this, i, labels, list = &accepted[static_cast<size_t>(i)]] { client(i, labels, list); });
    }
    if (trouble_) trouble_();
    for (std::thread& thread : threads_) thread.join();
    threads_.clear();
    return accepted;
  }
  // The labels in the order in which they came out.
  std::vector<int> printed(size_t sheets, double seconds) {
    EXPECT_TRUE(printer_.waitForEvent("sheet " + std::to_string(sheets) + " out", seconds));
    std::vector<int> numbers;
    for (size_t i = 1; i <= printer_.events({"sheet"}).size(); ++i) {
      const Picture page = readPicture(printer_.pagePath(static_cast<int>(i)));
      if (page.width != 0)
        numbers.push_back(
            numberOn(page.part(0, 0, static_cast<size_t>(size_.printWidth), page.height)));
    }
    return numbers;
  }
  void expectEachOnceInOrder(const std::vector<std::vector<int>>& accepted,
                             const std::vector<int>& numbers) {
    std::map<int, std::vector<int>> byClient;
    for (const int number : numbers) byClient[number / kPerClient].push_back(number);
    for (size_t i = 0; i < accepted.size(); ++i) {
      EXPECT_EQ(byClient[static_cast<int>(i)], accepted[i]) << "client " << i;
    }
  }

  PrivateSpooler spooler_;
  ListeningPrinter printer_{spooler_.toolPath("korvel-printer"),
                            {"--speed", "5000", "--pages", "--dpi", "203"}};
  PageSize size_;
  std::vector<std::thread> threads_;
  std::function<void()> trouble_;
  std::atomic<bool> stop_ = false;
};

TEST_F(Burst, FourClientsPrintEachLabelOnceInOrder) {
  const auto accepted = runClients(4, 10);
  expectEachOnceInOrder(accepted, printed(40, 4 * kSeconds));
}

TEST_F(Burst, LongFourClientsPrintFiftyLabelsEach) {
  const auto accepted = runClients(4, 50);
  expectEachOnceInOrder(accepted, printed(200, 20 * kSeconds));
}

TEST_F(Burst, RestartsOfTheSpoolerLoseAndDoubleNothing) {
  trouble_ = [this] {
    for (int i = 0; i < 2; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1500));
      spooler_.restart();
    }
  };
  const auto accepted = runClients(4, 8);
  // The job that a restart interrupts is printed again from its beginning: a label may come twice,
  // none is missing, and each comes first in its order.
  std::vector<int> numbers;
  EXPECT_TRUE(waitUntil(4 * kSeconds, [&] {
    numbers = printed(32, 4 * kSeconds);
    return std::set<int>(numbers.begin(), numbers.end()).size() == 32;
  }));
  std::map<int, int> copies;
  std::vector<int> firsts;
  for (const int number : numbers) {
    if (copies[number]++ == 0) firsts.push_back(number);
  }
  expectEachOnceInOrder(accepted, firsts);
  EXPECT_LE(numbers.size(), 34u);
}

// What --share sets, so that a power cut loses nothing that a client was promised.
constexpr char kWritesAtOnce[] =
    "DirtyCleanInterval 0\n"
    "Listen @SOCKET@\n"
    "Browsing No\n"
    "DefaultAuthType None\n"
    "<Location />\n"
    "  Allow all\n"
    "</Location>\n"
    "<Policy default>\n"
    "  JobPrivateAccess all\n"
    "  JobPrivateValues none\n"
    "  <Limit All>\n"
    "    Order deny,allow\n"
    "  </Limit>\n"
    "</Policy>\n";

TEST(KilledSpooler, KeepsQueuesAndAcceptedJobs) {
  PrivateSpooler spooler(kWritesAtOnce);
  ASSERT_FALSE(testing::Test::HasFailure());
  const TemporaryFolder files;
  const std::string file = files.write("label.pdf", makePdf({barLabel(9)}));
  for (int round = 0; round < 5; ++round) {
    const std::string queue = "labels" + std::to_string(round);
    spooler.addQueue(queue, "korvel-label-203", 9);
    std::vector<int> jobs;
    for (int i = 0; i < 4; ++i) {
      jobs.push_back(spooler.print(queue, {"-o", "job-hold-until=indefinite", file}));
    }
    spooler.killAndRestart();
    for (const int job : jobs) EXPECT_EQ(spooler.jobState(job), IPP_JSTATE_HELD) << round;
    EXPECT_EQ(spooler.queueState(queue), IPP_PSTATE_IDLE) << round;
  }
}

// The most connections that a printer saw at a time while two queues sent to it.
int connectionsAtATime(PrivateSpooler* spooler, const std::string& scheme) {
  const CrowdedPrinter printer;
  const TemporaryFolder files;
  const std::string file = files.write("label.pdf", makePdf(std::vector<PdfPage>(3, barLabel(9))));
  for (const char* queue : {"one", "two"}) {
    spooler->addQueue(queue, "korvel-label-300", printer.port());
    spooler->setDevice(queue, scheme + "://127.0.0.1:" + std::to_string(printer.port()));
  }
  const int first = spooler->print("one", {file});
  const int second = spooler->print("two", {file});
  EXPECT_TRUE(spooler->waitForJob(first, kSeconds));
  EXPECT_TRUE(spooler->waitForJob(second, kSeconds));
  EXPECT_TRUE(waitUntil(kSeconds, [&] { return printer.ended() == 2; }));
  return printer.most();
}

TEST(TwoQueues, TakeTurnsAtOnePrinter) {
  PrivateSpooler spooler;
  ASSERT_FALSE(testing::Test::HasFailure());
  EXPECT_EQ(connectionsAtATime(&spooler, "korvel"), 1);
  // What the address is for: the spooler's own backends do not wait for each other.
  EXPECT_EQ(connectionsAtATime(&spooler, "socket"), 2);
}

}  // namespace
