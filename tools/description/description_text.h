// The text of a printer description: single keywords, comparison, and a way into the library
// that reads descriptions from files only.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_DESCRIPTION_DESCRIPTION_TEXT_H
#define KORVEL_TOOLS_DESCRIPTION_DESCRIPTION_TEXT_H

#include <cups/ppd.h>

#include <string>

namespace korvel {

// The value of a keyword, without its quotes; empty when it is missing.
std::string keyword(const std::string& description, const std::string& name);

// Whether two descriptions differ in nothing but the queue's own defaults.
bool sameDescription(const std::string& one, const std::string& other);

// The choice that stands for any size, and a choice as a user says it.
inline constexpr char kCustomChoice[] = "Custom";
std::string shownChoice(const std::string& choice);

// "Custom.50x80mm" and the like: two numbers and perhaps a unit.
bool isCustomSize(const std::string& choice);

// To be closed with ppdClose; null when the text is no description.
ppd_file_t* openDescription(const std::string& description);

}  // namespace korvel

#endif
