// Bytes as hex text, so that tables are readable and a failure shows both lines.
// Blanks between the pairs are optional: "64 00  00 03" and "64000003" are the same bytes.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SUPPORT_HEX_TEXT_H
#define KORVEL_TESTS_SUPPORT_HEX_TEXT_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

inline int hexDigitValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  throw std::invalid_argument(std::string("not a hex digit: ") + digit);
}

// Parses `text`. Throws on anything except pairs of digits, blanks and line ends.
inline std::vector<uint8_t> hexBytes(std::string_view text) {
  std::vector<uint8_t> bytes;
  int high = -1;
  for (const char c : text) {
    const bool blank = c == ' ' || c == '\n';
    if (blank && high < 0) continue;
    const int value = hexDigitValue(c);  // throws on a blank inside a pair
    if (high < 0) {
      high = value;
      continue;
    }
    bytes.push_back(static_cast<uint8_t>(high * 16 + value));
    high = -1;
  }
  if (high >= 0) throw std::invalid_argument("half a byte at the end of hex text");
  return bytes;
}

// Upper-case pairs with one blank between them: "64 00 FF".
inline std::string hexText(const void* bytes, size_t count) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  const auto* from = static_cast<const uint8_t*>(bytes);
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    if (i != 0) text += ' ';
    text += kDigits[from[i] >> 4];
    text += kDigits[from[i] & 15];
  }
  return text;
}

// For any container of bytes: a vector, a string, an array.
template <typename Bytes>
std::string hexText(const Bytes& bytes) {
  return hexText(bytes.data(), bytes.size());
}

// An expected result from a table, with its blanks normalised as in hexText.
inline std::string hexLine(std::string_view text) { return hexText(hexBytes(text)); }

#endif
