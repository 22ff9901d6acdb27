// Typing errors are counted by the optimal string alignment distance: insertions, deletions,
// substitutions, and transpositions of neighbours (Damerau 1964).
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/suggestions.h"

#include <algorithm>
#include <cctype>
#include <optional>

namespace korvel {
namespace {

constexpr size_t kLettersPerError = 3;  // a longer name may have more errors
constexpr size_t kShortestPart = 3;     // for names that contain it

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

size_t typingErrors(const std::string& one, const std::string& other) {
  std::vector<std::vector<size_t>> errors(one.size() + 1, std::vector<size_t>(other.size() + 1));
  for (size_t i = 0; i <= one.size(); ++i) errors[i][0] = i;
  for (size_t j = 0; j <= other.size(); ++j) errors[0][j] = j;
  for (size_t i = 1; i <= one.size(); ++i) {
    for (size_t j = 1; j <= other.size(); ++j) {
      const size_t replaced = errors[i - 1][j - 1] + (one[i - 1] == other[j - 1] ? 0 : 1);
      errors[i][j] = std::min({errors[i - 1][j] + 1, errors[i][j - 1] + 1, replaced});
      const bool swapped =
          i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1];
      if (swapped) errors[i][j] = std::min(errors[i][j], errors[i - 2][j - 2] + 1);
    }
  }
  return errors[one.size()][other.size()];
}

// The numbers in a name, in ascending order: "1.25x2.25Rotated" has 1.25 and 2.25.
std::vector<std::string> numbersIn(const std::string& name) {
  std::vector<std::string> numbers;
  bool inNumber = false;
  for (const char c : name) {
    const bool digit = std::isdigit(static_cast<unsigned char>(c)) != 0 || (inNumber && c == '.');
    if (digit && !inNumber) numbers.emplace_back();
    if (digit) numbers.back() += c;
    inNumber = digit;
  }
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

bool haveSameNumbers(const std::string& one, const std::string& other) {
  const std::vector<std::string> numbers = numbersIn(one);
  return numbers.size() > 1 && numbers == numbersIn(other);
}

size_t mostErrors(const std::string& typed) {
  return std::max<size_t>(1, typed.size() / kLettersPerError);
}

// 0 is nearest; nothing when the names are too different.
std::optional<size_t> distance(const std::string& typed, const std::string& name) {
  if (typed.empty()) return std::nullopt;
  if (typed == name) return 0;
  if (haveSameNumbers(typed, name)) return 1;
  const size_t errors = typingErrors(typed, name);
  if (errors <= mostErrors(typed)) return 1 + errors;
  if (name.starts_with(typed)) return 2;
  const bool beginsAlike = typed.size() >= kShortestPart &&
                           typingErrors(typed, name.substr(0, typed.size())) <= mostErrors(typed);
  if (beginsAlike) return 3;
  const bool contains = typed.size() >= kShortestPart && name.find(typed) != std::string::npos;
  const bool contained = name.size() >= kShortestPart && typed.find(name) != std::string::npos;
  return contains || contained ? std::optional<size_t>(4) : std::nullopt;
}

}  // namespace

std::vector<std::string> nearestNames(const std::string& typed,
                                      const std::vector<std::string>& names) {
  std::vector<std::pair<size_t, std::string>> near;
  for (const std::string& name : names) {
    const auto found = distance(lowerCase(typed), lowerCase(name));
    if (found) near.emplace_back(*found, name);
  }
  std::stable_sort(near.begin(), near.end(),
                   [](const auto& one, const auto& other) { return one.first < other.first; });
  std::vector<std::string> nearest;
  for (const auto& [errors, name] : near) {
    if (nearest.size() < kMostSuggestions) nearest.push_back(name);
  }
  return nearest;
}

std::string listed(const std::vector<std::string>& names) {
  std::string all;
  for (const std::string& name : names) all += (all.empty() ? "" : ", ") + name;
  return all;
}

}  // namespace korvel
