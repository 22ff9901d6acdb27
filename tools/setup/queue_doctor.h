// Finds what is wrong with a queue, and reports each problem in one sentence with the next step. It
// uses facts only, so that every finding can be tested without a printer.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_QUEUE_DOCTOR_H
#define KORVEL_TOOLS_SETUP_QUEUE_DOCTOR_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/setup/print_system.h"
#include "tools/setup/printer_probe.h"

namespace korvel {

enum class FilterFile { kFine, kMissing, kNotExecutable, kUnsafe, kNotLookedAt };

struct QueueFacts {
  Queue queue;
  std::vector<Job> jobs;      // as jobsToExamine() selects them
  std::string description;    // the queue's PPD
  std::string installed;      // the installed PPD of the same model
  std::string installedName;  // its bare name; empty: none
  std::string filterPath;
  FilterFile filter = FilterFile::kNotLookedAt;
  PrinterReply reply;                // only an idle printer is asked
  std::optional<int> silentSeconds;  // of the connection of a busy queue
  int damagedJob = 0;                // one that was printed from a raster file that is not whole
  int interruptedJob = 0;            // one that the print server's end interrupted
  std::string dumpFolder;
  uint64_t dumpBytes = 0;
};

struct Finding {
  bool fault;        // false: an advice, not a problem
  std::string text;  // one sentence
};

// Whether the filter asks this model for its status; one-way drivers have other model names.
bool asksForStatus(const std::string& description);

std::vector<Finding> examine(const QueueFacts& facts);

}  // namespace korvel

#endif
