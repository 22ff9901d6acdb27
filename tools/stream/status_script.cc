// The script's words and bytes.
// SPDX-License-Identifier: Apache-2.0
#include "tools/stream/status_script.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <optional>
#include <sstream>

namespace korvel {
namespace {

constexpr size_t kMostRepeats = 10000;

std::string trimmed(const std::string& text) {
  const size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return std::string();
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// Commas and line ends part entries alike; comments are dropped here.
std::vector<std::string> splitEntries(const std::string& text) {
  std::vector<std::string> entries;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line.substr(0, line.find('#')));
    for (std::string word; std::getline(words, word, ',');) {
      if (!trimmed(word).empty()) entries.push_back(trimmed(word));
    }
  }
  return entries;
}

std::optional<std::string> bytesOfHex(const std::string& text) {
  std::string digits;
  for (const char c : text) {
    if (c == ' ' || c == '\t') continue;
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
  if (text == "out") return statusReply(kStatusPaperOut);
  if (text == "cover") return statusReply(kStatusCoverOpen);
  return bytesOfHex(text);
}

// Replies and bytes with '+' between them arrive in one read.
std::optional<std::string> bytesOfPiece(const std::string& text) {
  std::string glued;
  std::istringstream parts(text);
  for (std::string part; std::getline(parts, part, '+');) {
    const std::optional<std::string> bytes = bytesOfPart(trimmed(part));
    if (!bytes) return std::nullopt;
    glued += *bytes;
  }
  if (glued.empty()) return std::nullopt;
  return glued;
}

std::optional<StatusStep> parseStep(const std::string& text) {
  if (text == "auto") return StatusStep{Answer::kAuto, {}};
  if (text == "none") return StatusStep{Answer::kSilent, {}};
  if (text == "refuse") return StatusStep{Answer::kRefuse, {}};
  if (text == "timeout") return StatusStep{Answer::kNoDrain, {}};
  StatusStep step{Answer::kReply, {}};
  std::istringstream pieces(text);
  for (std::string piece; std::getline(pieces, piece, '|');) {
    const std::optional<std::string> bytes = bytesOfPiece(piece);
    if (!bytes) return std::nullopt;
    step.pieces.push_back(*bytes);
  }
  return step;
}

// Takes "*N" off the end; 0 when what follows the star is not a number in range.
size_t takeRepeats(std::string* entry) {
  const size_t star = entry->rfind('*');
  if (star == std::string::npos) return 1;
  const std::string number = trimmed(entry->substr(star + 1));
  *entry = trimmed(entry->substr(0, star));
  const bool digits = !number.empty() && number.size() < 7 &&
                      std::all_of(number.begin(), number.end(),
                                  [](unsigned char c) { return std::isdigit(c) != 0; });
  const size_t repeats = digits ? static_cast<size_t>(std::stoul(number)) : 0;
  return repeats <= kMostRepeats ? repeats : 0;
}

}  // namespace

std::string statusReply(uint64_t word) {
  std::string reply("\x64\xFF\x00\x08\x00", 5);
  for (int i = 0; i < 8; ++i) reply.push_back(static_cast<char>(word >> (8 * i) & 0xFF));
  return reply;
}

bool parseStatusScript(const std::string& text, StatusScript* script, std::string* fault) {
  StatusScript parsed;
  for (const std::string& whole : splitEntries(text)) {
    std::string entry = whole;
    const size_t repeats = takeRepeats(&entry);
    const std::optional<StatusStep> step = parseStep(entry);
    if (repeats == 0 || !step) {
      *fault = "'" + whole + "' is neither a word of the status script nor bytes in hex";
      return false;
    }
    parsed.insert(parsed.end(), repeats, *step);
  }
  *script = std::move(parsed);
  return true;
}

}  // namespace korvel
