// Text in columns of a terminal, where a Chinese or Japanese character is two columns wide.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_TEXT_LAYOUT_H
#define KORVEL_TOOLS_COMMON_TEXT_LAYOUT_H

#include <cstddef>
#include <string>
#include <vector>

namespace korvel {

// Columns of a text in UTF-8 without control characters.
size_t displayWidth(const std::string& text);

// The text in lines of at most `width` columns. Lines end at blanks, which are then left out, and
// between Chinese or Japanese characters; what cannot be divided may be wider.
std::vector<std::string> wrapped(const std::string& text, size_t width);

}  // namespace korvel

#endif
