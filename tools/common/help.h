// What --help shows, as one message per option, laid out for 80 columns in every language.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_HELP_H
#define KORVEL_TOOLS_COMMON_HELP_H

#include <string>
#include <vector>

namespace korvel {

// English texts, marked with later(...) where they are to be translated; all outlive the help.
struct Help {
  const char* usage;                 // one synopsis per line
  const char* summary;               // what the program does
  std::vector<const char*> options;  // "-n COPIES\tPrint so many copies."
  const char* listTitle;             // above the list; null without one
  std::vector<const char*> list;     // lines that are shown as they are
  const char* status;                // what the exit statuses mean
};

// The whole text in the user's language, with --help and --version as the last options.
std::string helpText(const Help& help);

}  // namespace korvel

#endif
