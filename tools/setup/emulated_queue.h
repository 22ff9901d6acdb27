// The emulated printer behind a queue of its own, and the page that tries a queue.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_EMULATED_QUEUE_H
#define KORVEL_TOOLS_SETUP_EMULATED_QUEUE_H

#include <string>

namespace korvel {

struct EmulatedPrinter {
  int port = 9100;
  std::string folder = "sheets";
  bool once = false;  // ends behind its first job
};

// Goes on as the program korvel-printer with the head and the media of `description`. Returns
// only when that fails: one sentence with the next step.
std::string becomePrinter(const EmulatedPrinter& printer, const std::string& description);

// The installed document that tries a printer of this description; empty when there is none.
std::string testPage(const std::string& description);

}  // namespace korvel

#endif
