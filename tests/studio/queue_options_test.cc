// What a driver offers, read from the printer descriptions of this build.
// SPDX-License-Identifier: Apache-2.0
#include "studio/queue_options.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "studio/sentences.h"
#include "tools/common/units.h"

namespace {

using korvel::Choices;
using korvel::QueueDriver;
using nlohmann::json;

std::shared_ptr<const QueueDriver> driver(const std::string& name) {
  std::ifstream in(KORVEL_BUILD_DIR "/ppd/korvel-" + name + ".ppd", std::ios::binary);
  auto opened = QueueDriver::open({std::istreambuf_iterator<char>(in), {}});
  EXPECT_TRUE(opened.ok()) << name;
  return *opened;
}

json find(const json& list, const char* key, const std::string& value) {
  for (const json& entry : list) {
    if (entry.at(key) == value) return entry;
  }
  return nullptr;
}

TEST(QueueDriver, DescribesOptionsSizesAndConflicts) {
  const json label = driver("label-203")->describe("en");
  EXPECT_EQ(label["dpi"], 203);
  const json size = find(label["sizes"], "value", "4x6");
  EXPECT_NEAR(size["width"].get<double>(), 101.6, 0.01);
  EXPECT_NEAR(size["height"].get<double>(), 152.4, 0.01);
  EXPECT_NEAR(size["margins"][0].get<double>(), 0, 0.01);
  EXPECT_EQ(find(label["options"], "name", "HalftoneType")["choices"].size(), 10u);
  EXPECT_EQ(find(label["options"], "name", "AntiWrinkle"), nullptr);
  EXPECT_EQ(find(label["options"], "name", "PageRegion"), nullptr);
  EXPECT_NEAR(label["custom"]["width"][0].get<double>(), 10, 0.01);
  EXPECT_FALSE(label["conflicts"].empty());
  const json stencil = driver("m6")->describe("en");
  EXPECT_EQ(stencil["dpi"], 300);
  const json margins = find(stencil["sizes"], "value", "A4")["margins"];
  EXPECT_NEAR(margins[0].get<double>(), 14.18 * 25.4 / 72, 0.01);
  EXPECT_NEAR(margins[1].get<double>(), 31.16 * 25.4 / 72, 0.01);
  EXPECT_EQ(stencil["custom"], nullptr);
  EXPECT_EQ(find(stencil["options"], "name", "AntiWrinkle")["choices"].size(), 4u);
}

TEST(QueueDriver, SpeaksTheVisitorsLanguageAndElseEnglish) {
  const auto labelOf = [](const char* language) {
    const json option =
        find(driver("label-203")->describe(language)["options"], "name", "MirrorImage");
    return option["label"].get<std::string>();
  };
  EXPECT_EQ(labelOf("en"), "Mirror");
  EXPECT_EQ(labelOf("xx"), "Mirror");
  EXPECT_EQ(labelOf(""), "Mirror");
  EXPECT_EQ(labelOf("../../etc"), "Mirror");
  EXPECT_NE(labelOf("de"), "Mirror");
  EXPECT_NE(labelOf("ja"), labelOf("zh_CN"));
}

TEST(QueueDriver, CompletesChoicesAndRefusesWhatItDoesNotOffer) {
  const struct {
    const char* sentence;
    Choices chosen;
    const char* code;  // empty: taken
  } kCases[] = {
      {"nothing", {}, ""},
      {"a halftone", {{"HalftoneType", "Stucki"}}, ""},
      {"a size of one's own", {{"PageSize", "Custom.50x80mm"}}, ""},
      {"an unknown option", {{"MediaType", "Paper"}}, "bad-setting"},
      {"an option of other filters", {{"fit-to-page", "true"}}, "bad-setting"},
      {"another case", {{"halftonetype", "Stucki"}}, "bad-setting"},
      {"an unknown choice", {{"HalftoneType", "Best"}}, "bad-setting"},
      {"an empty choice", {{"HalftoneType", ""}}, "bad-setting"},
      {"a second option after a blank", {{"HalftoneType", "Stucki Darkness=Dark"}}, "bad-setting"},
      {"a malformed size", {{"PageSize", "Custom.50x80mm x"}}, "bad-setting"},
      {"the bare word", {{"PageSize", "Custom"}}, "bad-setting"},
      {"negative with an ordered halftone",
       {{"NegativeImage", "True"}, {"HalftoneType", "None"}},
       "conflict"},
      {"negative with a stencil halftone",
       {{"NegativeImage", "True"}, {"HalftoneType", "Tattoo"}},
       ""},
  };
  const auto label = driver("label-203");
  for (const auto& c : kCases) {
    const korvel::Result<Choices> complete = label->complete(c.chosen);
    EXPECT_EQ(complete.ok() ? "" : korvel::codeOf(complete.sentence()), c.code) << c.sentence;
    if (!complete.ok()) continue;
    EXPECT_EQ(complete.value().count("PageRegion"), 0u);
    EXPECT_EQ(complete.value().at("Darkness"), "Middle") << c.sentence;
    for (const auto& [name, value] : c.chosen) EXPECT_EQ(complete.value().at(name), value);
  }
}

TEST(QueueDriver, KnowsSizesOfOnesOwn) {
  const korvel::PageGeometry page = driver("label-203")->geometry("Custom.50x80mm");
  EXPECT_NEAR(page.width, 50 * korvel::kPointsPerMm, 0.01);
  EXPECT_NEAR(page.height, 80 * korvel::kPointsPerMm, 0.01);
}

TEST(QueueDriver, RefusesWhatIsNoDescription) { EXPECT_FALSE(QueueDriver::open("hello").ok()); }

}  // namespace
