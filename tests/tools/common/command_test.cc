// What all commands have in common: --help, --version, and the exit status for wrong usage.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>

#include "tests/spooler/guarded_process.h"
#include "tests/support/temporary_folder.h"

namespace {

constexpr double kSeconds = 20;
const std::map<std::string, std::string> kEnglish = {{"LC_ALL", "C"}};

class EveryCommand : public testing::TestWithParam<const char*> {
 protected:
  std::string path() const { return std::string(KORVEL_TOOLS_DIR "/") + GetParam(); }
};

TEST_P(EveryCommand, ShowsItsUsage) {
  CommandResult help = run({path(), "--help"}, kSeconds, kEnglish);
  EXPECT_EQ(help.status, 0);
  EXPECT_TRUE(help.output.starts_with(std::string("Usage: ") + GetParam() + " ")) << help.output;
  std::replace(help.output.begin(), help.output.end(), '\n', ' ');
  for (const char* word : {"--help", "--version", "2 wrong usage"}) {
    EXPECT_NE(help.output.find(word), std::string::npos) << word << "\n" << help.output;
  }
}

TEST_P(EveryCommand, ShowsItsVersion) {
  const CommandResult version = run({path(), "--version"}, kSeconds, kEnglish);
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, std::string(GetParam()) + " 1.0.0\n");
}

TEST_P(EveryCommand, RefusesWhatItDoesNotKnow) {
  const CommandResult unknown = run({path(), "--wrong"}, kSeconds, kEnglish);
  EXPECT_EQ(unknown.status, 2);
  EXPECT_EQ(unknown.output, std::string(GetParam()) + ": unknown option '--wrong'; see " +
                                GetParam() + " --help\n");
}

INSTANTIATE_TEST_SUITE_P(All, EveryCommand,
                         testing::Values("korvel-decode", "korvel-preview", "korvel-printer",
                                         "korvel-setup", "korvel-spool"));
#ifdef KORVEL_HAS_STUDIO
INSTANTIATE_TEST_SUITE_P(Studio, EveryCommand, testing::Values("korvel-studio"));
#endif

TEST(SetupCommand, RefusesEmptyNamesAndUris) {
  for (const char* option : {"-p", "-v", "-d"}) {
    const CommandResult result =
        run({KORVEL_TOOLS_DIR "/korvel-setup", option, ""}, kSeconds, kEnglish);
    EXPECT_EQ(result.status, 2) << option;
    EXPECT_EQ(result.output,
              std::string("korvel-setup: ") + option + " needs a value; see korvel-setup --help\n");
  }
}

TEST(SpoolCommand, EndsWithOneForEveryFailureOfTheFilter) {
  const struct {
    const char* sentence;
    const char* filter;
    int status;
    const char* message;
  } kCases[] = {
      {"a filter that succeeds", "/bin/true", 0, ""},
      {"a filter that fails", "/bin/false", 1, ""},
      {"no such filter", "/bin/no-such-filter", 1, "korvel-spool: "},
  };
  for (const auto& c : kCases) {
    const CommandResult result = run(
        {KORVEL_TOOLS_DIR "/korvel-spool", "--filter", c.filter, "/dev/null"}, kSeconds, kEnglish);
    EXPECT_EQ(result.status, c.status) << c.sentence;
    EXPECT_TRUE(result.output.starts_with(c.message)) << c.sentence << ": " << result.output;
  }
}

TEST(SpoolCommand, EndsWithOneForARasterThatIsDamaged) {
  const TemporaryFolder folder;
  const std::string raster = folder.write("damaged.ras", "RaS3 and no header");
  const CommandResult result =
      run({KORVEL_TOOLS_DIR "/korvel-spool", "--filter", "/bin/true", raster}, kSeconds, kEnglish);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "korvel-spool: " + raster + ": Page 1 is damaged or incomplete.\n");
}

}  // namespace
