// Text from elsewhere (file names, device information) as it is safe to show on a terminal.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_SHOWN_TEXT_H
#define KORVEL_TOOLS_COMMON_SHOWN_TEXT_H

#include <string>
#include <string_view>

namespace korvel {

// Returns `text` with every control character, and every byte that is not UTF-8, as "\x1B". Line
// ends are control characters too.
std::string shown(std::string_view text);

// The same for a text of several lines, whose line ends and tabs are kept.
std::string shownLines(std::string_view text);

// Bytes of the valid UTF-8 character at the start of `text`, or 0.
size_t characterBytes(std::string_view text);

}  // namespace korvel

#endif
