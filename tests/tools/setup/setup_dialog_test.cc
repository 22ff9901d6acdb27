// What counts as a yes to a question, in the words of several languages.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/setup_dialog.h"

#include <gtest/gtest.h>

namespace {

TEST(SetupDialog, AcceptsYesInTheUsersLanguageAndInEnglish) {
  const struct {
    const char* sentence;
    const char* answer;
    const char* yes;
    bool agrees;
  } cases[] = {
      {"the word itself", "yes", "yes", true},
      {"its first letter", "j", "ja", true},
      {"a capital letter", "J", "ja", true},
      {"an English y on a German desk", "y", "ja", true},
      {"an English Yes on a Japanese desk", "Yes", "はい", true},
      {"a letter of several bytes", "は", "はい", true},
      {"no", "no", "yes", false},
      {"a German no", "Nein", "ja", false},
      {"a Japanese no", "いいえ", "はい", false},
      {"a Chinese no", "否", "是", false},
      {"something else", "1", "yes", false},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(korvel::agrees(row.answer, row.yes), row.agrees) << row.sentence;
  }
}

}  // namespace
