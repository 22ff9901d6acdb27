// The scenario's words and numbers. Decimals are read as whole thousandths, so that a time is the
// same number of microseconds everywhere.
// SPDX-License-Identifier: Apache-2.0
#include "tools/emulator/printer_scenario.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <sstream>
#include <vector>

namespace korvel {
namespace {

constexpr int64_t kMostSeconds = 86400;
constexpr int64_t kMostPages = 9999;
constexpr int64_t kMostBytes = 999999999;
constexpr int64_t kMostNoise = 65536;
constexpr int64_t kDefaultSplit = 5;
constexpr int64_t kHalfAPage = 500;

bool allDigits(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](unsigned char c) { return std::isdigit(c) != 0; });
}

// A whole number of at most nine digits.
std::optional<int64_t> wholeNumber(const std::string& text) {
  if (text.empty() || text.size() > 9 || !allDigits(text)) return std::nullopt;
  return std::stoll(text);
}

// "2", "0.5" or "1.125" as thousandths.
std::optional<int64_t> thousandths(const std::string& text) {
  const size_t point = std::min(text.find('.'), text.size());
  std::string decimals = point < text.size() ? text.substr(point + 1) : "0";
  if (decimals.empty() || decimals.size() > 3) return std::nullopt;
  decimals.resize(3, '0');
  const std::optional<int64_t> whole = wholeNumber(text.substr(0, point));
  const std::optional<int64_t> part = wholeNumber(decimals);
  if (!whole || !part) return std::nullopt;
  return *whole * 1000 + *part;
}

// Takes a line word by word; the first fault stays.
class Parser {
 public:
  explicit Parser(const std::string& text) {
    std::string lower = text;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    std::istringstream in(lower);
    for (std::string word; in >> word;) words_.push_back(word);
  }

  bool parse(Scenario* scenario, std::string* fault);

 private:
  std::string next() { return at_ < words_.size() ? words_[at_++] : std::string(); }
  bool takes(const char* word) {
    if (at_ >= words_.size() || words_[at_] != word) return false;
    ++at_;
    return true;
  }
  void fail(const std::string& what) {
    if (fault_.empty()) fault_ = what;
  }
  void wants(const std::string& what, const std::string& have) {
    fail("'" + words_[0] + "' wants " + what + ", have " +
         (have.empty() ? "nothing" : "'" + have + "'"));
  }

  void parseWords(Scenario* scenario);
  void parseCover(Scenario* scenario);
  void parseSplit(Scenario* scenario);
  Micros seconds();
  int64_t pages();
  int64_t page();
  int64_t number(const std::string& what, int64_t least, int64_t most);
  int64_t bytesAfter() { return takes("after") ? number("bytes", 0, kMostBytes) : 0; }

  std::vector<std::string> words_;
  size_t at_ = 0;
  std::string fault_;
};

Micros Parser::seconds() {
  const std::string word = next();
  const std::optional<int64_t> value = thousandths(word);
  if (!value || *value < 1 || *value > kMostSeconds * 1000) {
    wants("seconds from 0.001 to 86400", word);
    return 0;
  }
  return *value * 1000;
}

int64_t Parser::pages() {
  const std::string word = next();
  const std::optional<int64_t> value = thousandths(word);
  if (!value || *value > kMostPages * 1000) wants("pages from 0 to 9999, as in 1.5", word);
  return value.value_or(0);
}

int64_t Parser::page() { return (number("page", 1, kMostPages) - 1) * 1000 + kHalfAPage; }

int64_t Parser::number(const std::string& what, int64_t least, int64_t most) {
  const std::string word = next();
  const std::optional<int64_t> value = wholeNumber(word);
  if (!value || *value < least || *value > most) {
    wants(what + " from " + std::to_string(least) + " to " + std::to_string(most), word);
  }
  return value.value_or(least);
}

void Parser::parseCover(Scenario* scenario) {
  scenario->kind = ScenarioKind::kCoverOpen;
  if (takes("open")) return;
  if (takes("close")) {
    scenario->kind = ScenarioKind::kCoverClose;
  } else if (takes("for")) {
    scenario->duration = seconds();
    if (takes("at")) scenario->milliPages = page();
  } else {
    wants("open, close or for SECONDS", next());
  }
}

void Parser::parseSplit(Scenario* scenario) {
  scenario->kind = ScenarioKind::kSplit;
  if (takes("off")) return;
  const bool told = at_ < words_.size();
  scenario->bytes = told ? number("bytes", 1, kMostBytes) : kDefaultSplit;
}

void Parser::parseWords(Scenario* scenario) {
  if (takes("out-of-paper")) {
    scenario->kind = ScenarioKind::kOutOfPaper;
    if (takes("for")) scenario->duration = seconds();
    if (takes("after")) scenario->milliPages = pages();
  } else if (takes("load")) {
    scenario->kind = ScenarioKind::kLoad;
  } else if (takes("cover")) {
    parseCover(scenario);
  } else if (takes("silent")) {
    scenario->kind = ScenarioKind::kSilent;
    if (takes("off")) {
      scenario->duration = 0;
    } else if (takes("for")) {
      scenario->duration = seconds();
    }
  } else if (takes("noise")) {
    scenario->kind = ScenarioKind::kNoise;
    scenario->bytes = number("bytes", 1, kMostNoise);
  } else if (takes("split")) {
    parseSplit(scenario);
  } else if (takes("glue")) {
    scenario->kind = ScenarioKind::kGlue;
  } else if (takes("slow")) {
    scenario->kind = ScenarioKind::kSlow;
    if (!takes("off")) scenario->bytes = number("off or bytes per second", 1, kMostBytes);
  } else if (takes("stall")) {
    scenario->kind = ScenarioKind::kStall;
    if (!takes("for")) wants("for SECONDS", next());
    scenario->duration = seconds();
    scenario->bytes = bytesAfter();
  } else if (takes("disconnect")) {
    scenario->kind = ScenarioKind::kDisconnect;
    scenario->bytes = bytesAfter();
  } else if (takes("state")) {
    scenario->kind = ScenarioKind::kState;
  } else if (takes("quit")) {
    scenario->kind = ScenarioKind::kQuit;
  } else {
    fail(words_.empty() ? "no scenario is named" : "unknown scenario '" + words_[0] + "'");
  }
}

bool Parser::parse(Scenario* scenario, std::string* fault) {
  Scenario parsed;
  parseWords(&parsed);
  if (fault_.empty() && at_ < words_.size()) {
    fail("'" + words_[at_] + "' does not belong behind '" + words_[at_ - 1] + "'");
  }
  if (!fault_.empty()) {
    *fault = fault_;
    return false;
  }
  *scenario = parsed;
  return true;
}

}  // namespace

bool parseScenario(const std::string& text, Scenario* scenario, std::string* fault) {
  return Parser(text).parse(scenario, fault);
}

}  // namespace korvel
