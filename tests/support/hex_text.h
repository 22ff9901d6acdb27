// Bytes as hex text, so that a table of answers can be read and a failure shows both lines.
// Blanks between the pairs are free: "64 00  00 03" and "64000003" are the same bytes.
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

// The bytes that `text` names. Anything but pairs of digits, blanks and line ends throws.
inline std::vector<uint8_t> hexBytes(std::string_view text) {
  std::vector<uint8_t> bytes;
  int high = -1;
  for (const char c : text) {
    const bool blank = c == ' ' || c == '\n';
    if (blank && high < 0) continue;
    const int value = hexDigitValue(c);  // a blank inside a pair throws here
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

// Any container of bytes: a vector, a string, an array.
template <typename Bytes>
std::string hexText(const Bytes& bytes) {
  return hexText(bytes.data(), bytes.size());
}

// An answer as it stands in a table, its blanks brought into hexText's form.
inline std::string hexLine(std::string_view text) { return hexText(hexBytes(text)); }

#endif
