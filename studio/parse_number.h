// Numbers as they stand in addresses and queries, in no locale.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_PARSE_NUMBER_H
#define KORVEL_STUDIO_PARSE_NUMBER_H

#include <charconv>
#include <string>
#include <system_error>

namespace korvel {

// False when `text` is more or something else than a number.
template <typename Number>
bool parseNumber(const std::string& text, Number* number) {
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, *number);
  return result.ec == std::errc() && result.ptr == end;
}

// A whole number from 1.
inline bool parseCount(const std::string& text, int* number) {
  return parseNumber(text, number) && *number > 0;
}

}  // namespace korvel

#endif
