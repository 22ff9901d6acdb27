// The arguments of a tool's command line, one after the other. Ends the program as other commands
// do: with status 0 after --help and --version, with status 2 and one sentence for wrong usage.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_ARGUMENTS_H
#define KORVEL_TOOLS_COMMON_ARGUMENTS_H

#include <string>

#include "tools/common/help.h"
#include "tools/common/result.h"

namespace korvel {

class Arguments {
 public:
  // `program` and `help` outlive this.
  Arguments(int argc, char** argv, const char* program, const Help& help);

  // Moves to the next argument; false after the last. --help and --version end here.
  bool next();

  // An option may have its value in the same argument: --name=value, -nvalue. There are no options
  // after an argument --. A single - is not an option: it is a standard stream.
  bool isOption() const { return option_; }
  bool is(const std::string& name) const { return option_ && text_ == name; }
  bool is(const std::string& name, const std::string& other) const { return is(name) || is(other); }
  const std::string& text() const { return text_; }  // an option's name, or an operand

  std::string value();                // of the current option
  std::string nonEmptyValue();        // of the current option
  int number(int least, int most);    // the value in decimal digits
  [[noreturn]] void unknown() const;  // the current option or operand is not a valid one
  [[noreturn]] void wrong(const std::string& what) const;       // "PROGRAM: what; see --help"
  [[noreturn]] void refuse(const std::string& sentence) const;  // "PROGRAM: sentence"

 private:
  void take(const std::string& argument);
  void answerHelpAndVersion() const;

  int argc_;
  char** argv_;
  const char* program_;
  const Help& help_;
  int at_ = 0;
  std::string text_, attached_;
  bool option_ = false, hasAttached_ = false, operandsOnly_ = false;
};

// Prints "PROGRAM: sentence" to standard error, after everything that went to standard output.
// Returns 1, the exit status of a failed command.
int reportFailure(const char* program, const std::string& sentence);

}  // namespace korvel

#endif
