// How a tool's command line reads: spellings of options and values, and the two ways in which
// reading it ends a program.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;

const korvel::Help kHelp = {"Usage: tool", "", {}, nullptr, {}, ""};

// A tool with a flag -q or --quiet, values -o or --out, a text -p, a number --port from 0 to 99,
// and operands. Returns what it understood.
std::string understood(Words line) {
  line.insert(line.begin(), "/usr/bin/tool");
  std::vector<char*> pointers;
  for (std::string& word : line) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  korvel::Arguments words(static_cast<int>(line.size()), pointers.data(), "tool", kHelp);
  std::string text;
  while (words.next()) {
    if (words.is("-q", "--quiet")) {
      text += "quiet;";
    } else if (words.is("-o", "--out")) {
      text += "out=" + words.value() + ";";
    } else if (words.is("-p")) {
      text += "p=" + words.nonEmptyValue() + ";";
    } else if (words.is("--port")) {
      text += "port=" + std::to_string(words.number(0, 99)) + ";";
    } else if (words.isOption()) {
      words.unknown();
    } else {
      text += "operand " + words.text() + ";";
    }
  }
  return text;
}

TEST(Arguments, AreUnderstoodInEverySpelling) {
  const struct {
    const char* sentence;
    Words line;
    const char* want;
  } kCases[] = {
      {"nothing", {}, ""},
      {"a flag, short and long", {"-q", "--quiet"}, "quiet;quiet;"},
      {"a value in the next word", {"--out", "a", "-o", "b"}, "out=a;out=b;"},
      {"a value in the same word", {"--out=a=b", "-oc=d"}, "out=a=b;out=c=d;"},
      {"an empty value", {"--out=", "-o", ""}, "out=;out=;"},
      {"a text, once more", {"-p", "a", "-pb"}, "p=a;p=b;"},
      {"a value that looks like an option", {"-o", "--quiet"}, "out=--quiet;"},
      {"a lone dash is an operand", {"-"}, "operand -;"},
      {"operands between options", {"a", "-q", "b"}, "operand a;quiet;operand b;"},
      {"no options after two dashes", {"-q", "--", "-q", "--"}, "quiet;operand -q;operand --;"},
      {"two dashes at the end", {"--"}, ""},
      {"the least and the greatest number", {"--port=0", "--port", "99"}, "port=0;port=99;"},
  };
  for (const auto& c : kCases) EXPECT_EQ(understood(c.line), c.want) << c.sentence;
}

TEST(Arguments, WrongOnesEndWithStatusTwoAndOneSentence) {
  const struct {
    Words line;
    const char* want;
  } kCases[] = {
      {{"--loud"}, "tool: unknown option '--loud'; see tool --help\n"},
      {{"-qq"}, "tool: -q takes no value; see tool --help\n"},
      {{"--quiet=1"}, "tool: --quiet takes no value; see tool --help\n"},
      {{"-o"}, "tool: -o needs a value; see tool --help\n"},
      {{"-p"}, "tool: -p needs a value; see tool --help\n"},
      {{"-p", ""}, "tool: -p needs a value; see tool --help\n"},
      {{"--port", "100"}, "tool: --port needs a number from 0 to 99, not '100'; see tool --help\n"},
      {{"--port=-1"}, "tool: --port needs a number from 0 to 99, not '-1'; see tool --help\n"},
      {{"--port=1x"}, "tool: --port needs a number from 0 to 99, not '1x'; see tool --help\n"},
      {{"--port="}, "tool: --port needs a number from 0 to 99, not ''; see tool --help\n"},
      {{"--port=99999999999999999999"},
       "tool: --port needs a number from 0 to 99, not '99999999999999999999'; see tool --help\n"},
  };
  for (const auto& c : kCases) {
    EXPECT_EXIT(understood(c.line), testing::ExitedWithCode(2),
                testing::MatcherCast<const std::string&>(testing::Eq(std::string(c.want))))
        << c.want;
  }
}

TEST(Arguments, HelpAndVersionEndWithStatusZero) {
  for (const char* word : {"--help", "--version"}) {
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): inside the matcher, which is counted
    EXPECT_EXIT(understood({"-q", word, "--loud"}), testing::ExitedWithCode(0),
                testing::MatcherCast<const std::string&>(testing::Eq(std::string())))
        << word;
  }
}

}  // namespace
