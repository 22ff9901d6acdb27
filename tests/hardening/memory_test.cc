// Little memory, and allocations that fail one at a time. The page prints or is skipped with a
// message; an allocation of the filter's own that fails never crashes it. The libraries are not as
// careful: the C library's user look-up, which the spooler's library makes, asserts.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/hardening/hard_job.h"
#include "tests/support/temporary_folder.h"

namespace {

void printA4(const std::vector<const char*>& halftones) {
  if (underSanitizer() || underMemcheck()) GTEST_SKIP() << "the checker maps more than the limit";
  for (const char* halftone : halftones) {
    SCOPED_TRACE(halftone);
    JobPlan plan = stencilJob({"2480x3508 300dpi size=A4 picture=ramp"},
                              std::string("AntiWrinkle=2 MirrorImage=True Origin=Rotation180 "
                                          "Brightness=5 HalftoneType=") +
                                  halftone);
    plan.addressSpace = size_t{256} << 20;
    plan.dumpFolder = false;
    plan.timeout = 250;
    const JobResult job = runJob(plan);
    EXPECT_EQ(disorderOf(job), "");
    EXPECT_EQ(job.exitStatus, 0);
    EXPECT_EQ(countOf(job.messages, "ERROR"), 0u);
    ASSERT_EQ(readStream(job.output).pictures.size(), 1u);
    std::printf("%s: at most %ld KiB resident\n", halftone, job.peakKilobytes);
  }
}

TEST(ScarceAddresses, A4PrintsIn256Mebibytes) { printA4({"Stucki", "Tattoo_Z4"}); }

TEST(LongScarceAddresses, A4PrintsIn256MebibytesByEveryHalftone) {
  printA4({"None", "FloydSteinberg", "Ordered", "Burkes", "Stucki", "JarvisJudiceNinke", "Sierra",
           "StevensonArce", "Tattoo", "Tattoo_Z4"});
}

JobPlan smallJob(const std::string& options) {
  JobPlan plan = stencilJob(
      {"16x6 203dpi picture=ramp", "64x80 16dpi size=Tattoo_A6 picture=noise:2"}, options);
  plan.preloads = {KORVEL_FAILING_MEMORY};
  return plan;
}

// Which object asked for each allocation, the first one first.
std::vector<std::string> allocationsOf(JobPlan plan, int exitStatus) {
  const TemporaryFolder folder;
  plan.environment["KORVEL_ALLOCATIONS"] = folder.file("list");
  EXPECT_EQ(runJob(plan).exitStatus, exitStatus);
  return linesOf(folder.read("list"));
}

// Without what comes after the job: where the compiler counts lines, what it has put into the
// filter writes the counts at the end, and does not look at refusals. A filter that is called
// wrongly and has no job shows how much that is.
std::vector<std::string> allocationsOfTheJob(const JobPlan& plan) {
  JobPlan jobless = plan;
  jobless.arguments.emplace();
  const std::string filter = "rastertokorvel";
  auto after = std::ranges::count(allocationsOf(jobless, 1), filter);
  std::vector<std::string> objects = allocationsOf(plan, 0);
  while (after > 0 && !objects.empty()) {
    if (objects.back() == filter) --after;
    objects.pop_back();
  }
  return objects;
}

bool isOurs(const std::string& object) {
  return object == "rastertokorvel" || object.starts_with("libstdc++");
}

// Refuses every allocation of the filter itself, and every `step`th of the libraries.
void refuseOneByOne(const std::string& options, size_t step) {
  if (underSanitizer() || underMemcheck())
    GTEST_SKIP() << "the checker has an allocator of its own";
  SCOPED_TRACE(options);
  JobPlan plan = smallJob(options);
  const std::vector<std::string> objects = allocationsOfTheJob(plan);
  ASSERT_GT(objects.size(), 100u);
  size_t ours = 0;
  size_t crashes = 0;
  for (size_t i = 0; i < objects.size(); ++i) {
    const bool own = isOurs(objects[i]);
    if (!own && i % step != 0) continue;
    ours += own ? size_t{1} : 0;
    plan.environment["KORVEL_FAILING_ALLOCATION"] = std::to_string(i + 1);
    const JobResult job = runJob(plan);
    if (!own && job.signal != 0) {
      ++crashes;
      continue;
    }
    ASSERT_EQ(disorderOf(job), "") << "allocation " << i + 1 << " of " << objects[i];
    // A job that goes on reports its end. One that ends says why, unless it is the pixels' buffer
    // that cannot grow.
    const std::vector<std::string> lines = linesOf(job.messages);
    const bool atThePixels = lines.empty() || !lines.back().starts_with("STATE:");
    const bool explained = errorLines(job.messages) != 0 || (own && atThePixels);
    ASSERT_TRUE(job.exitStatus == 0 ? job.messages.ends_with("STATE: -media-empty-warning\n")
                                    : explained)
        << "allocation " << i + 1 << " of " << objects[i] << "\n"
        << job.messages;
  }
  EXPECT_GT(ours, 20u);
  std::printf("%zu allocations, %zu of ours; libraries crashed %zu times\n", objects.size(), ours,
              crashes);
}

const char kEverything[] =
    "HalftoneType=Tattoo_Z4 AntiWrinkle=1 NegativeImage=True MirrorImage=True Origin=Rotation180 "
    "PostAction=Cut Brightness=10";

TEST(FailingAllocation, OfOursNeverCrashes) { refuseOneByOne(kEverything, 300); }

TEST(LongFailingAllocation, AnyOfThemLeavesWholePackets) {
  refuseOneByOne(kEverything, 1);
  refuseOneByOne("HalftoneType=Burkes AntiWrinkle=2 MirrorImage=True", 1);
}

}  // namespace
