// Texts from elsewhere as they are shown on a terminal.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/shown_text.h"

#include <gtest/gtest.h>

#include "tools/common/translation.h"

namespace {

using namespace std::string_literals;

TEST(ShownText, EscapesWhatATerminalActsOn) {
  const struct {
    const char* description;
    std::string text;
    std::string want;
  } kCases[] = {
      {"plain text", "label.pdf", "label.pdf"},
      {"nothing", "", ""},
      {"letters of other scripts", "Büro 标签 ラベル 🖨", "Büro 标签 ラベル 🖨"},
      {"an escape sequence", "a\x1b[2Jb", "a\\x1B[2Jb"},
      {"line ends and tabs", "a\nb\rc\td", "a\\x0Ab\\x0Dc\\x09d"},
      {"delete and NUL", "a\x7f\0b"s, "a\\x7F\\x00b"},
      {"a control character of two bytes",
       "a\xc2\x9b"
       "31mb",
       "a\\xC2\\x9B31mb"},
      {"a no-break space is no control character",
       "a\xc2\xa0"
       "b",
       "a\xc2\xa0"
       "b"},
      {"bytes that are not UTF-8",
       "B\xfcro \x9b"
       "1m",
       "B\\xFCro \\x9B1m"},
      {"a character that is cut short", "a\xe6\xa0", "a\\xE6\\xA0"},
      {"an overlong form", "\xc0\x9b", "\\xC0\\x9B"},
  };
  for (const auto& c : kCases) EXPECT_EQ(korvel::shown(c.text), c.want) << c.description;
}

TEST(ShownText, KeepsTheLinesOfATextThatHasLines) {
  EXPECT_EQ(korvel::shownLines("a\n\tb\x1b\r"), "a\n\tb\\x1B\\x0D");
}

TEST(ShownText, IsUsedInEveryFilledMessage) {
  EXPECT_EQ(korvel::filled("Cannot read %s: %s.", "a\x1b[1m\nb", "why"),
            "Cannot read a\\x1B[1m\\x0Ab: why.");
  EXPECT_EQ(korvel::filled("one\ntwo %s", "\x1b"), "one\ntwo \\x1B");
}

}  // namespace
