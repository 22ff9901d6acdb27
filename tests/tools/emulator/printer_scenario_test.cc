// The scenario lines of the emulated printer: what each means, and what is said of a wrong one.
// Times are microseconds, pages thousandths.
// SPDX-License-Identifier: Apache-2.0
#include "tools/emulator/printer_scenario.h"

#include <gtest/gtest.h>

#include <string>

namespace korvel {
namespace {

TEST(PrinterScenario, EveryLineIsUnderstood) {
  struct Case {
    const char* sentence;
    const char* text;
    ScenarioKind kind;
    Micros duration;
    int64_t milliPages;
    int64_t bytes;
  };
  using Kind = ScenarioKind;
  const Case cases[] = {
      {"paper ends for good", "out-of-paper", Kind::kOutOfPaper, kForEver, 0, 0},
      {"paper ends for five seconds", "out-of-paper for 5", Kind::kOutOfPaper, 5000000, 0, 0},
      {"paper ends after two pages", "out-of-paper after 2", Kind::kOutOfPaper, kForEver, 2000, 0},
      {"paper ends in the second page", "out-of-paper for 0.25 after 1.5", Kind::kOutOfPaper,
       250000, 1500, 0},
      {"capitals are the same", "OUT-OF-PAPER FOR 5 After 1", Kind::kOutOfPaper, 5000000, 1000, 0},
      {"blanks part the words", "  out-of-paper\tfor  5 \r", Kind::kOutOfPaper, 5000000, 0, 0},
      {"three decimals", "out-of-paper for 0.001 after 0.001", Kind::kOutOfPaper, 1000, 1, 0},
      {"a whole day", "out-of-paper for 86400 after 9999", Kind::kOutOfPaper, 86400000000, 9999000,
       0},
      {"paper comes", "load", Kind::kLoad, kForEver, 0, 0},
      {"the cover opens", "cover open", Kind::kCoverOpen, kForEver, 0, 0},
      {"the cover shuts", "cover close", Kind::kCoverClose, kForEver, 0, 0},
      {"the cover opens for a while", "cover for 2", Kind::kCoverOpen, 2000000, 0, 0},
      {"the cover opens in the first page", "cover for 2 at 1", Kind::kCoverOpen, 2000000, 500, 0},
      {"the cover opens in the third page", "cover for 2 at 3", Kind::kCoverOpen, 2000000, 2500, 0},
      {"no answers", "silent", Kind::kSilent, kForEver, 0, 0},
      {"no answers for a while", "silent for 1.5", Kind::kSilent, 1500000, 0, 0},
      {"answers again", "silent off", Kind::kSilent, 0, 0, 0},
      {"noise", "noise 20", Kind::kNoise, kForEver, 0, 20},
      {"the most noise", "noise 65536", Kind::kNoise, kForEver, 0, 65536},
      {"pieces of five bytes", "split", Kind::kSplit, kForEver, 0, 5},
      {"pieces of one byte", "split 1", Kind::kSplit, kForEver, 0, 1},
      {"whole replies again", "split off", Kind::kSplit, kForEver, 0, 0},
      {"twice at once", "glue", Kind::kGlue, kForEver, 0, 0},
      {"slow reading", "slow 1000", Kind::kSlow, kForEver, 0, 1000},
      {"no longer slow", "slow off", Kind::kSlow, kForEver, 0, 0},
      {"a stall now", "stall for 3", Kind::kStall, 3000000, 0, 0},
      {"a stall later", "stall for 3 after 100", Kind::kStall, 3000000, 0, 100},
      {"a hang-up now", "disconnect", Kind::kDisconnect, kForEver, 0, 0},
      {"a hang-up later", "disconnect after 999999999", Kind::kDisconnect, kForEver, 0, 999999999},
      {"a question", "state", Kind::kState, kForEver, 0, 0},
      {"the end", "quit", Kind::kQuit, kForEver, 0, 0},
  };
  for (const Case& c : cases) {
    Scenario have;
    std::string fault;
    EXPECT_TRUE(parseScenario(c.text, &have, &fault)) << c.sentence << ": " << fault;
    EXPECT_EQ("", fault) << c.sentence;
    EXPECT_EQ(c.kind, have.kind) << c.sentence;
    EXPECT_EQ(c.duration, have.duration) << c.sentence;
    EXPECT_EQ(c.milliPages, have.milliPages) << c.sentence;
    EXPECT_EQ(c.bytes, have.bytes) << c.sentence;
  }
}

TEST(PrinterScenario, AFaultIsToldInOneSentence) {
  struct Case {
    const char* text;
    const char* fault;
  };
  const Case cases[] = {
      {"", "no scenario is named"},
      {"  \t", "no scenario is named"},
      {"paper", "unknown scenario 'paper'"},
      {"out of paper", "unknown scenario 'out'"},
      {"out-of-paper 5", "'5' does not belong behind 'out-of-paper'"},
      {"out-of-paper for", "'out-of-paper' wants seconds from 0.001 to 86400, have nothing"},
      {"out-of-paper for ever", "'out-of-paper' wants seconds from 0.001 to 86400, have 'ever'"},
      {"out-of-paper for 0", "'out-of-paper' wants seconds from 0.001 to 86400, have '0'"},
      {"out-of-paper for -1", "'out-of-paper' wants seconds from 0.001 to 86400, have '-1'"},
      {"out-of-paper for 1.", "'out-of-paper' wants seconds from 0.001 to 86400, have '1.'"},
      {"out-of-paper for .5", "'out-of-paper' wants seconds from 0.001 to 86400, have '.5'"},
      {"out-of-paper for 1.2345",
       "'out-of-paper' wants seconds from 0.001 to 86400, have '1.2345'"},
      {"out-of-paper for 1.2.3", "'out-of-paper' wants seconds from 0.001 to 86400, have '1.2.3'"},
      {"out-of-paper for 86400.001",
       "'out-of-paper' wants seconds from 0.001 to 86400, have '86400.001'"},
      {"out-of-paper for 99999999999999999999",
       "'out-of-paper' wants seconds from 0.001 to 86400, have '99999999999999999999'"},
      {"out-of-paper after x", "'out-of-paper' wants pages from 0 to 9999, as in 1.5, have 'x'"},
      {"out-of-paper after 10000",
       "'out-of-paper' wants pages from 0 to 9999, as in 1.5, have '10000'"},
      {"out-of-paper after 1 for 5", "'for' does not belong behind '1'"},
      {"load paper", "'paper' does not belong behind 'load'"},
      {"cover", "'cover' wants open, close or for SECONDS, have nothing"},
      {"cover shut", "'cover' wants open, close or for SECONDS, have 'shut'"},
      {"cover open for 5", "'for' does not belong behind 'open'"},
      {"cover for 5 at 0", "'cover' wants page from 1 to 9999, have '0'"},
      {"cover for 5 at 1.5", "'cover' wants page from 1 to 9999, have '1.5'"},
      {"silent 5", "'5' does not belong behind 'silent'"},
      {"silent off for 5", "'for' does not belong behind 'off'"},
      {"silent for 0", "'silent' wants seconds from 0.001 to 86400, have '0'"},
      {"noise", "'noise' wants bytes from 1 to 65536, have nothing"},
      {"noise 0", "'noise' wants bytes from 1 to 65536, have '0'"},
      {"noise 65537", "'noise' wants bytes from 1 to 65536, have '65537'"},
      {"split 0", "'split' wants bytes from 1 to 999999999, have '0'"},
      {"split x", "'split' wants bytes from 1 to 999999999, have 'x'"},
      {"slow", "'slow' wants off or bytes per second from 1 to 999999999, have nothing"},
      {"slow 0", "'slow' wants off or bytes per second from 1 to 999999999, have '0'"},
      {"stall", "'stall' wants for SECONDS, have nothing"},
      {"stall 5", "'stall' wants for SECONDS, have '5'"},
      {"stall for", "'stall' wants seconds from 0.001 to 86400, have nothing"},
      {"stall for 1 after", "'stall' wants bytes from 0 to 999999999, have nothing"},
      {"disconnect 5", "'5' does not belong behind 'disconnect'"},
      {"disconnect after 1000000000",
       "'disconnect' wants bytes from 0 to 999999999, have '1000000000'"},
      {"state now", "'now' does not belong behind 'state'"},
      {"quit quit", "'quit' does not belong behind 'quit'"},
  };
  for (const Case& c : cases) {
    Scenario scenario;
    scenario.kind = ScenarioKind::kGlue;
    scenario.bytes = 77;
    std::string fault;
    EXPECT_FALSE(parseScenario(c.text, &scenario, &fault)) << c.text;
    EXPECT_EQ(c.fault, fault) << c.text;
    EXPECT_EQ(ScenarioKind::kGlue, scenario.kind) << c.text;
    EXPECT_EQ(77, scenario.bytes) << c.text;
  }
}

}  // namespace
}  // namespace korvel
