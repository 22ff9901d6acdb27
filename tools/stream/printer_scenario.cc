// Decimals are read as whole thousandths, so that a time is the same number of microseconds
// everywhere.
// SPDX-License-Identifier: Apache-2.0
#include "tools/stream/printer_scenario.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <sstream>
#include <utility>
#include <vector>

#include "tools/stream/printer_model.h"

namespace korvel {
namespace {

constexpr int64_t kMostSeconds = 86400;
constexpr int64_t kMostPages = 9999;
constexpr int64_t kMostBytes = 999999999;
constexpr int64_t kMostNoise = 65536;
constexpr int64_t kDefaultSplit = 5;
constexpr int64_t kHalfAPage = 500;
constexpr int64_t kMostReplies = 10000;

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

// ---- The bytes of a reply ----

std::string trimmed(const std::string& text) {
  const size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return std::string();
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::optional<std::string> bytesOfHex(const std::string& text) {
  std::string digits;
  for (const char c : text) {
    if (c == ' ') continue;
    if (std::isxdigit(static_cast<unsigned char>(c)) == 0) return std::nullopt;
    digits.push_back(c);
  }
  if (digits.empty() || digits.size() % 2 != 0) return std::nullopt;
  std::string bytes;
  for (size_t i = 0; i < digits.size(); i += 2) {
    bytes.push_back(static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

std::optional<std::string> bytesOfPart(const std::string& text) {
  if (text == "ready") return statusReply(kStatusReady);
  if (text == "paper-out") return statusReply(kStatusPaperOut);
  if (text == "cover-open") return statusReply(kStatusCoverOpen);
  return bytesOfHex(text);
}

std::optional<std::string> bytesOfPiece(const std::string& text) {
  std::string joined;
  std::istringstream parts(text);
  for (std::string part; std::getline(parts, part, '+');) {
    const std::optional<std::string> bytes = bytesOfPart(trimmed(part));
    if (!bytes) return std::nullopt;
    joined += *bytes;
  }
  if (joined.empty()) return std::nullopt;
  return joined;
}

std::optional<std::vector<std::string>> piecesOf(const std::string& text) {
  std::vector<std::string> pieces;
  std::istringstream in(text);
  for (std::string piece; std::getline(in, piece, '|');) {
    const std::optional<std::string> bytes = bytesOfPiece(piece);
    if (!bytes) return std::nullopt;
    pieces.push_back(*bytes);
  }
  return pieces;
}

// ---- The parser ----

// Reads a line word by word, and keeps the first fault.
class Parser {
 public:
  explicit Parser(const std::string& text) {
    std::string lower = text;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    std::istringstream in(lower);
    for (std::string word; in >> word;) words_.push_back(word);
  }

  Result<Scenario> parse();

 private:
  std::string next() { return at_ < words_.size() ? words_[at_++] : std::string(); }
  bool nextIs(const char* word) {
    if (at_ >= words_.size() || words_[at_] != word) return false;
    ++at_;
    return true;
  }
  void fail(const std::string& what) {
    if (fault_.empty()) fault_ = what;
  }
  void expected(const std::string& what, const std::string& have) {
    fail("'" + words_[0] + "' needs " + what + ", not " +
         (have.empty() ? "nothing" : "'" + have + "'"));
  }

  // The first word of a scenario, and what parses the others.
  struct Verb {
    const char* word;
    ScenarioKind kind;
    void (Parser::*parse)(Scenario*);
  };
  static const Verb kVerbs[];

  Scenario parseWords();
  void parseNothing(Scenario* /*scenario*/) {}
  void parseOutOfPaper(Scenario* scenario);
  void parseCover(Scenario* scenario);
  void parseSilent(Scenario* scenario);
  void parseReply(Scenario* scenario);
  void parseNoise(Scenario* scenario) { scenario->bytes = number("bytes", 1, kMostNoise); }
  void parseSplit(Scenario* scenario);
  void parseSlow(Scenario* scenario);
  void parseDisconnect(Scenario* scenario) { scenario->bytes = bytesAfter(); }
  void parseStall(Scenario* scenario);
  Micros seconds();
  int64_t pages();
  int64_t page();
  int64_t number(const std::string& what, int64_t least, int64_t most);
  int64_t bytesAfter() { return nextIs("after") ? number("bytes", 0, kMostBytes) : 0; }

  std::vector<std::string> words_;
  size_t at_ = 0;
  std::string fault_;
};

Micros Parser::seconds() {
  const std::string word = next();
  const std::optional<int64_t> value = thousandths(word);
  if (!value || *value < 1 || *value > kMostSeconds * 1000) {
    expected("seconds from 0.001 to 86400", word);
    return 0;
  }
  return *value * 1000;
}

int64_t Parser::pages() {
  const std::string word = next();
  const std::optional<int64_t> value = thousandths(word);
  if (!value || *value > kMostPages * 1000) expected("pages from 0 to 9999, as in 1.5", word);
  return value.value_or(0);
}

int64_t Parser::page() { return (number("page", 1, kMostPages) - 1) * 1000 + kHalfAPage; }

int64_t Parser::number(const std::string& what, int64_t least, int64_t most) {
  const std::string word = next();
  const std::optional<int64_t> value = wholeNumber(word);
  if (!value || *value < least || *value > most) {
    expected(what + " from " + std::to_string(least) + " to " + std::to_string(most), word);
  }
  return value.value_or(least);
}

void Parser::parseOutOfPaper(Scenario* scenario) {
  if (nextIs("for")) scenario->duration = seconds();
  if (nextIs("after")) scenario->milliPages = pages();
}

void Parser::parseCover(Scenario* scenario) {
  if (nextIs("open")) return;
  if (nextIs("close")) {
    scenario->kind = ScenarioKind::kCoverClose;
  } else if (nextIs("for")) {
    scenario->duration = seconds();
    if (nextIs("at")) scenario->milliPages = page();
  } else {
    expected("open, close or for SECONDS", next());
  }
}

void Parser::parseSilent(Scenario* scenario) {
  if (nextIs("off")) {
    scenario->duration = 0;
  } else if (nextIs("for")) {
    scenario->duration = seconds();
  }
}

void Parser::parseReply(Scenario* scenario) {
  std::string answer;
  while (at_ < words_.size() && words_[at_] != "times") {
    answer += (answer.empty() ? "" : " ") + next();
  }
  if (nextIs("times")) scenario->times = number("times", 1, kMostReplies);
  constexpr std::pair<const char*, ReplyKind> kKinds[] = {
      {"true", ReplyKind::kTrue},
      {"nothing", ReplyKind::kNothing},
      {"drain-refused", ReplyKind::kDrainRefused},
      {"drain-ignored", ReplyKind::kDrainIgnored}};
  for (const auto& [word, kind] : kKinds) {
    if (answer != word) continue;
    scenario->reply = kind;
    return;
  }
  const auto pieces = piecesOf(answer);
  if (!pieces || pieces->empty()) expected("an answer or bytes in hex", answer);
  scenario->reply = ReplyKind::kBytes;
  scenario->pieces = pieces.value_or(std::vector<std::string>());
}

void Parser::parseSplit(Scenario* scenario) {
  if (nextIs("off")) return;
  const bool hasBytes = at_ < words_.size();
  scenario->bytes = hasBytes ? number("bytes", 1, kMostBytes) : kDefaultSplit;
}

void Parser::parseSlow(Scenario* scenario) {
  if (!nextIs("off")) scenario->bytes = number("off or bytes per second", 1, kMostBytes);
}

void Parser::parseStall(Scenario* scenario) {
  if (!nextIs("for")) expected("for SECONDS", next());
  scenario->duration = seconds();
  scenario->bytes = bytesAfter();
}

const Parser::Verb Parser::kVerbs[] = {
    {"out-of-paper", ScenarioKind::kOutOfPaper, &Parser::parseOutOfPaper},
    {"load", ScenarioKind::kLoad, &Parser::parseNothing},
    {"cover", ScenarioKind::kCoverOpen, &Parser::parseCover},
    {"silent", ScenarioKind::kSilent, &Parser::parseSilent},
    {"reply", ScenarioKind::kReply, &Parser::parseReply},
    {"noise", ScenarioKind::kNoise, &Parser::parseNoise},
    {"split", ScenarioKind::kSplit, &Parser::parseSplit},
    {"glue", ScenarioKind::kGlue, &Parser::parseNothing},
    {"slow", ScenarioKind::kSlow, &Parser::parseSlow},
    {"stall", ScenarioKind::kStall, &Parser::parseStall},
    {"disconnect", ScenarioKind::kDisconnect, &Parser::parseDisconnect},
    {"state", ScenarioKind::kState, &Parser::parseNothing},
    {"quit", ScenarioKind::kQuit, &Parser::parseNothing}};

Scenario Parser::parseWords() {
  Scenario scenario;
  const auto* verb = std::find_if(std::begin(kVerbs), std::end(kVerbs),
                                  [this](const Verb& each) { return nextIs(each.word); });
  if (verb == std::end(kVerbs)) {
    fail(words_.empty() ? "no scenario is named" : "unknown scenario '" + words_[0] + "'");
    return scenario;
  }
  scenario.kind = verb->kind;
  (this->*verb->parse)(&scenario);
  return scenario;
}

Result<Scenario> Parser::parse() {
  const Scenario parsed = parseWords();
  if (fault_.empty() && at_ < words_.size()) {
    fail("'" + words_[at_] + "' cannot follow '" + words_[at_ - 1] + "'");
  }
  if (!fault_.empty()) return Failure{fault_};
  return parsed;
}

}  // namespace

Result<Scenario> parseScenario(const std::string& text) { return Parser(text).parse(); }

}  // namespace korvel
