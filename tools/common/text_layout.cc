// Widths by ranges of Unicode, not by the locale: help texts look the same in every terminal.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/text_layout.h"

#include <algorithm>

namespace korvel {
namespace {

struct Range {
  char32_t first, last;
};

// East Asian Wide and Fullwidth characters that catalogues of texts may contain.
constexpr Range kWide[] = {{0x1100, 0x115F}, {0x2E80, 0xA4CF}, {0xAC00, 0xD7A3}, {0xF900, 0xFAFF},
                           {0xFE30, 0xFE4F}, {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}};
constexpr Range kCombining[] = {{0x0300, 0x036F}};
// No line begins with one of the first, or ends with one of the second.
constexpr char32_t kClosing[] = U"、。，．：；！？）」』】》ー…”’)],.:;!?";
constexpr char32_t kOpening[] = U"（「『【《“‘([";

template <size_t N>
bool isIn(char32_t c, const Range (&ranges)[N]) {
  return std::any_of(std::begin(ranges), std::end(ranges),
                     [c](const Range& range) { return c >= range.first && c <= range.last; });
}

template <size_t N>
bool isOneOf(char32_t c, const char32_t (&characters)[N]) {
  return std::find(std::begin(characters), std::end(characters) - 1, c) != std::end(characters) - 1;
}

bool isWide(char32_t c) { return isIn(c, kWide); }

size_t widthOf(char32_t c) { return isIn(c, kCombining) ? 0 : isWide(c) ? 2 : 1; }

// The character that begins at `at`, and its bytes.
char32_t characterAt(const std::string& text, size_t at, size_t* bytes) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  *bytes = 1;
  if (byte(at) < 0xC0) return byte(at);
  const size_t length = byte(at) >= 0xF0 ? 4 : byte(at) >= 0xE0 ? 3 : 2;
  char32_t c = byte(at) & (0xFFu >> (length + 1));
  for (; *bytes < length && at + *bytes < text.size(); ++*bytes) {
    c = c << 6 | (byte(at + *bytes) & 0x3Fu);
  }
  return c;
}

// What stays on one line.
struct Chunk {
  std::string text;
  size_t width = 0;
  bool blankBefore = false;
  char32_t last = 0;
};

bool joins(const Chunk& chunk, char32_t next) {
  if (isOneOf(next, kClosing) || isOneOf(chunk.last, kOpening)) return true;
  return !isWide(chunk.last) && !isWide(next);
}

std::vector<Chunk> chunksOf(const std::string& text) {
  std::vector<Chunk> chunks;
  bool blank = false;
  size_t bytes = 0;
  for (size_t at = 0; at < text.size(); at += bytes) {
    const char32_t c = characterAt(text, at, &bytes);
    if (c == U' ') {
      blank = true;
      continue;
    }
    if (chunks.empty() || blank || !joins(chunks.back(), c)) chunks.push_back({{}, 0, blank, 0});
    Chunk& chunk = chunks.back();
    chunk.text += text.substr(at, bytes);
    chunk.width += widthOf(c);
    chunk.last = c;
    blank = false;
  }
  return chunks;
}

}  // namespace

size_t displayWidth(const std::string& text) {
  size_t width = 0;
  size_t bytes = 0;
  for (size_t at = 0; at < text.size(); at += bytes)
    width += widthOf(characterAt(text, at, &bytes));
  return width;
}

std::vector<std::string> wrapped(const std::string& text, size_t width) {
  std::vector<std::string> lines;
  size_t used = 0;
  for (const Chunk& chunk : chunksOf(text)) {
    const size_t gap = chunk.blankBefore ? 1 : 0;
    if (lines.empty() || used + gap + chunk.width > width) {
      lines.push_back(chunk.text);
      used = chunk.width;
    } else {
      lines.back() += (gap != 0 ? " " : "") + chunk.text;
      used += gap + chunk.width;
    }
  }
  return lines;
}

}  // namespace korvel
