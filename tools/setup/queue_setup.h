// Makes a queue, or brings one up to date: checked first, then done by lpadmin, so that what
// happens is what a user could have typed.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_QUEUE_SETUP_H
#define KORVEL_TOOLS_SETUP_QUEUE_SETUP_H

#include <string>
#include <utility>
#include <vector>

#include "tools/setup/print_system.h"

namespace korvel {

// Runs a program and takes what it writes. Returns its exit status; -1 when it was not started.
int runProgram(std::vector<std::string> words, std::string* output);
// Runs lpadmin with these arguments. Returns an empty text, or one sentence with the next step.
std::string runLpadmin(std::vector<std::string> words);

using Options = std::vector<std::pair<std::string, std::string>>;

// Words as -o takes them: "PageSize=4x6 noMirrorImage".
Options parseOptions(const std::string& words);

struct QueuePlan {
  std::string name;
  std::string uri;          // empty: keeps the queue's
  Description description;  // without a name: keeps the queue's
  std::string info;         // empty: keeps the queue's
  std::string location;     // empty: keeps the queue's
  Options options;
  bool isNew = true;  // gets the defaults below
};

// All return an empty text, or one sentence with the next step.
std::string checkName(const std::string& name);
std::string checkOptions(const std::string& description, const std::string& bareName,
                         const Options& options);
// A new queue counts its sheets, and tries a job again in its turn when the printer was not there:
// labels keep their order, and none is lost.
std::string setUp(const QueuePlan& plan);

}  // namespace korvel

#endif
