// Narrow pages through every turn, mirror and negative: what the heap held before must not show.
// The memory that the filter gets is filled with two different bytes, and the printer gets the same
// ones. Under valgrind a byte that nobody wrote ends the job. SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/hardening/hard_job.h"

namespace {

std::vector<std::string> narrowPages() {
  std::vector<std::string> recipes;
  const bool padded = libraryReads(rasterOf({"3x3 203dpi pad=3"}));
  for (int width = 1; width <= 33; ++width) {
    recipes.push_back(std::to_string(width) + "x3 203dpi picture=noise:" + std::to_string(width) +
                      (padded && width % 3 == 0 ? " pad=3" : ""));
  }
  return recipes;
}

std::string optionsOf(int mask) {
  std::string options;
  if ((mask & 1) != 0) options += " MirrorImage=True";
  if ((mask & 2) != 0) options += " NegativeImage=True";
  if ((mask & 4) != 0) options += " Origin=Rotation180";
  return options;
}

void expectTheSameOnAnyHeap(const std::vector<const char*>& halftones) {
  for (const char* halftone : halftones) {
    for (int mask = 0; mask < 8; ++mask) {
      const std::string options = std::string("HalftoneType=") + halftone + optionsOf(mask);
      SCOPED_TRACE(options);
      JobPlan plan = labelJob(narrowPages(), options);
      plan.dumpFolder = underMemcheck();  // there the dumps are held to it too
      plan.environment["MALLOC_PERTURB_"] = "85";
      const JobResult first = runJob(plan);
      ASSERT_EQ(disorderOf(first), "");
      ASSERT_EQ(first.exitStatus, 0);
      ASSERT_EQ(readStream(first.output).pictures.size(), 33u);
      if (underMemcheck()) continue;
      plan.environment["MALLOC_PERTURB_"] = "170";
      ASSERT_EQ(hexText(runJob(plan).output), hexText(first.output));
    }
  }
}

TEST(UninitialisedBytes, DoNotReachThePrinter) {
  expectTheSameOnAnyHeap({"None", "Burkes", "Tattoo"});
}

TEST(LongUninitialisedBytes, DoNotReachThePrinterByAnyHalftone) {
  expectTheSameOnAnyHeap({"FloydSteinberg", "Ordered", "Stucki", "JarvisJudiceNinke", "Sierra",
                          "StevensonArce", "Tattoo_Z4"});
}

}  // namespace
