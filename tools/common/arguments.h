// The words of a tool's command line, one after the other. Ends the program where its neighbours
// would: with status 0 behind --help and --version, with 2 and one sentence for wrong usage.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_ARGUMENTS_H
#define KORVEL_TOOLS_COMMON_ARGUMENTS_H

#include <string>

namespace korvel {

class Arguments {
 public:
  // `usage` is what --help prints; both texts outlive this.
  Arguments(int argc, char** argv, const char* program, const char* usage);

  // Goes on to the next word; false behind the last. --help and --version end here.
  bool next();

  // An option may carry its value in the same word: --name=value, -nvalue. Behind a word -- there
  // are no options. A lone - is not an option: it stands for a standard stream.
  bool isOption() const { return option_; }
  bool is(const std::string& name) const { return option_ && word_ == name; }
  bool is(const std::string& name, const std::string& other) const { return is(name) || is(other); }
  const std::string& word() const { return word_; }  // an option's name, or an operand

  std::string value();                // of the option at hand
  std::string text();                 // its value, which must not be empty
  int number(int least, int most);    // its value in decimal digits
  [[noreturn]] void unknown() const;  // the option or operand at hand has no use
  [[noreturn]] void wrong(const std::string& what) const;

 private:
  void take(const std::string& word);
  void answerHelpAndVersion() const;

  int argc_;
  char** argv_;
  const char* program_;
  const char* usage_;
  int at_ = 0;
  std::string word_, attached_;
  bool option_ = false, hasAttached_ = false, operandsOnly_ = false;
};

}  // namespace korvel

#endif
