// The names by which users call a driver.
// SPDX-License-Identifier: Apache-2.0
#include "tools/description/driver_names.h"

#include <gtest/gtest.h>

namespace {

using Names = std::vector<std::string>;

TEST(DriverNames, AreTypedWithAndWithoutTheMaker) {
  const struct {
    const char* typed;
    const char* bare;
    bool want;
  } kCases[] = {
      {"korvel-z4", "korvel-z4", true},  {"z4", "korvel-z4", true},
      {"z4", "korvel-z4-oneway", false}, {"Z4", "korvel-z4", false},
      {"", "korvel-z4", false},          {"korvel-korvel-z4", "korvel-z4", false},
      {"other", "other", true},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(korvel::meansDriver(c.typed, c.bare), c.want) << c.typed << " " << c.bare;
  }
  EXPECT_EQ(korvel::shortDriverName("korvel-k220-203"), "k220-203");
  EXPECT_EQ(korvel::shortDriverName("other"), "other");
}

TEST(DriverNames, NearestOnesAreShort) {
  const Names all = {"korvel-z4", "korvel-m6", "korvel-r57-300", "korvel-r57-203"};
  const struct {
    const char* typed;
    Names want;
  } kCases[] = {
      {"r58-203", {"r57-203"}},
      {"korvel-r58-203", {"r57-203"}},
      {"r57", {"r57-203", "r57-300"}},
      {"laser", {}},
  };
  for (const auto& c : kCases) EXPECT_EQ(korvel::nearestDrivers(c.typed, all), c.want) << c.typed;
}

}  // namespace
