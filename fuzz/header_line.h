// A fuzzed input begins with a line of words and numbers, so that a seed can be read and written
// by hand; what follows the line is bytes. Whatever is missing or no number counts as 0.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_FUZZ_HEADER_LINE_H
#define KORVEL_FUZZ_HEADER_LINE_H

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>

class HeaderLine {
 public:
  HeaderLine(const uint8_t* bytes, size_t count)
      : rest_(reinterpret_cast<const char*>(bytes), count) {
    const size_t end = std::min(rest_.find('\n'), rest_.size());
    line_ = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
  }

  bool hasMore() const { return line_.find_first_not_of(' ') != std::string_view::npos; }

  // The next word; empty at the end of the line.
  std::string_view word() {
    line_.remove_prefix(std::min(line_.find_first_not_of(' '), line_.size()));
    const std::string_view found = line_.substr(0, line_.find(' '));
    line_.remove_prefix(found.size());
    return found;
  }

  int number() { return numberIn(word()); }

  // The next word's number brought into low..high by counting round.
  int numberWithin(int low, int high) {
    const int64_t span = int64_t{high} - low + 1;
    const int64_t over = (int64_t{number()} - low) % span;
    return static_cast<int>(low + (over < 0 ? over + span : over));
  }

  // What is left of the line.
  std::string_view remainder() const { return line_; }

  // What follows the line.
  std::string_view rest() const { return rest_; }
  const uint8_t* bytes() const { return reinterpret_cast<const uint8_t*>(rest_.data()); }
  size_t count() const { return rest_.size(); }

  static int numberIn(std::string_view text) {
    int value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
  }

 private:
  std::string_view line_;
  std::string_view rest_;
};

#endif
