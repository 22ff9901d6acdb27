// Many filters that share one pipe of messages, as they do under the spooler: no line is torn.
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <set>

#include "tests/hardening/hard_job.h"

namespace {

constexpr int kFilters = 3;

JobPlan chattyJob(int pages) {
  JobPlan plan = labelJob(
      std::vector<std::string>(static_cast<size_t>(pages), "8x4 203dpi picture=checker:2"));
  plan.byPath = true;
  plan.dumpFolder = false;
  plan.outputPath = "/dev/null";
  return plan;
}

std::string readAll(int descriptor) {
  std::string all;
  char bytes[65536];
  for (ssize_t count; (count = read(descriptor, bytes, sizeof bytes)) > 0;) {
    all.append(bytes, static_cast<size_t>(count));
  }
  return all;
}

TEST(SharedLog, SixtyThousandLinesOfThreeFiltersStayWhole) {
  if (underMemcheck()) GTEST_SKIP() << "the lines are the same there, and take minutes";
  const int pages = 480;
  JobPlan plan = chattyJob(pages);
  const std::vector<std::string> lone = linesOf(maskAddresses(runJob(plan).messages));
  const std::set<std::string> known(lone.begin(), lone.end());

  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  plan.messagesDescriptor = ends[1];
  std::vector<std::unique_ptr<JobRunner>> filters;
  for (int i = 0; i < kFilters; ++i) filters.push_back(std::make_unique<JobRunner>(plan));
  close(ends[1]);  // now only the filters hold it, and their end is the pipe's
  const std::vector<std::string> lines = linesOf(maskAddresses(readAll(ends[0])));
  close(ends[0]);
  for (const auto& filter : filters) EXPECT_EQ(filter->finish().exitStatus, 0);

  EXPECT_EQ(lines.size(), lone.size() * kFilters);
  EXPECT_GE(lines.size(), 60000u);
  size_t torn = 0;
  for (const std::string& line : lines) {
    if (known.count(line) != 0) continue;
    if (++torn <= 3) ADD_FAILURE() << "torn: " << line;
  }
  EXPECT_EQ(torn, 0u) << "of " << lines.size();
}

}  // namespace
