// Many clients at once: every accepted label is printed exactly once, in the order of its client.
// And two queues of one printer, which never talk to it at the same time. SPDX-License-Identifier:
// Apache-2.0
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "tests/sharing/pages.h"
#include "tests/sharing/phone.h"
#include "tests/sharing/turn_taking.h"
#include "tests/spooler/documents.h"
#include "tests/spooler/private_spooler.h"
#include "tests/tools/emulator/printer_process.h"

namespace {

using Words = std::vector<std::string>;

constexpr double kSeconds = 60;
constexpr int kPerClient = 512;  // numbers on labels: client * 512 + label

const char* const kFormats[] = {"application/pdf", "image/urf", "image/pwg-raster", "image/png"};

// What --share sets, so that a power cut loses nothing that a client was promised.
constexpr char kWritesAtOnce[] =
    "DirtyCleanInterval 0\n"
    "MaxJobs 0\n"
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

class Burst : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(HasFailure());
    waitShortly();
    spooler_.addQueue("labels", "korvel-k220-203", printer_.port());
    spooler_.setDevice("labels", "korvel://127.0.0.1:" + std::to_string(printer_.port()));
    for (const char* option :
         {"PageSize=1x1", "HalftoneType=None", "printer-error-policy=retry-current-job"}) {
      spooler_.setDefault("labels", option);
    }
    size_ = pageSize(spooler_.queueDescription("labels"));
  }

  // The filter looks once a second whether the printer is ready: for hundreds of labels, too
  // seldom. As root, the spooler preloads nothing itself.
  void waitShortly() const {
    const std::string shortWaits = spooler_.file("short_waits.so");
    std::filesystem::copy_file(KORVEL_SHORT_WAITS, shortWaits);
    const std::string filter = spooler_.filterPath();
    std::filesystem::rename(filter, filter + ".real");
    std::ofstream(filter) << "#!/bin/sh\nLD_PRELOAD=" << shortWaits << " exec " << filter
                          << ".real \"$@\"\n";
    chmod(filter.c_str(), 0755);
  }
  // Prints labels one after the other, and each again until it is accepted.
  void client(int number, int labels, std::vector<int>* accepted) {
    const char* format = kFormats[number % 4];
    for (int i = 0; i < labels; ++i) {
      const int label = number * kPerClient + i;
      const std::string file = writePage(numberedPage(size_, label), size_, format,
                                         files_.file("label-" + std::to_string(label)));
      while (!isAccepted(file, format)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
      }
      accepted->push_back(label);
    }
  }
  // A job whose answer is lost with the spooler may have been accepted all the same.
  bool isAccepted(const std::string& file, const char* format) {
    {
      Phone phone(spooler_.address());
      if (!phone.connected()) return false;
      if (phone.print("labels", file, format) != 0) return true;
      ++refused_;
    }
    for (;;) {
      Phone phone(spooler_.address());
      const Words jobs = phone.connected() ? phone.jobs("labels", "all") : Words();
      if (phone.connected() && cupsLastError() <= IPP_STATUS_OK_EVENTS_COMPLETE) {
        return std::find(jobs.begin(), jobs.end(), file) != jobs.end();
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
  }
  // Waits until the spooler has nothing left to print.
  bool waitForAllJobs(double seconds) {
    return waitUntil(seconds, [this] {
      Phone phone(spooler_.address());
      return phone.connected() && phone.jobs("labels", "not-completed").empty() &&
             cupsLastError() <= IPP_STATUS_OK_EVENTS_COMPLETE;
    });
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

  PrivateSpooler spooler_{kWritesAtOnce};
  ListeningPrinter printer_{spooler_.toolPath("korvel-printer"),
                            {"--speed", "5000", "--pages", "--dpi", "203"}};
  TemporaryFolder files_;
  PageSize size_;
  std::vector<std::thread> threads_;
  std::function<void()> trouble_;
  std::atomic<int> refused_ = 0;
};

TEST_F(Burst, FourClientsPrintEachLabelOnceInOrder) {
  const auto accepted = runClients(4, 10);
  expectEachOnceInOrder(accepted, printed(40, 4 * kSeconds));
}

using LongBurst = Burst;

TEST_F(LongBurst, FourClientsPrintFiftyLabelsEach) {
  const auto accepted = runClients(4, 50);
  expectEachOnceInOrder(accepted, printed(200, 20 * kSeconds));
}

// A label that is in work when its job is interrupted is printed again, whole, and before the next.
class Troubled : public Burst {
 protected:
  // Waits for as many sheets, whether whole or torn.
  void waitForSheets(int count) const {
    EXPECT_TRUE(printer_.waitForEvent("sheet " + std::to_string(count) + " out", 10 * kSeconds));
  }
  void expectNothingLost(const std::vector<std::vector<int>>& accepted, size_t interruptions) {
    ASSERT_TRUE(waitForAllJobs(20 * kSeconds));
    std::vector<int> firsts;
    size_t again = 0;
    for (const int number : printed(1, kSeconds)) {
      if (number == -1) continue;  // torn before the number
      if (!firsts.empty() && firsts.back() == number) {
        ++again;
      } else {
        firsts.push_back(number);
      }
    }
    expectEachOnceInOrder(accepted, firsts);
    EXPECT_LE(again, interruptions);
    std::printf("%zu of %zu interrupted labels were printed again.\n", again, interruptions);
  }
};

TEST_F(Troubled, RestartsOfTheSpoolerLoseAndDoubleNothing) {
  trouble_ = [this] {
    for (int i = 1; i <= 2; ++i) {
      waitForSheets(8 * i);
      spooler_.restart();
    }
  };
  const auto accepted = runClients(4, 8);
  expectNothingLost(accepted, 2);
}

using LongTroubled = Troubled;

int labelsInStorm() {
  const char* wanted = std::getenv("KORVEL_STORM_LABELS");
  return wanted == nullptr ? 125 : std::clamp(std::atoi(wanted), 10, kPerClient);
}

// In all: 40 times no paper, 20 lost connections, 10 restarts, 5 kills.
TEST_F(LongTroubled, StormLosesAndDoublesNothing) {
  constexpr int kRounds = 40;
  const int labels = labelsInStorm();
  trouble_ = [this, labels] {
    for (int round = 0; round < kRounds; ++round) {
      waitForSheets(4 * labels / kRounds * round + 1);
      printer_.command("out-of-paper for 0.2 after 0.5");
      if (round % 2 == 0) printer_.command("disconnect after 3000");
      if (round % 4 == 1) spooler_.restart();
      if (round % 8 == 3) spooler_.killAndRestart();
    }
  };
  const auto accepted = runClients(4, labels);
  expectNothingLost(accepted, 20 + 10 + 5);
}

// A small disk of its own for the spool folder.
class SmallDisk {
 public:
  explicit SmallDisk(const std::string& folder) : folder_(folder) {
    mounted_ = unshare(CLONE_NEWNS) == 0 &&
               mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               mount("none", folder.c_str(), "tmpfs", 0, "size=2m,mode=0755") == 0;
    if (!mounted_) return;
    for (const char* name : {"/tmp", "/tmp/dumps"}) {
      mkdir((folder + name).c_str(), 01777);
      chmod((folder + name).c_str(), 01777);
    }
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  ~SmallDisk() {
    if (mounted_) umount2(folder_.c_str(), MNT_DETACH);
  }
  bool mounted() const { return mounted_; }
  void fill() const {
    std::ofstream file(filler());
    const std::string block(4096, 'x');
    while (file << block << std::flush) {
    }
  }
  void clear() const { unlink(filler().c_str()); }

 private:
  std::string filler() const { return folder_ + "/filler"; }

  std::string folder_;
  bool mounted_ = false;
};

TEST_F(Troubled, AFullSpoolFolderRefusesJobsAndLosesNone) {
  const SmallDisk disk(spooler_.file("spool"));
  if (!disk.mounted()) GTEST_SKIP() << "a disk of its own needs root and namespaces";
  spooler_.restart();  // on that disk
  disk.fill();
  trouble_ = [&] {
    EXPECT_TRUE(waitUntil(kSeconds, [this] { return refused_ >= 4; }));
    disk.clear();
  };
  const auto accepted = runClients(4, 8);
  expectNothingLost(accepted, 0);
}

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
