// The driver is set first and the options after it, because lpadmin looks the options up in the
// PPD that the queue already has.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/queue_setup.h"

#include <sys/wait.h>

#include "tools/common/process.h"
#include "tools/common/translation.h"
#include "tools/description/description_text.h"

namespace korvel {

namespace {

constexpr size_t kLongestName = 127;

// What lpadmin reports, without its warning that printer drivers are deprecated.
std::string lastLine(const std::string& output) {
  std::string line = output.substr(0, output.find_last_not_of('\n') + 1);
  const size_t newline = line.rfind('\n');
  if (newline != std::string::npos) line = line.substr(newline + 1);
  const std::string name = "lpadmin: ";
  return line.starts_with(name) ? line.substr(name.size()) : line;
}

Result<void> runLpadmin(std::vector<std::string> arguments) {
  Program lpadmin;
  lpadmin.arguments = std::move(arguments);
  lpadmin.arguments.insert(lpadmin.arguments.begin(), "lpadmin");
  const Result<ProgramOutput> output = runProgram(lpadmin, kWithOutput);
  if (!output) return Failure{translated("Cannot start lpadmin; install the package cups-client.")};
  if (output.value().waitStatus == 0) return {};
  return Failure{
      filled("The print service refused the queue: \"%s\". Run korvel-setup as root or as a member "
             "of the group lpadmin.",
             lastLine(output.value().text).c_str())};
}

void append(std::vector<std::string>* arguments, const char* option, const std::string& value) {
  if (!value.empty()) arguments->insert(arguments->end(), {option, value});
}

}  // namespace

Result<void> checkName(const std::string& name) {
  const bool good = !name.empty() && name.size() <= kLongestName &&
                    name.find_first_of(" \t/\\?'\"#") == std::string::npos && name[0] != '-';
  if (good) return {};
  return Failure{
      filled("'%s' is not a valid queue name; use letters, digits and underscores.", name.c_str())};
}

Result<void> checkQueueOptions(const std::string& description, const Options& options) {
  const Ppd ppd = openDescription(description);
  if (ppd) return checkOptions(ppd.get(), options, OptionScope::kQueue);
  return Failure{translated("Cannot read the PPD; reinstall the package printer-driver-korvel.")};
}

Result<void> setUp(const QueuePlan& plan) {
  std::vector<std::string> arguments = {"-p", plan.name};
  append(&arguments, "-v", plan.uri);
  append(&arguments, "-m", plan.description.name);
  append(&arguments, "-D", plan.info);
  append(&arguments, "-L", plan.location);
  const Result<void> made = runLpadmin(arguments);
  if (!made) return made;
  arguments = {"-p", plan.name, "-E"};
  if (plan.isNew) append(&arguments, "-o", "printer-error-policy=retry-current-job");
  if (plan.isNew) append(&arguments, "-o", "page-logging-default=on");
  for (const auto& [name, value] : plan.options) append(&arguments, "-o", name + "=" + value);
  return runLpadmin(arguments);
}

}  // namespace korvel
