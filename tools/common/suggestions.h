// Help for a mistyped name: those of the known names that it may have been meant to be.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_SUGGESTIONS_H
#define KORVEL_TOOLS_COMMON_SUGGESTIONS_H

#include <string>
#include <vector>

namespace korvel {

inline constexpr size_t kMostSuggestions = 4;

// At most kMostSuggestions of `names`, the nearest first: equal but for case, beginning alike, with
// the same numbers ("2x1" and "1x2Rotated"), with few typing errors, or containing it. None when
// none is near.
std::vector<std::string> nearestNames(const std::string& typed,
                                      const std::vector<std::string>& names);

// "Light, Middle, Dark"
std::string listed(const std::vector<std::string>& names);

}  // namespace korvel

#endif
