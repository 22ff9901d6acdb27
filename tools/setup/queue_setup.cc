// The description is set first and the options after it, for lpadmin looks options up in the
// description that the queue has by then.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/queue_setup.h"

#include <cups/cups.h>
#include <fcntl.h>
#include <spawn.h>
#include <strings.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

#include "tools/common/child_process.h"
#include "tools/common/translation.h"
#include "tools/description/description_text.h"

namespace korvel {

using Words = std::vector<std::string>;

namespace {

// What lpadmin says, without its remark that printer descriptions will not be there for ever.
std::string lastLine(const std::string& output) {
  std::string line = output.substr(0, output.find_last_not_of('\n') + 1);
  const size_t newline = line.rfind('\n');
  if (newline != std::string::npos) line = line.substr(newline + 1);
  const std::string name = "lpadmin: ";
  return line.starts_with(name) ? line.substr(name.size()) : line;
}

void append(Words* words, const char* option, const std::string& value) {
  if (!value.empty()) words->insert(words->end(), {option, value});
}

// Attributes of the queue itself, which no description has.
bool isOfTheQueue(const std::string& name) {
  return name.ends_with("-default") || name.starts_with("printer-") || name.starts_with("job-") ||
         name == "media";
}

std::string choicesOf(const ppd_option_t* option) {
  std::string all;
  for (int i = 0; i < option->num_choices; ++i) {
    all += (i == 0 ? "" : ", ") + shownChoice(option->choices[i].choice);
  }
  return all;
}

bool offers(ppd_file_t* ppd, ppd_option_t* option, const std::string& value) {
  if (strncasecmp(value.c_str(), kCustomChoice, std::strlen(kCustomChoice)) != 0) {
    return ppdFindChoice(option, value.c_str()) != nullptr;
  }
  return ppd->variable_sizes != 0 && std::string(option->keyword) == "PageSize" &&
         isCustomSize(value);
}

std::string checkOption(ppd_file_t* ppd, const std::string& bareName, const std::string& name,
                        const std::string& value) {
  ppd_option_t* option = ppdFindOption(ppd, name.c_str());
  if (option == nullptr) {
    return filled(
        "The description %s has no option %s; korvel-setup -m %s --list shows those that "
        "it has.",
        bareName.c_str(), name.c_str(), bareName.c_str());
  }
  if (offers(ppd, option, value)) return "";
  return filled("The description %s has no %s=%s; it has %s.", bareName.c_str(), name.c_str(),
                value.c_str(), choicesOf(option).c_str());
}

}  // namespace

int runProgram(Words words, std::string* output) {
  const std::vector<char*> pointers = execWords(words);
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return -1;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
  pid_t pid = -1;
  const int fault = posix_spawnp(&pid, pointers[0], &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  char bytes[4096];
  ssize_t count = 0;
  while (fault == 0 && (count = read(ends[0], bytes, sizeof bytes)) > 0) {
    output->append(bytes, static_cast<size_t>(count));
  }
  close(ends[0]);
  int status = -1;
  if (fault != 0 || waitpid(pid, &status, 0) != pid) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string runLpadmin(Words words) {
  words.insert(words.begin(), "lpadmin");
  std::string output;
  const int status = runProgram(words, &output);
  if (status == 0) return "";
  if (status == -1) return translated("lpadmin cannot be started; install cups-client.");
  return filled(
      "The spooler did not take the queue: \"%s\"; run korvel-setup as root or as a "
      "member of the group lpadmin.",
      lastLine(output).c_str());
}

Options parseOptions(const std::string& words) {
  cups_option_t* parsed = nullptr;
  const int count = cupsParseOptions(words.c_str(), 0, &parsed);
  Options options;
  for (int i = 0; i < count; ++i) options.emplace_back(parsed[i].name, parsed[i].value);
  cupsFreeOptions(count, parsed);
  return options;
}

std::string checkName(const std::string& name) {
  const bool good = !name.empty() && name.size() <= 127 &&
                    name.find_first_of(" \t/\\?'\"#") == std::string::npos && name[0] != '-';
  if (good) return "";
  return filled("'%s' cannot name a queue; take letters, digits and underscores.", name.c_str());
}

std::string checkOptions(const std::string& description, const std::string& bareName,
                         const Options& options) {
  ppd_file_t* ppd = openDescription(description);
  if (ppd == nullptr) {
    return filled("The description %s cannot be read; install printer-driver-korvel again.",
                  bareName.c_str());
  }
  std::string fault;
  for (const auto& [name, value] : options) {
    if (fault.empty() && !isOfTheQueue(name)) fault = checkOption(ppd, bareName, name, value);
  }
  ppdClose(ppd);
  return fault;
}

std::string setUp(const QueuePlan& plan) {
  Words words = {"-p", plan.name};
  append(&words, "-v", plan.uri);
  append(&words, "-m", plan.description.name);
  append(&words, "-D", plan.info);
  append(&words, "-L", plan.location);
  std::string fault = runLpadmin(words);
  if (!fault.empty()) return fault;
  words = {"-p", plan.name, "-E"};
  if (plan.isNew) append(&words, "-o", "printer-error-policy=retry-current-job");
  if (plan.isNew) append(&words, "-o", "page-logging-default=on");
  for (const auto& [name, value] : plan.options) append(&words, "-o", name + "=" + value);
  return runLpadmin(words);
}

}  // namespace korvel
