// A line of the log: E [22/Nov/2026:08:30:23 +0000] [Job 3] Paper size must not less than 1.0
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/error_log.h"

#include <algorithm>
#include <sstream>

namespace korvel {

std::string loggedErrors(const std::string& log, int job) {
  const std::string mark = "] [Job " + std::to_string(job) + "] ";
  std::istringstream lines(log);
  std::string errors;
  bool stopped = false;
  for (std::string line; std::getline(lines, line);) {
    const size_t at = std::min(line.find(']'), line.size());
    if (!line.starts_with("E [") || line.compare(at, mark.size(), mark) != 0) continue;
    if (stopped) errors.clear();
    const std::string text = line.substr(at + mark.size());
    stopped = text.starts_with("Job stopped ");
    if (!stopped) errors += text + "\n";
  }
  return errors;
}

}  // namespace korvel
