// A PPD is passed to the library in a file without a name.
// SPDX-License-Identifier: Apache-2.0
#include "tools/description/description_text.h"

#include <sys/mman.h>
#include <unistd.h>

#include <sstream>

#include "tools/common/process.h"

namespace korvel {

std::string keyword(const std::string& description, const std::string& name) {
  std::istringstream lines(description);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("*" + name + ":")) continue;
    const size_t from = line.find_first_not_of(" \t\"", name.size() + 2);
    const size_t to = line.find_last_not_of(" \t\"\r");
    return from == std::string::npos ? "" : line.substr(from, to - from + 1);
  }
  return "";
}

bool sameDescription(const std::string& one, const std::string& other) {
  std::istringstream lines[2] = {std::istringstream(one), std::istringstream(other)};
  const auto next = [](std::istringstream* in, std::string* line) {
    while (std::getline(*in, *line)) {
      if (line->ends_with('\r')) line->pop_back();
      if (!line->starts_with("*Default")) return true;
    }
    line->clear();
    return false;
  };
  for (std::string mine, theirs;;) {
    const bool more = next(&lines[0], &mine);
    if (more != next(&lines[1], &theirs) || mine != theirs) return false;
    if (!more) return true;
  }
}

bool hasCutter(const std::string& description) {
  return description.find("\n*PostAction Cut") != std::string::npos;
}

bool takesSingleSheets(const std::string& description) {
  return description.find("*OpenUI *AntiWrinkle") != std::string::npos;
}

Ppd openDescription(const std::string& description) {
  Descriptor file(memfd_create("description", MFD_CLOEXEC));
  if (!file.isOpen()) return nullptr;
  const ssize_t written = write(file.get(), description.data(), description.size());
  if (written != static_cast<ssize_t>(description.size()) || lseek(file.get(), 0, SEEK_SET) != 0) {
    return nullptr;
  }
  return Ppd(ppdOpenFd(file.release()));  // which closes it
}

}  // namespace korvel
