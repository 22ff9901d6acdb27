// Printer descriptions of any kind and size. What cannot be read yields the defaults, and without a
// page size the job ends with status 1.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/filter/driver/written_ppd.h"
#include "tests/hardening/hard_job.h"
#include "tests/support/temporary_folder.h"

namespace {

const char kPage[] = "8x4 203dpi picture=checker:2";
const char kNoPaper[] = "ERROR: Paper size must not less than 1.0 : (0.000000, 0.000000)\n";

JobResult printWith(const std::string& ppd, const std::string& options = "") {
  JobPlan plan = labelJob({kPage}, options);
  plan.ppd = ppd;
  plan.dumpFolder = false;
  return runJob(plan);
}

std::string setting(const JobResult& job, const std::string& name) {
  const std::string before = "DEBUG:settings->" + name + ":";
  for (const std::string& line : linesOf(job.messages)) {
    if (line.starts_with(before)) return line.substr(before.size());
  }
  return "(not logged)";
}

void expectNoPaper(const JobResult& job) {
  EXPECT_EQ(disorderOf(job), "");
  EXPECT_EQ(job.exitStatus, 1);
  EXPECT_EQ(job.output, "");
  EXPECT_TRUE(job.messages.ends_with(kNoPaper)) << job.messages;
  EXPECT_EQ(errorLines(job.messages), 1u);
}

TEST(HostileDescription, ThatIsNoneLeavesNoPaper) {
  std::string noise(20000, '\0');
  unsigned state = 1;
  for (char& byte : noise) byte = static_cast<char>((state = state * 1103515245 + 12345) >> 16);
  const std::pair<const char*, std::string> kCases[] = {
      {"nothing but a blank", " "},
      {"noise", noise},
      {"a whole PPD after noise", noise + testPpd("label")},
      {"another file", "%PDF-1.7\n"},
      {"a raster", rasterOf({kPage})},
      {"only the first line", "*PPD-Adobe: \"4.3\"\n"},
      {"an endless line", "*PPD-Adobe: \"4.3\"\n*" + std::string(1 << 20, 'x')},
      {"a text that never ends", "*PPD-Adobe: \"4.3\"\n*ModelName: \"" + std::string(1 << 20, 'x')},
      {"groups in groups", "*PPD-Adobe: \"4.3\"\n*OpenGroup: a\n*OpenGroup: b\n*OpenSubGroup: c\n"},
      {"a name of two thousand characters", writtenPpd(kPpdPageSizes, std::string(2000, 'm'))},
      {"a choice of two thousand characters",
       writtenPpd(kPpdPageSizes + ppdOption("PaperType", "a", {"a", std::string(2000, 'c')}))},
  };
  for (const auto& [sentence, text] : kCases) {
    SCOPED_TRACE(sentence);
    expectNoPaper(printWith(text));
  }
}

TEST(HostileDescription, OnPathsOfAllKindsLeavesNoPaper) {
  const TemporaryFolder folder;
  ASSERT_EQ(symlink("b", folder.file("a").c_str()), 0);
  ASSERT_EQ(symlink("a", folder.file("b").c_str()), 0);
  folder.write("empty", "");
  for (const std::string& path :
       {folder.file("a"), folder.path(), folder.file("missing"), folder.file("empty"),
        std::string("/dev/null"), folder.file("empty/below"), std::string(5000, '/'),
        std::string(300, 'n')}) {
    SCOPED_TRACE(path.substr(0, 60));
    JobPlan plan = labelJob({kPage});
    plan.ppdPath = path;
    expectNoPaper(runJob(plan));
  }
}

TEST(HostileDescription, CutAnywhereEndsInOrder) {
  const std::string whole = testPpd("stencil");
  const size_t step = whole.size() / static_cast<size_t>(fewUnderMemcheck(50));
  for (size_t kept = 0; kept < whole.size(); kept += step) {
    const JobResult job = printWith(whole.substr(0, kept));
    ASSERT_EQ(disorderOf(job), "") << "cut after " << kept;
    const bool hasPaper = setting(job, "pageWidth") != "0.000000";
    ASSERT_EQ(job.exitStatus, hasPaper ? 0 : 1) << "cut after " << kept;
    ASSERT_EQ(errorLines(job.messages), hasPaper ? 0u : 1u) << "cut after " << kept;
  }
}

TEST(HostileDescription, WithWrongBytesEndsInOrder) {
  const std::string whole = testPpd("label");
  unsigned state = 5;
  for (int i = 0; i < fewUnderMemcheck(60); ++i) {
    std::string spoilt = whole;
    for (int k = 0; k < 1 + i / 6; ++k) {
      state = state * 1103515245 + 12345;
      spoilt[(state >> 8) % spoilt.size()] = static_cast<char>(state >> 24);
    }
    ASSERT_EQ(disorderOf(printWith(spoilt)), "") << "the " << i << "th";
  }
}

TEST(HostileDescription, TextsAreCutToFortyCharacters) {
  const std::string longName(200, 'm');  // longer lines end the description
  const std::string forty = std::string(40, 'c');
  const JobResult job =
      printWith(writtenPpd(kPpdPageSizes + ppdOption("PaperType", forty, {forty}), longName));
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(setting(job, "ModelName"), std::string(40, 'm'));
  EXPECT_EQ(setting(job, "PaperType"), forty);
}

TEST(HostileDescription, MissingDefaultsAreDefaults) {
  std::string text;
  for (const std::string& line : linesOf(testPpd("label"))) {
    if (!line.starts_with("*Default") || line.find("PageSize") != std::string::npos) {
      text += line + "\n";
    }
  }
  const JobResult job = printWith(text);
  EXPECT_EQ(disorderOf(job), "");
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(setting(job, "GapsHeight"), "0");
  EXPECT_EQ(setting(job, "PaperType"), "");
  EXPECT_EQ(setting(job, "halftoneType"), "0");
  EXPECT_EQ(setting(job, "Brightness"), "0");
}

TEST(HostileDescription, NumbersOutOfAllRangesEndInOrder) {
  for (const char* number : {"2147483647", "-2147483648", "99999999999999999999", "-", "0x10"}) {
    SCOPED_TRACE(number);
    std::string lines = kPpdPageSizes;
    for (const char* keyword : {"GapsHeight", "MirrorImage", "Brightness", "Contrast"}) {
      lines += ppdOption(keyword, number, {number});
    }
    const JobResult job = printWith(writtenPpd(lines, "L203"));
    EXPECT_EQ(disorderOf(job), "");
    EXPECT_EQ(job.exitStatus, 0);
  }
}

// The spooler's library compares each option with all before it: thirty thousand take it ten
// seconds.
void printWithOptions(int count) {
  std::string lines = kPpdPageSizes;
  for (int i = 0; i < count; ++i) {
    lines += ppdOption("Opt" + std::to_string(i), "a", {"a", "b"});
  }
  lines += ppdOption("MirrorImage", "True", {"True", "False"});
  JobPlan plan = labelJob({kPage});
  plan.ppd = writtenPpd(lines, "L203");
  plan.timeout = 600;
  const JobResult job = runJob(plan);
  EXPECT_EQ(disorderOf(job), "");
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(setting(job, "MirrorImage"), "1");
}

TEST(HostileDescription, ThousandsOfOptionsAreRead) { printWithOptions(5000); }

TEST(LongHostileDescription, ThirtyThousandOptionsAreRead) { printWithOptions(30000); }

}  // namespace
