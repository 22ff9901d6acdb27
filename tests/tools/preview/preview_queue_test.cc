// A queue's preview: its description and its defaults come from the spooler, and the sheets are
// those that the queue prints.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/spooler/private_spooler.h"
#include "tests/tools/preview/preview_runner.h"

namespace {

TEST(PreviewOfAQueue, HearsTheQueuesDefaultsAndTheOptionsOverThem) {
  PrivateSpooler spooler;
  ASSERT_FALSE(HasFatalFailure());
  spooler.addQueue("labels", "korvel-r57-203-oneway", 9);
  spooler.setDefault("labels", "HalftoneType=Stucki");
  spooler.setDefault("labels", "PostAction=TearOff");
  PreviewRunner runner;
  const std::string document =
      runner.files().write("ramp.ras", rasterOf("400x100 203dpi picture=ramp"));
  const struct {
    const char* sentence;
    Words options;
    const char* same;  // as a print with these
  } kCases[] = {
      {"the defaults", {}, "HalftoneType=Stucki PostAction=TearOff"},
      {"one of them replaced", {"-o", "HalftoneType=None"}, "HalftoneType=None PostAction=TearOff"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.sentence);
    const std::string shown = runner.files().file("shown");
    Words words = {"-P", "labels", "--out", shown, document};
    words.insert(words.end(), c.options.begin(), c.options.end());
    const CommandResult result = runner.preview(words, spooler.address());
    EXPECT_EQ(result.status, 0) << result.output;
    const std::string printed =
        runner.print(document, ppdOf("korvel-r57-203-oneway"), c.same, 1, {});
    expectCropped(shown + "/sheet-1.png", printed + "/sheet-1.png", {664, 400});
  }
  const CommandResult missing = runner.preview({"-P", "nobody", document}, spooler.address());
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.output,
            "korvel-preview: There is no queue nobody. Show all queues: lpstat -e\n");
}

}  // namespace
