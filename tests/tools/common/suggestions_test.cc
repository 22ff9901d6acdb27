// Mistyped names and those that are offered for them.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/suggestions.h"

#include <gtest/gtest.h>

namespace korvel {
namespace {

const std::vector<std::string> kSizes = {"4x6",
                                         "4x8",
                                         "4x4",
                                         "3x4Rotated",
                                         "2x4Rotated",
                                         "1x4Rotated",
                                         "2x4",
                                         "2x2",
                                         "1x2Rotated",
                                         "1x1.5Rotated",
                                         "1x1",
                                         "100x150mm",
                                         "100x100mm",
                                         "50x70mmRotated",
                                         "60x80mm",
                                         "50x70mm",
                                         "30x50mmRotated",
                                         "30x40mmRotated",
                                         "Custom"};
const std::vector<std::string> kOptions = {"PageSize",   "Resolution",   "Darkness",
                                           "Brightness", "HalftoneType", "PaperType",
                                           "PostAction", "ColorModel"};
const std::vector<std::string> kHalftones = {"FloydSteinberg", "None",     "Ordered",
                                             "Burkes",         "Stucki",   "JarvisJudiceNinke",
                                             "Tattoo",         "Tattoo_Z4"};
const std::vector<std::string> kModels = {
    "k220-203", "k220-300", "k220-203-oneway", "r57-203", "m6", "m6-oneway", "z4", "label-203"};

TEST(Suggestions, NameWhatMayHaveBeenMeant) {
  const struct {
    const char* sentence;
    const char* typed;
    const std::vector<std::string>& names;
    const char* nearest;
  } kCases[] = {
      {"sides swapped, or one of them wrong", "2x1", kSizes, "1x2Rotated, 2x4, 2x2, 1x1"},
      {"swapped with a unit", "70x50mm", kSizes,
       "50x70mmRotated, 50x70mm, 60x80mm, 30x50mmRotated"},
      {"no unit", "60x80", kSizes, "60x80mm"},
      {"nothing like it", "A4", kSizes, ""},
      {"a letter is missing", "Darknes", kOptions, "Darkness"},
      {"case", "pagesize", kOptions, "PageSize"},
      {"neighbours swapped", "Drakness", kOptions, "Darkness"},
      {"the beginning", "Post", kOptions, "PostAction"},
      {"another word", "Copies", kOptions, ""},
      {"half of a name", "Steinberg", kHalftones, "FloydSteinberg"},
      {"the beginning of a name", "floyd", kHalftones, "FloydSteinberg"},
      {"a letter is missing, with a longer one", "Tatoo", kHalftones, "Tattoo, Tattoo_Z4"},
      {"a model without its resolution", "k220", kModels, "k220-203, k220-300, k220-203-oneway"},
      {"a model mistyped", "k221-203", kModels, "k220-203, k220-203-oneway"},
      {"a mistyped beginning", "k221", kModels, "k220-203, k220-300, k220-203-oneway"},
      {"another spelling of the beginning", "Colour", kOptions, "ColorModel"},
      {"nothing typed", "", kOptions, ""},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(c.nearest, listed(nearestNames(c.typed, c.names))) << c.sentence;
  }
}

}  // namespace
}  // namespace korvel
