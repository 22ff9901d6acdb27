// The options of a real PPD: what a job and a queue accept, and the sentences for the rest.
// SPDX-License-Identifier: Apache-2.0
#include "tools/description/option_check.h"

#include <gtest/gtest.h>

#include "tests/tools/result_text.h"
#include "tools/description/description_text.h"

namespace korvel {
namespace {

Ppd labelPpd() { return Ppd(ppdOpenFile(KORVEL_PPD_DIR "/korvel-label-203.ppd")); }

TEST(OptionCheck, IsTheSameForJobsAndQueues) {
  const struct {
    const char* option;
    const char* failure;
  } kCases[] = {
      {"", ""},
      {"PageSize=4x6", ""},
      {"pagesize=4X6", ""},
      {"media=4x4", ""},
      {"PageSize=Custom.50x80mm", ""},
      {"PageSize=Custom.2x1in", ""},
      {"PageSize=Custom.100.5x200", ""},
      {"MirrorImage", ""},
      {"noMirrorImage", ""},
      {"PageSize=4x6 Darkness=Dark HalftoneType=Tattoo", ""},
      {"PageSize=Custom",
       "There is no choice PageSize=Custom. Nearest choices: "
       "Custom.WIDTHxHEIGHTmm."},
      {"PageSize=custom.50x80mm",
       "There is no choice PageSize=custom.50x80mm. Nearest choices: "
       "Custom.WIDTHxHEIGHTmm."},
      {"PageSize=Custom.50x80mmm",
       "There is no choice PageSize=Custom.50x80mmm. Nearest choices: "
       "Custom.WIDTHxHEIGHTmm."},
      {"PageSize=2x1",
       "There is no choice PageSize=2x1. Nearest choices: 1x2Rotated, 2x4, 2x2, "
       "1x1, Custom.WIDTHxHEIGHTmm."},
      {"Darkness=Custom.1",
       "There is no choice Darkness=Custom.1. All choices: Light, Middle, "
       "Dark."},
      {"HalftoneType=Stuki", "There is no choice HalftoneType=Stuki. Nearest choices: Stucki."},
      {"Darknes=Dark PageSize=2x1", "There is no option Darknes. Nearest options: Darkness."},
  };
  const Ppd ppd = labelPpd();
  ASSERT_TRUE(ppd);
  for (const auto& c : kCases) {
    for (const OptionScope scope : {OptionScope::kJob, OptionScope::kQueue}) {
      EXPECT_EQ(c.failure, failureOf(checkOptions(ppd.get(), parseOptions(c.option), scope)));
    }
  }
}

TEST(OptionCheck, KnowsOptionsThatNoPpdHas) {
  const struct {
    const char* option;
    bool ofJobs;
    bool ofQueues;
  } kCases[] = {
      {"fit-to-page", true, false},         {"scaling=50", true, false},
      {"job-name=x", true, true},           {"printer-error-policy=abort-job", false, true},
      {"number-up-default=2", false, true}, {"stapling=yes", false, false},
  };
  const Ppd ppd = labelPpd();
  ASSERT_TRUE(ppd);
  for (const auto& c : kCases) {
    const Options options = parseOptions(c.option);
    EXPECT_EQ(c.ofJobs, checkOptions(ppd.get(), options, OptionScope::kJob).ok()) << c.option;
    EXPECT_EQ(c.ofQueues, checkOptions(ppd.get(), options, OptionScope::kQueue).ok()) << c.option;
  }
}

}  // namespace
}  // namespace korvel
