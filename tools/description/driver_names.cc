// One rule for all programs that take the name of a driver.
// SPDX-License-Identifier: Apache-2.0
#include "tools/description/driver_names.h"

#include <algorithm>

#include "tools/common/suggestions.h"

namespace korvel {

namespace {

constexpr char kPrefix[] = "korvel-";

}  // namespace

std::string shortDriverName(const std::string& bareName) {
  return bareName.starts_with(kPrefix) ? bareName.substr(sizeof kPrefix - 1) : bareName;
}

bool meansDriver(const std::string& typed, const std::string& bareName) {
  return typed == bareName || kPrefix + typed == bareName;
}

std::vector<std::string> nearestDrivers(const std::string& typed,
                                        const std::vector<std::string>& bareNames) {
  std::vector<std::string> names;
  for (const std::string& name : bareNames) names.push_back(shortDriverName(name));
  std::sort(names.begin(), names.end());
  return nearestNames(shortDriverName(typed), names);
}

}  // namespace korvel
