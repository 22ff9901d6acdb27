// The one check of options against a PPD: what korvel-setup accepts as a queue's default, and
// korvel-preview as a job's option.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_DESCRIPTION_OPTION_CHECK_H
#define KORVEL_TOOLS_DESCRIPTION_OPTION_CHECK_H

#include <cups/ppd.h>

#include <string>
#include <utility>
#include <vector>

#include "tools/common/result.h"

namespace korvel {

using Options = std::vector<std::pair<std::string, std::string>>;

// Options as the print commands accept them: "PageSize=4x6 noMirrorImage".
Options parseOptions(const std::string& text);

// The PPD's choice for a page size of one's own, which users enter as "Custom.50x80mm".
inline constexpr char kCustomChoice[] = "Custom";

// The options that are valid although no PPD has them.
enum class OptionScope {
  kJob,    // those of the spooler's filters, whatever the printer: fit-to-page, job-name
  kQueue,  // attributes of the queue itself: printer-error-policy, job-sheets-default
};

// The failure names the first option or choice that is not valid, and those nearest to it.
Result<void> checkOptions(ppd_file_t* ppd, const Options& options, OptionScope scope);

// A choice as users enter it: the PPD's choice Custom of the page size needs width and height.
std::string shownChoice(const std::string& choice);

}  // namespace korvel

#endif
