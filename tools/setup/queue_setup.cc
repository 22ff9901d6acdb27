// The driver is set first and the options after it, because lpadmin looks the options up in the
// PPD that the queue already has.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/queue_setup.h"

#include <sys/wait.h>

#include <algorithm>
#include <cctype>
#include <initializer_list>

#include "tools/common/process.h"
#include "tools/common/shown_text.h"
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

// Letters of other scripts are not distinguished from their signs, but blanks, controls and the
// general punctuation, among it what changes the direction of writing, are in no name.
bool isNameCharacter(const std::string& text) {
  const size_t bytes = characterBytes(text);
  if (bytes == 1)
    return std::isalnum(static_cast<unsigned char>(text[0])) != 0 || text[0] == '-' ||
           text[0] == '_';
  if (bytes == 2 && text[0] == '\xC2') return false;  // U+0080 to U+00BF
  if (text.starts_with("\xE2\x80") || text.starts_with("\xE2\x81"))
    return false;  // U+2000 to U+207F
  if (text.starts_with("\xE3\x80\x80") || text.starts_with("\xEF\xBB\xBF")) return false;
  return bytes != 0;
}

bool contains(const std::string& text, std::initializer_list<const char*> parts) {
  return std::any_of(parts.begin(), parts.end(),
                     [&text](const char* part) { return text.find(part) != std::string::npos; });
}

void append(std::vector<std::string>* arguments, const char* option, const std::string& value) {
  if (!value.empty()) arguments->insert(arguments->end(), {option, value});
}

}  // namespace

Failure refusal(const std::string& reason) {
  const char* quoted = reason.c_str();
  if (contains(reason, {"device-uri"})) {
    return {
        filled("The print service does not accept the device URI: \"%s\". Show all devices: "
               "korvel-setup --list",
               quoted)};
  }
  if (contains(reason, {"Forbidden", "Unauthorized", "uthoriz", "Password", "not allowed"})) {
    return {
        filled("The print service refused the queue: \"%s\". Run korvel-setup as root or as a "
               "member of the group lpadmin.",
               quoted)};
  }
  return {
      filled("The print service refused the queue: \"%s\". Details: "
             "/var/log/cups/error_log.",
             quoted)};
}

Result<void> runLpadmin(std::vector<std::string> arguments) {
  Program lpadmin;
  lpadmin.arguments = std::move(arguments);
  lpadmin.arguments.insert(lpadmin.arguments.begin(), "lpadmin");
  const Result<ProgramOutput> output = runProgram(lpadmin, kWithOutput);
  if (!output) return Failure{translated("Cannot start lpadmin; install the package cups-client.")};
  if (output.value().waitStatus == 0) return {};
  return refusal(lastLine(output.value().text));
}

Result<void> checkName(const std::string& name) {
  bool good = !name.empty() && name.size() <= kLongestName && name[0] != '-';
  for (size_t at = 0; good && at < name.size(); at += characterBytes(name.substr(at))) {
    good = isNameCharacter(name.substr(at));
  }
  if (good) return {};
  return Failure{
      filled("'%s' is not a valid queue name; use letters, digits, hyphens and underscores.",
             name.c_str())};
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
