// The scenarios of the emulated printer: what each means, and the message for an invalid one.
// Times are microseconds, pages thousandths.
// SPDX-License-Identifier: Apache-2.0
#include "tools/stream/printer_scenario.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/hex_text.h"

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
    const Result<Scenario> parsed = parseScenario(c.text);
    ASSERT_TRUE(parsed.ok()) << c.sentence << ": " << parsed.sentence();
    const Scenario& have = parsed.value();
    EXPECT_EQ(c.kind, have.kind) << c.sentence;
    EXPECT_EQ(c.duration, have.duration) << c.sentence;
    EXPECT_EQ(c.milliPages, have.milliPages) << c.sentence;
    EXPECT_EQ(c.bytes, have.bytes) << c.sentence;
  }
}

// A reply as text: its kind, its pieces as hex, and how often.
std::string replyText(const Scenario& scenario) {
  static const char* const kKinds[] = {"true", "bytes", "nothing", "refused", "ignored"};
  std::string text = kKinds[static_cast<int>(scenario.reply)];
  for (const std::string& piece : scenario.pieces) text += " [" + hexText(piece) + "]";
  return text + " x " + std::to_string(scenario.times);
}

TEST(PrinterScenario, EveryReplyIsUnderstood) {
  const struct {
    const char* text;
    const char* reply;
    bool needsSpooler;
  } kCases[] = {
      {"reply true", "true x 1", false},
      {"reply nothing times 3", "nothing x 3", false},
      {"reply drain-refused", "refused x 1", true},
      {"reply drain-ignored times 2", "ignored x 2", true},
      {"reply ready", "bytes [64 FF 00 08 00 00 00 80 00 00 00 00 00] x 1", false},
      {"reply paper-out", "bytes [64 FF 00 08 00 00 00 08 00 00 00 00 00] x 1", false},
      {"reply cover-open", "bytes [64 FF 00 08 00 00 00 01 00 00 00 00 00] x 1", false},
      {"reply 64 FF | 00", "bytes [64 FF] [00] x 1", false},
      {"reply 64FF+00 times 10000", "bytes [64 FF 00] x 10000", false},
      {"reply 01 + ready", "bytes [01 64 FF 00 08 00 00 00 80 00 00 00 00 00] x 1", false},
  };
  for (const auto& c : kCases) {
    const Result<Scenario> parsed = parseScenario(c.text);
    ASSERT_TRUE(parsed.ok()) << c.text << ": " << parsed.sentence();
    EXPECT_EQ(ScenarioKind::kReply, parsed.value().kind) << c.text;
    EXPECT_EQ(c.reply, replyText(parsed.value())) << c.text;
    EXPECT_EQ(c.needsSpooler, needsSpooler(parsed.value())) << c.text;
  }
}

TEST(PrinterScenario, AFaultIsReportedInOneSentence) {
  struct Case {
    const char* text;
    const char* fault;
  };
  const Case cases[] = {
      {"", "no scenario is named"},
      {"  \t", "no scenario is named"},
      {"paper", "unknown scenario 'paper'"},
      {"out of paper", "unknown scenario 'out'"},
      {"out-of-paper 5", "'5' cannot follow 'out-of-paper'"},
      {"out-of-paper for", "'out-of-paper' needs seconds from 0.001 to 86400, not nothing"},
      {"out-of-paper for ever", "'out-of-paper' needs seconds from 0.001 to 86400, not 'ever'"},
      {"out-of-paper for 0", "'out-of-paper' needs seconds from 0.001 to 86400, not '0'"},
      {"out-of-paper for -1", "'out-of-paper' needs seconds from 0.001 to 86400, not '-1'"},
      {"out-of-paper for 1.", "'out-of-paper' needs seconds from 0.001 to 86400, not '1.'"},
      {"out-of-paper for .5", "'out-of-paper' needs seconds from 0.001 to 86400, not '.5'"},
      {"out-of-paper for 1.2345", "'out-of-paper' needs seconds from 0.001 to 86400, not '1.2345'"},
      {"out-of-paper for 1.2.3", "'out-of-paper' needs seconds from 0.001 to 86400, not '1.2.3'"},
      {"out-of-paper for 86400.001",
       "'out-of-paper' needs seconds from 0.001 to 86400, not '86400.001'"},
      {"out-of-paper for 99999999999999999999",
       "'out-of-paper' needs seconds from 0.001 to 86400, not '99999999999999999999'"},
      {"out-of-paper after x", "'out-of-paper' needs pages from 0 to 9999, as in 1.5, not 'x'"},
      {"out-of-paper after 10000",
       "'out-of-paper' needs pages from 0 to 9999, as in 1.5, not '10000'"},
      {"out-of-paper after 1 for 5", "'for' cannot follow '1'"},
      {"load paper", "'paper' cannot follow 'load'"},
      {"cover", "'cover' needs open, close or for SECONDS, not nothing"},
      {"cover shut", "'cover' needs open, close or for SECONDS, not 'shut'"},
      {"cover open for 5", "'for' cannot follow 'open'"},
      {"cover for 5 at 0", "'cover' needs page from 1 to 9999, not '0'"},
      {"cover for 5 at 1.5", "'cover' needs page from 1 to 9999, not '1.5'"},
      {"silent 5", "'5' cannot follow 'silent'"},
      {"silent off for 5", "'for' cannot follow 'off'"},
      {"silent for 0", "'silent' needs seconds from 0.001 to 86400, not '0'"},
      {"noise", "'noise' needs bytes from 1 to 65536, not nothing"},
      {"noise 0", "'noise' needs bytes from 1 to 65536, not '0'"},
      {"noise 65537", "'noise' needs bytes from 1 to 65536, not '65537'"},
      {"split 0", "'split' needs bytes from 1 to 999999999, not '0'"},
      {"split x", "'split' needs bytes from 1 to 999999999, not 'x'"},
      {"slow", "'slow' needs off or bytes per second from 1 to 999999999, not nothing"},
      {"slow 0", "'slow' needs off or bytes per second from 1 to 999999999, not '0'"},
      {"stall", "'stall' needs for SECONDS, not nothing"},
      {"stall 5", "'stall' needs for SECONDS, not '5'"},
      {"stall for", "'stall' needs seconds from 0.001 to 86400, not nothing"},
      {"stall for 1 after", "'stall' needs bytes from 0 to 999999999, not nothing"},
      {"disconnect 5", "'5' cannot follow 'disconnect'"},
      {"disconnect after 1000000000",
       "'disconnect' needs bytes from 0 to 999999999, not '1000000000'"},
      {"reply", "'reply' needs an answer or bytes in hex, not nothing"},
      {"reply steady", "'reply' needs an answer or bytes in hex, not 'steady'"},
      {"reply 64 F", "'reply' needs an answer or bytes in hex, not '64 f'"},
      {"reply 64 | | 00", "'reply' needs an answer or bytes in hex, not '64 | | 00'"},
      {"reply ready times 0", "'reply' needs times from 1 to 10000, not '0'"},
      {"reply ready times", "'reply' needs times from 1 to 10000, not nothing"},
      {"state now", "'now' cannot follow 'state'"},
      {"quit quit", "'quit' cannot follow 'quit'"},
  };
  for (const Case& c : cases) {
    const Result<Scenario> parsed = parseScenario(c.text);
    ASSERT_FALSE(parsed.ok()) << c.text;
    EXPECT_EQ(c.fault, parsed.sentence()) << c.text;
  }
}

}  // namespace
}  // namespace korvel
