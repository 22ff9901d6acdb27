// Creates or updates a queue: checks the plan, then runs lpadmin, so that users could do the same
// by hand.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_QUEUE_SETUP_H
#define KORVEL_TOOLS_SETUP_QUEUE_SETUP_H

#include <string>
#include <vector>

#include "tools/common/result.h"
#include "tools/description/option_check.h"
#include "tools/setup/print_system.h"

namespace korvel {

// Why lpadmin failed and what helps, by the last line of its output.
Failure refusal(const std::string& reason);

// Runs lpadmin with these arguments.
Result<void> runLpadmin(std::vector<std::string> arguments);

struct QueuePlan {
  std::string name;
  std::string uri;          // empty: keeps the queue's
  Description description;  // without a name: keeps the queue's
  std::string info;         // empty: keeps the queue's
  std::string location;     // empty: keeps the queue's
  Options options;
  bool isNew = true;  // gets the defaults below
};

// Of a new queue: letters of any script, digits, hyphens and underscores, at most 127 bytes.
Result<void> checkName(const std::string& name);

// `description` is the text of the PPD.
Result<void> checkQueueOptions(const std::string& description, const Options& options);

// A new queue logs its pages, and retries the current job when the printer cannot be reached, so
// that the order of the labels is kept.
Result<void> setUp(const QueuePlan& plan);

}  // namespace korvel

#endif
