// Lines of --help: widths in columns, and where lines may end.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/text_layout.h"

#include <gtest/gtest.h>

#include "tools/common/help.h"

namespace korvel {
namespace {

TEST(TextLayout, KnowsTheWidthOfCharacters) {
  const struct {
    const char* text;
    size_t width;
  } kCases[] = {{"", 0},        {"label", 5},   {"Größe", 5}, {"żółć", 4}, {"日本", 4},
                {"（dpi）", 7}, {"e\u0301", 1}, {"…", 1},     {"😀", 1}};
  for (const auto& c : kCases) EXPECT_EQ(c.width, displayWidth(c.text)) << c.text;
}

TEST(TextLayout, EndsLinesWhereTheLanguageDoes) {
  const struct {
    const char* sentence;
    const char* text;
    size_t width;
    std::vector<std::string> lines;
  } kCases[] = {
      {"nothing", "", 10, {}},
      {"it fits", "one two", 7, {"one two"}},
      {"at a blank", "one two", 6, {"one", "two"}},
      {"a long word stays whole", "a extraordinary b", 5, {"a", "extraordinary", "b"}},
      {"letters of two bytes are one column", "äöü äöü", 7, {"äöü äöü"}},
      {"not at a no-break space", "one\u00a0: two", 6, {"one\u00a0:", "two"}},
      {"between characters of two columns", "日本語日本", 6, {"日本語", "日本"}},
      {"no line begins with a full stop", "日本語。日本", 6, {"日本", "語。日", "本"}},
      {"nor ends with a bracket", "日本（語）", 6, {"日本", "（語）"}},
      {"between both kinds", "日本dpi語", 7, {"日本dpi", "語"}},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.lines, wrapped(c.text, c.width)) << c.sentence;
}

TEST(Help, AlignsTheTextsOfTheOptions) {
  const Help help = {
      "Usage: tool [OPTION]... FILE\n       tool --list",
      "Does what it does with a file, whose name is so long that this sentence needs two lines.",
      {"-q\tBe quiet.", "--with-a-very-long-name NAME\tA line of its own.",
       "--out DIR\tWrite to DIR, which is created if it does not exist, and which is emptied "
       "first."},
      "List:",
      {"one  two"},
      "Exit status: 0."};
  EXPECT_EQ(helpText(help),
            "Usage: tool [OPTION]... FILE\n"
            "       tool --list\n"
            "Does what it does with a file, whose name is so long that this sentence needs\n"
            "two lines.\n"
            "\n"
            "  -q         Be quiet.\n"
            "  --with-a-very-long-name NAME\n"
            "             A line of its own.\n"
            "  --out DIR  Write to DIR, which is created if it does not exist, and which is\n"
            "             emptied first.\n"
            "  --help     Show a help message and exit.\n"
            "  --version  Show the version and exit.\n"
            "\n"
            "List:\n"
            "  one  two\n"
            "\n"
            "Exit status: 0.\n");
}

}  // namespace
}  // namespace korvel
