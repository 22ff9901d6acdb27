// The printer descriptions under test: what each one is, written down once, and how to open it.
// Also runs the spooler's own programs and collects what they say.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_PPD_DESCRIPTIONS_H
#define KORVEL_TESTS_PPD_DESCRIPTIONS_H

#include <cups/ppd.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

struct Description {
  const char* name;      // the file is korvel-<name>.ppd
  const char* nickName;  // what people choose it by
  const char* model;     // its attribute ModelName
  unsigned dpi;
  bool stencil;  // else a label printer
  bool cutter;
  const char* halftone;  // the default
};

// Named in the messages of parameterised tests.
inline void PrintTo(const Description& description, std::ostream* out) { *out << description.name; }

const std::vector<Description>& descriptions();
const Description& description(const std::string& name);
bool reportsStatus(const Description& description);

std::string ppdPath(const Description& description);
std::string ppdText(const Description& description);

using OpenPpd = std::unique_ptr<ppd_file_t, void (*)(ppd_file_t*)>;
// With the defaults marked; null when the spooler's library refuses it.
OpenPpd openPpd(const Description& description);

void forEachOption(const ppd_file_t& ppd, const std::function<void(const ppd_option_t&)>& visit);
// The value of an attribute; "(none)" when there is none.
std::string attribute(ppd_file_t* ppd, const char* name, const char* spec = nullptr);

struct CommandResult {
  int status = -1;  // the exit status; -1 when a signal ended it
  std::string output;
};
// By the shell, in a plain locale; waits for its end.
CommandResult runCommand(const std::string& command);
std::string quoted(const std::string& word);

#endif
