// The anti-wrinkle frame with levels and resolutions that wrap its arithmetic: canvases of up to
// half a gigabyte, bands of a million dots. SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/hardening/hard_job.h"

namespace {

struct Case {
  const char* sentence;
  const char* level;  // of the job's description
  unsigned resolution;
  const char* sheet;
  const char* canvas;  // as logged
};

const Case kCases[] = {
    {"the lowest level", "-2147483648", 203, "A4", "CanvasWidth: 1598, CanvasHeight: 2214\n"},
    {"the highest level", "2147483647", 203, "A4", "CanvasWidth: 3383446, CanvasHeight: 2214\n"},
    {"no level on the lowest resolution", "-1", 1, "A4",
     "CanvasWidth: 3381872, CanvasHeight: 11\n"},
    {"resolution 2^31", "3", 0x80000000u, "Letter", "CanvasWidth: 0, CanvasHeight: 0\n"},
    {"resolution 2^32 - 1", "-2147483648", 0xFFFFFFFFu, "Tattoo_A6",
     "CanvasWidth: 1690928, CanvasHeight: 5072791\n"},
    {"resolution 0", "-1", 0, "Tattoo_A5", "CanvasWidth: 0, CanvasHeight: 0\n"},
    {"the largest wide canvas", "-722939349", 17, "A4",
     "CanvasWidth: 2881016, CanvasHeight: 186\n"},
    {"the largest tall canvas", "400", 381607848, "A4",
     "CanvasWidth: 148, CanvasHeight: 3627090\n"},
    {"the largest of all", "-172842281", 2222, "Tattoo_A5",
     "CanvasWidth: 51136, CanvasHeight: 10497\n"},
};

std::string stencilWithLevel(const std::string& level) {
  std::string text;
  for (const std::string& line : linesOf(testPpd("stencil"))) {
    const bool isDefault = line.starts_with("*DefaultAntiWrinkle:");
    text += (isDefault ? "*DefaultAntiWrinkle: " + level : line) + "\n";
    if (isDefault && level != "-1") text += "*AntiWrinkle " + level + "/x: \"\"\n";
  }
  return text;
}

// The slowest of them take a second, most of it for packing; ten are for slow builds and machines.
TEST(FrameExtremes, AnyLevelAtAnyResolutionIsOverSoon) {
  if (underMemcheck()) GTEST_SKIP() << "half a gigabyte of dots takes minutes there";
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    cups_page_header2_t header = plainHeader(16, 16);
    header.HWResolution[0] = header.HWResolution[1] = c.resolution;
    std::string(c.sheet).copy(header.cupsPageSizeName, sizeof header.cupsPageSizeName);
    JobPlan plan = rawJob(header, std::string(256, '\0'));
    plan.ppd = stencilWithLevel(c.level);
    plan.dumpFolder = false;  // the dump would be as large as the canvas
    plan.outputPath = "/dev/null";
    plan.timeout = 250;  // the processor time below is what counts
    const JobResult job = runJob(plan);
    EXPECT_EQ(disorderOf(job), "");
    EXPECT_EQ(job.exitStatus, 0);
    EXPECT_LT(job.processorSeconds, 10 * slowness());
    EXPECT_EQ(countOf(job.messages, c.canvas), 1u) << job.messages;
    EXPECT_EQ(countOf(job.messages, "doPrintImage: Image sent to the printer.\n"), 1u);
  }
}

}  // namespace
