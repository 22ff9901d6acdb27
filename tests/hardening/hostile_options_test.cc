// Option strings that try everything: they are parsed as the spooler's library does it, never reach
// a log line as they stand, and never a format.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdlib>

#include "driver/settings_reader.h"
#include "tests/filter/driver/written_ppd.h"
#include "tests/hardening/hard_job.h"
#include "tests/support/captured_stderr.h"
#include "tests/support/temporary_folder.h"

namespace {

const char kPage[] = "8x4 203dpi picture=checker:2";

struct Case {
  const char* sentence;
  std::string options;
};

std::string repeated(const std::string& text, size_t times) {
  std::string all;
  for (size_t i = 0; i < times; ++i) all += text;
  return all;
}

std::vector<Case> hostileOptions() {
  const std::string forged = "\nERROR: forged\nSTATE: +offline-report\n";
  return {
      {"line ends between words", "\n\n  \r\n\t \v\f"},
      {"line ends in a value", "MediaMethod=" + forged},
      {"line ends in a quoted value", "MediaMethod='" + forged + "'"},
      {"line ends in a name", forged + "=x " + forged},
      {"line ends in a page size", "PageSize='w144h72" + forged + "'"},
      {"conversions in every value",
       "PageSize=%n%s%x PaperType=%s%n PostAction=%1000000d "
       "MediaMethod=%*s Origin=%n Occurrence=%hhn HalftoneType=%p"},
      {"conversions in names", "%n%s%n=%n %s %d=1"},
      {"open quotes", "MediaMethod='Direct MirrorImage=\"True"},
      {"quotes of both kinds, crossed", "a='b\"c' d=\"e'f\" g='''''' h=\"\\\"\""},
      {"braces that stay open", repeated("{", 5000)},
      {"braces that close nothing", repeated("}", 5000)},
      {"braces in braces", "a=" + repeated("{b=", 2000) + "c" + repeated("}", 1999)},
      {"a backslash at the end", "PaperType=Label\\"},
      {"equals signs", repeated("=", 5000)},
      {"bytes above 127", "PaperType=\xFF\xFE\x80 \xC0\xAF=\xED\xA0\x80"},
      {"control bytes", "PaperType=\x01\x02\x1B[2J\x7F"},
      {"the longest argument there can be", repeated("a=b ", 32000)},
      {"one long name", std::string(130000, 'n')},
      {"one long value", "MediaMethod=" + std::string(130000, 'v')},
      {"the same option ten thousand times", repeated("MediaMethod=x ", 9000)},
      {"every option twice removed", "noMirrorImage nonoMirrorImage no no= =no"},
  };
}

TEST(HostileOptions, ChangeNoByteOfTheJob) {
  JobPlan plan = labelJob({kPage});
  plan.dumpFolder = false;
  const JobResult usual = runJob(plan);
  const std::vector<std::string> known = linesOf(maskAddresses(usual.messages));
  for (const Case& c : hostileOptions()) {
    SCOPED_TRACE(c.sentence);
    plan.options = c.options;
    const JobResult job = runJob(plan);
    EXPECT_EQ(disorderOf(job), "");
    EXPECT_EQ(job.exitStatus, 0);
    EXPECT_EQ(hexText(job.output), hexText(usual.output));
    EXPECT_EQ(linesOf(maskAddresses(job.messages)), known) << "no line is forged or changed";
  }
}

TEST(HostileOptions, DoNotHideTheOptionsBesideThem) {
  const Case kCases[] = {
      {"after a forged line", "x='\nERROR: forged' MirrorImage=True"},
      {"after conversions", "%n=%s MirrorImage=True"},
      {"before an open quote", "MirrorImage=True x='y"},
      {"after a hundred kilobytes", repeated("a=b ", 25000) + "MirrorImage=True"},
  };
  for (const Case& c : kCases) {
    const JobResult job = runJob(labelJob({kPage}, c.options));
    EXPECT_EQ(imageHex(job.output), "CC CC 33 33") << c.sentence;
  }
}

// Settings that the library itself is asked for: an argument cannot be this long.
TEST(HostileOptions, AMegabyteIsParsed) {
  const TemporaryFolder folder;
  const std::string path = folder.write("test.ppd", testPpd("label"));
  setenv("PPD", path.c_str(), 1);
  for (const std::string& filling : {std::string("a=b "), std::string("{ "), std::string("%n")}) {
    const std::string options = "MirrorImage=True " + repeated(filling, (1 << 20) / filling.size());
    Settings settings{};
    CapturedStderr captured;
    parseSettings(&settings, options.c_str());
    EXPECT_EQ(linesOf(captured.text()).size(), 23u);
    EXPECT_EQ(settings.MirrorImage, 1);
  }
  unsetenv("PPD");
}

TEST(OtherArguments, ReachNoLogAndNoFormat) {
  JobPlan plan = labelJob({kPage});
  plan.dumpFolder = false;
  const JobResult usual = runJob(plan);
  const std::string bad = "%n%s\nERROR: forged";
  plan.arguments = {bad, bad, bad, bad, ""};
  const JobResult job = runJob(plan);
  EXPECT_EQ(hexText(job.output), hexText(usual.output));
  EXPECT_EQ(linesOf(maskAddresses(job.messages)), linesOf(maskAddresses(usual.messages)));

  plan.arguments = {bad, bad, bad, bad, "", "/no/such/%n%s"};
  EXPECT_EQ(runJob(plan).messages, "ERROR: Unable to open raster file - ");
}

TEST(Description, PutsConversionsIntoTheLogAsTheyAre) {
  JobPlan plan = labelJob({kPage});
  plan.ppd = testPpd("label", "%n%s%1000000d");
  const JobResult job = runJob(plan);
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(countOf(job.messages, "DEBUG:settings->ModelName:%n%s%1000000d\n"), 1u);
}

TEST(Description, ForgesNoLogLine) {
  JobPlan plan = labelJob({kPage});
  plan.ppd = testPpd("label", "L203\nSTATE: +offline-report\nERROR:x");
  const JobResult job = runJob(plan);
  for (const std::string& line : linesOf(job.messages)) {
    EXPECT_FALSE(line.starts_with("STATE: +") || line.starts_with("ERROR:")) << line;
  }
}

}  // namespace
