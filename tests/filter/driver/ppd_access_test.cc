// Look-ups in a PPD: marked choices, defaults, missing options.
// Every look-up also accepts a missing PPD.
// SPDX-License-Identifier: Apache-2.0
#include "driver/ppd_access.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "tests/filter/driver/written_ppd.h"
#include "tests/support/temporary_folder.h"

namespace {

struct PpdCloser {
  void operator()(ppd_file_t* ppd) const { ppdClose(ppd); }
};
using Ppd = std::unique_ptr<ppd_file_t, PpdCloser>;

// A PPD in which no choice is marked.
Ppd opened(const std::string& lines, const std::string& modelName = "Z4") {
  const TemporaryFolder folder;
  Ppd ppd(ppdOpenFile(folder.write("test.ppd", writtenPpd(lines, modelName)).c_str()));
  EXPECT_NE(ppd, nullptr);
  return ppd;
}

TEST(PpdChoice, IsTheMarkedOneElseTheDefault) {
  const Ppd ppd = opened(ppdOption("Level", "2", {"1", "2", "3"}));
  ASSERT_NE(pellamPpdGetChoice(ppd.get(), "Level", nullptr), nullptr);
  EXPECT_STREQ(pellamPpdGetChoice(ppd.get(), "Level", nullptr)->choice, "2") << "nothing marked";
  ppdMarkOption(ppd.get(), "Level", "3");
  EXPECT_STREQ(pellamPpdGetChoice(ppd.get(), "Level", "1")->choice, "3") << "marked";
  EXPECT_EQ(pellamPpdGetChoice(ppd.get(), "Other", "1"), nullptr) << "no such option";
  EXPECT_EQ(pellamPpdGetChoice(nullptr, "Level", "1"), nullptr) << "no PPD";
}

TEST(PpdChoice, IsNoneWhenTheDefaultIsNoChoice) {
  const Ppd ppd = opened(ppdOption("Level", "9", {"1", "2"}));
  EXPECT_EQ(pellamPpdGetChoice(ppd.get(), "Level", nullptr), nullptr);
}

TEST(PpdChoice, AsTextOrNumberHasADefault) {
  const Ppd ppd = opened(ppdOption("Level", "12mm", {"12mm", "none", "-7"}));
  EXPECT_STREQ(pellamPpdGetChoiceAsStrDefault(ppd.get(), "Level", "x"), "12mm");
  EXPECT_EQ(pellamPpdGetChoiceAsIntDefault(ppd.get(), "Level", 5), 12);
  ppdMarkOption(ppd.get(), "Level", "none");
  EXPECT_EQ(pellamPpdGetChoiceAsIntDefault(ppd.get(), "Level", 5), 0);
  ppdMarkOption(ppd.get(), "Level", "-7");
  EXPECT_EQ(pellamPpdGetChoiceAsIntDefault(ppd.get(), "Level", 5), -7);
  for (ppd_file_t* file : {ppd.get(), static_cast<ppd_file_t*>(nullptr)}) {
    EXPECT_STREQ(pellamPpdGetChoiceAsStrDefault(file, "Other", "x"), "x");
    EXPECT_EQ(pellamPpdGetChoiceAsStrDefault(file, "Other", nullptr), nullptr);
    EXPECT_EQ(pellamPpdGetChoiceAsIntDefault(file, "Other", -3), -3);
  }
}

TEST(PpdChoice, AsBooleanIsASignedByte) {
  struct Case {
    const char* choice;
    int want;
  };
  const Case cases[] = {
      {"true", 1},  {"True", 1},   {"TRUE", 1}, {"yes", 1},    {"Yes", 1}, {"false", 0},
      {"FALSE", 0}, {"no", 0},     {"No", 0},   {"0", 0},      {"1", 1},   {"2", 2},
      {"127", 127}, {"128", -128}, {"255", -1}, {"256", 0},    {"257", 1}, {"-1", -1},
      {"on", 0},    {"truely", 0}, {"y", 0},    {"Rotate", 0}, {"3x", 3},
  };
  for (const Case& c : cases) {
    const Ppd ppd = opened(ppdOption("Flag", c.choice, {c.choice}));
    EXPECT_EQ(pellamPpdGetChoiceAsBoolDefault(ppd.get(), "Flag", 9), c.want) << c.choice;
  }
  for (const int fallback : {0, 1, 9, -1}) {
    const auto byte = static_cast<signed char>(fallback);
    EXPECT_EQ(pellamPpdGetChoiceAsBoolDefault(nullptr, "Flag", byte), fallback);
  }
}

TEST(PpdAttribute, IsItsValueElseTheDefault) {
  const Ppd ppd = opened(
      "*TestLength: \"12.5mm\"\n"
      "*TestLength wide/Wide: \"-0.25\"\n"
      "*TestText: \"words\"\n");
  struct Case {
    const char* sentence;
    const char* name;
    const char* spec;
    const char* text;
    double number;
  };
  const Case cases[] = {
      {"without a spec", "TestLength", "", "12.5mm", 12.5},
      {"with a spec", "TestLength", "wide", "-0.25", -0.25},
      {"with another spec", "TestLength", "narrow", "fallback", 3.5},
      {"a text that is not a number", "TestText", "", "words", 0.0},
      {"no such attribute", "TestNothing", "", "fallback", 3.5},
  };
  for (const Case& c : cases) {
    EXPECT_STREQ(pellamPpdGetAttrAsStrDefault(ppd.get(), c.name, c.spec, "fallback"), c.text)
        << c.sentence;
    EXPECT_EQ(pellamPpdGetAttrAsFloatDefault(ppd.get(), c.name, c.spec, 3.5), c.number)
        << c.sentence;
  }
  EXPECT_STREQ(pellamPpdGetAttrAsStrDefault(nullptr, "TestText", "", "fallback"), "fallback");
  EXPECT_EQ(pellamPpdGetAttrAsFloatDefault(nullptr, "TestLength", "", 0x1.8p-3), 0x1.8p-3);
}

TEST(PpdAttribute, WithoutAValueIsTheDefault) {
  const Ppd ppd = opened("*TestText: \"words\"\n");
  ppd_attr_t* attribute = ppdFindAttr(ppd.get(), "TestText", "");
  ASSERT_NE(attribute, nullptr);
  char* const value = std::exchange(attribute->value, nullptr);
  EXPECT_STREQ(pellamPpdGetAttrAsStrDefault(ppd.get(), "TestText", "", "fallback"), "fallback");
  EXPECT_EQ(pellamPpdGetAttrAsFloatDefault(ppd.get(), "TestText", "", 3.5), 3.5);
  attribute->value = value;  // freed with the PPD
}

}  // namespace
