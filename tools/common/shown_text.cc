// A terminal acts on control characters: they can move the cursor, change colours, and on some
// terminals do more.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/shown_text.h"

#include <cstdint>

namespace korvel {
namespace {

uint32_t byteAt(std::string_view text, size_t at) { return static_cast<unsigned char>(text[at]); }

// Bytes of a character according to its first one; 0 when it cannot be a first one.
size_t announcedBytes(uint32_t first) {
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first < 0xE0) return 2;
  if (first >= 0xE0 && first < 0xF0) return 3;
  return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

bool isControl(std::string_view character) {
  const uint32_t first = byteAt(character, 0);
  if (first < 0x20 || first == 0x7F) return true;
  return first == 0xC2 && byteAt(character, 1) < 0xA0;  // U+0080 to U+009F
}

void appendEscaped(std::string* text, uint32_t byte) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  *text += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
}

std::string escaped(std::string_view text, std::string_view kept) {
  std::string result;
  while (!text.empty()) {
    const size_t bytes = characterBytes(text);
    const bool isKept = kept.find(text[0]) != std::string_view::npos;
    if (bytes != 0 && (isKept || !isControl(text))) {
      result += text.substr(0, bytes);
      text.remove_prefix(bytes);
      continue;
    }
    for (size_t i = 0; i < (bytes == 0 ? 1 : bytes); ++i) appendEscaped(&result, byteAt(text, i));
    text.remove_prefix(bytes == 0 ? 1 : bytes);
  }
  return result;
}

}  // namespace

size_t characterBytes(std::string_view text) {
  const size_t bytes = text.empty() ? 0 : announcedBytes(byteAt(text, 0));
  if (bytes == 0 || bytes > text.size()) return 0;
  for (size_t i = 1; i < bytes; ++i) {
    if ((byteAt(text, i) & 0xC0u) != 0x80) return 0;
  }
  return bytes;
}

std::string shown(std::string_view text) { return escaped(text, ""); }

std::string shownLines(std::string_view text) { return escaped(text, "\n\t"); }

}  // namespace korvel
