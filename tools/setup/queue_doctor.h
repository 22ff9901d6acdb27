// What is wrong with a queue, each fault in one sentence with the next step. Looks at facts only,
// so that every finding can be shown without a printer.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_QUEUE_DOCTOR_H
#define KORVEL_TOOLS_SETUP_QUEUE_DOCTOR_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/setup/print_system.h"

namespace korvel {

enum class FilterFile { kFine, kMissing, kNotExecutable, kUnsafe, kNotLookedAt };

// How the printer took a question for its state.
enum class PrinterAnswer { kAnswers, kSilent, kNotReached, kNotAsked };

struct QueueFacts {
  Queue queue;
  Job job;                    // the newest
  std::string description;    // text of the queue's description
  std::string installed;      // text of the installed one of the same name
  std::string installedName;  // its bare name; empty: there is none
  std::string filterPath;
  FilterFile filter = FilterFile::kNotLookedAt;
  PrinterAnswer answer = PrinterAnswer::kNotAsked;
  std::string dumpFolder;
  uint64_t dumpBytes = 0;
};

struct Finding {
  bool fault;        // false: good to know, nothing to mend
  std::string text;  // a sentence
};

std::vector<Finding> examine(const QueueFacts& facts);

}  // namespace korvel

#endif
