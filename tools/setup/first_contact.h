// The first contact with the printer of a queue: whether the driver fits what the printer answers.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_FIRST_CONTACT_H
#define KORVEL_TOOLS_SETUP_FIRST_CONTACT_H

#include <string>
#include <vector>

#include "tools/setup/printer_probe.h"

namespace korvel {

struct Contact {
  std::string queue;
  std::string uri;
  std::string driver;  // its bare name
  bool asks = false;   // the driver waits for the printer's status
  PrinterReply reply;
};

// Whether pages would wait for replies that never come.
bool waitsInVain(const Contact& contact);

// What to say after the queue was created: that it is ready, or why it is not, with the next step.
std::vector<std::string> sentencesOf(const Contact& contact);

}  // namespace korvel

#endif
