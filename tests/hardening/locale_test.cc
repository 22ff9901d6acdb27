// The same bytes in every locale and time zone: commas instead of points and a dotless i change
// neither dots nor messages. The locales are compiled by the test, since few machines have them.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/hardening/hard_job.h"
#include "tests/support/temporary_folder.h"

namespace {

JobPlan jobOfEverything() {
  // Sizes with decimals, choices with an i, a title of the spooler's own.
  JobPlan plan = stencilJob({"61x23 203x300dpi size=Tattoo_A6 picture=noise:3"},
                            "PostAction=TearOff Origin=Rotation180 MirrorImage=TRUE AntiWrinkle=1 "
                            "HalftoneType=Tattoo_Z4 Brightness=3 PaperType=LabelMark");
  plan.dumpFolder = false;
  return plan;
}

void expectSame(const JobPlan& plan, const JobResult& want) {
  const JobResult job = runJob(plan);
  EXPECT_EQ(job.exitStatus, 0);
  EXPECT_EQ(hexText(job.output), hexText(want.output));
  EXPECT_EQ(maskAddresses(job.messages), maskAddresses(want.messages));
}

struct Language {
  const char* name;
  const char* charmap;  // of one byte: those compile in a moment
};

TEST(Locale, ChangesNothing) {
  const TemporaryFolder folder;
  const JobResult want = runJob(jobOfEverything());
  ASSERT_EQ(want.exitStatus, 0);
  for (const Language& c : {Language{"de_DE", "ISO-8859-1"}, Language{"tr_TR", "ISO-8859-9"}}) {
    const std::string command = std::string("localedef -c -i ") + c.name + " -f " + c.charmap +
                                " " + folder.file(c.name) + " > /dev/null 2>&1";
    if (std::system(command.c_str()) != 0) {
      GTEST_SKIP() << "no sources of locales: install the package locales";
    }
    SCOPED_TRACE(c.name);
    JobPlan plan = jobOfEverything();
    plan.environment = {{"LOCPATH", folder.path()}, {"LC_ALL", c.name}, {"LANG", c.name}};
    expectSame(plan, want);
  }
}

TEST(Locale, MayBeMissingOrUnset) {
  const JobResult want = runJob(jobOfEverything());
  for (const char* name : {"", "C", "POSIX", "C.UTF-8", "xx_XX", "%n%s"}) {
    SCOPED_TRACE(name);
    JobPlan plan = jobOfEverything();
    plan.environment = {{"LC_ALL", name}, {"LANG", name}};
    expectSame(plan, want);
  }
}

TEST(TimeZone, ChangesNoByteForThePrinter) {
  const JobResult want = runJob(jobOfEverything());
  for (const char* zone :
       {"", "UTC", "Asia/Kathmandu", "America/St_Johns", "XYZ-14:59", ":/no/such", "%n%s"}) {
    SCOPED_TRACE(zone);
    JobPlan plan = jobOfEverything();
    plan.environment = {{"TZ", zone}};
    const JobResult job = runJob(plan);
    EXPECT_EQ(job.exitStatus, 0);
    EXPECT_EQ(hexText(job.output), hexText(want.output));
    // The dumps' names contain the local time, here in the message that there is no folder for
    // them.
    const std::string complaint = "PellamPrinter::saveImage: unable to open the file ";
    EXPECT_EQ(linesOf(job.messages).size(), linesOf(want.messages).size());
    EXPECT_EQ(countOf(job.messages, complaint), 2u);
  }
}

}  // namespace
