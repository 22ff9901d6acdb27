// Jobs of many pages: memory and descriptors stay what they were at the hundredth page.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/hardening/hard_job.h"

namespace {

struct Footprint {
  long residentKilobytes = 0;
  long descriptors = 0;
};

Footprint footprintOf(pid_t process) {
  const std::string folder = "/proc/" + std::to_string(process);
  Footprint now;
  std::ifstream in(folder + "/status");
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with("VmRSS:")) now.residentKilobytes = std::stol(line.substr(6));
  }
  std::error_code none;
  for (const auto& entry : std::filesystem::directory_iterator(folder + "/fd", none)) {
    now.descriptors += entry.path().empty() ? 0 : 1;
  }
  return now;
}

// Serves until a page begins, looking only at what is new of the messages.
bool runUntilPage(JobRunner* runner, int page) {
  const std::string line = "DEBUG:PAGE: " + std::to_string(page) + " ";
  size_t seen = 0;
  return runner->runUntil([&](const JobResult& job) {
    const size_t from = seen < line.size() ? 0 : seen - line.size();
    seen = job.messages.size();
    return job.messages.find(line, from) != std::string::npos;
  });
}

void expectNoGrowth(const std::vector<std::string>& recipes, int pages,
                    const std::string& options) {
  if (underSanitizer() || underMemcheck()) GTEST_SKIP() << "the checker's own memory grows";
  std::vector<std::string> all;
  for (int i = 0; i < pages; ++i) {
    all.push_back(recipes[static_cast<size_t>(i) % recipes.size()]);
  }
  JobPlan plan = stencilJob(all, options);
  plan.inputStaysOpen = true;  // the filter waits for another page while it is looked at
  plan.outputPath = "/dev/null";
  plan.timeout = 600;
  JobRunner runner(plan);
  ASSERT_TRUE(runUntilPage(&runner, 100));
  const Footprint early = footprintOf(runner.pid());
  ASSERT_TRUE(runUntilPage(&runner, pages - 1));
  const Footprint late = footprintOf(runner.pid());
  runner.closeInput();
  ASSERT_TRUE(runner.runUntil([&](const JobResult&) { return runner.pid() == -1; }));
  EXPECT_EQ(runner.result().exitStatus, 0);
  ASSERT_GT(early.residentKilobytes, 1000);
  ASSERT_GT(late.residentKilobytes, 1000);
  EXPECT_LT(late.residentKilobytes - early.residentKilobytes, 1024);
  // It may be looked at while a dump is open.
  EXPECT_LE(late.descriptors - early.descriptors, 1);
  std::printf("%d pages: %ld KiB and %ld descriptors at page 100, %ld KiB and %ld at the last\n",
              pages, early.residentKilobytes, early.descriptors, late.residentKilobytes,
              late.descriptors);
}

const std::vector<std::string> kAlternating = {
    "8x4 203dpi picture=checker:2", "200x100 203dpi picture=noise:1", "33x1 203dpi picture=black",
    "120x300 203dpi picture=ramp"};

TEST(ManyPages, KeepTheirSize) {
  expectNoGrowth(kAlternating, 160, "HalftoneType=Tattoo MirrorImage=True AntiWrinkle=1");
}

TEST(LongManyPages, TenThousandKeepTheirSize) {
  expectNoGrowth({"16x8 203dpi picture=checker:2"}, 10000, "HalftoneType=Burkes");
}

TEST(LongManyPages, TenThousandOfChangingSizesKeepTheirSize) {
  expectNoGrowth(kAlternating, 10000, "HalftoneType=Tattoo MirrorImage=True AntiWrinkle=1");
}

}  // namespace
