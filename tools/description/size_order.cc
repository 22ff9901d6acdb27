// Only the lines of the option PageSize are moved: the library numbers the sizes by them.
// SPDX-License-Identifier: Apache-2.0
#include "tools/description/size_order.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "tools/description/description_text.h"

namespace korvel {

namespace {

constexpr char kSizeLine[] = "*PageSize ";
constexpr double kTolerance = 5;  // points, of the print server; its own limit is excluded

bool isSizeLine(const std::string& line) { return line.starts_with(kSizeLine); }

std::string nameIn(const std::string& line) {
  const size_t from = sizeof kSizeLine - 1;
  return line.substr(from, line.find_first_of("/:", from) - from);
}

bool isTakenFor(const ppd_size_t& size, const ppd_size_t& wanted) {
  return std::fabs(size.width - wanted.width) < kTolerance &&
         std::fabs(size.length - wanted.length) < kTolerance;
}

}  // namespace

std::vector<std::string> sizeNames(const std::string& description) {
  std::vector<std::string> names;
  std::istringstream lines(description);
  for (std::string line; std::getline(lines, line);) {
    if (isSizeLine(line)) names.push_back(nameIn(line));
  }
  return names;
}

std::string sizeTakenFor(const std::string& description, const std::string& size) {
  const Ppd ppd = openDescription(description);
  const ppd_size_t* wanted = ppd == nullptr ? nullptr : ppdPageSize(ppd.get(), size.c_str());
  for (int i = 0; wanted != nullptr && i < ppd->num_sizes; ++i) {
    const ppd_size_t& one = ppd->sizes[i];
    if (std::string(one.name) != "Custom" && isTakenFor(one, *wanted)) return one.name;
  }
  return size;
}

std::string withSizesFirst(const std::string& description, const std::vector<std::string>& order) {
  std::vector<std::string> lines, sizes;
  std::istringstream in(description);
  for (std::string line; std::getline(in, line);) {
    if (isSizeLine(line)) sizes.push_back(line);
    lines.push_back(line);
  }
  const auto place = [&order](const std::string& line) {
    return std::find(order.begin(), order.end(), nameIn(line)) - order.begin();
  };
  std::stable_sort(
      sizes.begin(), sizes.end(),
      [&](const std::string& one, const std::string& other) { return place(one) < place(other); });
  std::string text;
  auto next = sizes.begin();
  for (const std::string& line : lines) text += (isSizeLine(line) ? *next++ : line) + "\n";
  return text;
}

}  // namespace korvel
