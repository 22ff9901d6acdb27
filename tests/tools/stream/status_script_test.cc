// The scripts that tell an emulated printer's answers.
// Words and hex bytes in, steps out; a mistake is named in one sentence.
// SPDX-License-Identifier: Apache-2.0
#include "tools/stream/status_script.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/hex_text.h"

namespace {

// A step as text: the answer's word, then its pieces as hex.
std::string stepText(const korvel::StatusStep& step) {
  static const char* const kWords[] = {"reply", "auto", "silent", "refuse", "no drain"};
  std::string text = kWords[static_cast<int>(step.answer)];
  for (const std::string& piece : step.pieces) text += " [" + hexText(piece) + "]";
  return text;
}

}  // namespace

TEST(StatusScript, ReadsWordsAndBytes) {
  struct Case {
    const char* sentence;
    const char* script;
    const char* steps;  // a line a step
  };
  const Case cases[] = {
      {"no text is no step", "", ""},
      {"ready", "ready", "reply [64 FF 00 08 00 00 00 80 00 00 00 00 00]\n"},
      {"out", "out", "reply [64 FF 00 08 00 00 00 08 00 00 00 00 00]\n"},
      {"cover", "cover", "reply [64 FF 00 08 00 00 00 01 00 00 00 00 00]\n"},
      {"the words without a reply", "auto, none, refuse, timeout",
       "auto\nsilent\nrefuse\nno drain\n"},
      {"bytes in two pieces", "64 FF | 00", "reply [64 FF] [00]\n"},
      {"bytes glued", "64FF+00", "reply [64 FF 00]\n"},
      {"repeated", "none*3", "silent\nsilent\nsilent\n"},
      {"lines and comments", "none # wait\nrefuse\n", "silent\nrefuse\n"},
  };
  for (const Case& c : cases) {
    korvel::StatusScript script;
    std::string fault;
    ASSERT_TRUE(korvel::parseStatusScript(c.script, &script, &fault)) << c.sentence << fault;
    std::string have;
    for (const korvel::StatusStep& step : script) have += stepText(step) + "\n";
    EXPECT_EQ(c.steps, have) << c.sentence;
  }
}

TEST(StatusScript, NamesTheEntryThatItCannotRead) {
  struct Case {
    const char* sentence;
    const char* script;
    const char* fault;
  };
  const Case cases[] = {
      {"an unknown word", "ready, steady",
       "'steady' is neither a word of the status script nor bytes in hex"},
      {"half a byte", "64 F", "'64 F' is neither a word of the status script nor bytes in hex"},
      {"no repeats at all", "none*0",
       "'none*0' is neither a word of the status script nor bytes in hex"},
  };
  for (const Case& c : cases) {
    korvel::StatusScript script = {korvel::StatusStep{}};
    std::string fault;
    EXPECT_FALSE(korvel::parseStatusScript(c.script, &script, &fault)) << c.sentence;
    EXPECT_EQ(c.fault, fault) << c.sentence;
    EXPECT_EQ(1u, script.size()) << c.sentence << ": the script stays";
  }
}
