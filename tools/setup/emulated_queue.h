// The emulated printer of a queue, and the test page of a queue.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_EMULATED_QUEUE_H
#define KORVEL_TOOLS_SETUP_EMULATED_QUEUE_H

#include <string>

#include "tools/common/result.h"

namespace korvel {

struct EmulatedPrinter {
  int port = 9100;
  std::string folder;  // empty: "sheets"
  bool once = false;   // exit after the first job
};

// Replaces this program by korvel-printer, with the print head and media of the PPD `description`.
// Returns only when that fails.
Failure becomePrinter(const EmulatedPrinter& printer, const std::string& description);

// The path of the installed test page for a printer of this PPD.
Result<std::string> testPage(const std::string& description);

}  // namespace korvel

#endif
