// One parser for all tools, so that they accept the same notations. The version is that of the
// whole package. SPDX-License-Identifier: Apache-2.0
#include "tools/common/arguments.h"

#include <cstdio>
#include <cstdlib>

#include "tools/common/translation.h"

namespace korvel {

Arguments::Arguments(int argc, char** argv, const char* program, const Help& help)
    : argc_(argc), argv_(argv), program_(program), help_(help) {}

bool Arguments::next() {
  if (hasAttached_) wrong(filled("%s takes no value", text_.c_str()));
  if (++at_ >= argc_) return false;
  if (!operandsOnly_ && std::string(argv_[at_]) == "--") {
    operandsOnly_ = true;
    if (++at_ >= argc_) return false;
  }
  take(argv_[at_]);
  answerHelpAndVersion();
  return true;
}

void Arguments::take(const std::string& argument) {
  text_ = argument;
  attached_.clear();
  option_ = !operandsOnly_ && argument.size() > 1 && argument[0] == '-';
  hasAttached_ = false;
  if (!option_) return;
  const bool isLong = argument[1] == '-';
  const size_t end = isLong ? argument.find('=') : 2;
  if (end >= argument.size()) return;
  hasAttached_ = true;
  attached_ = argument.substr(isLong ? end + 1 : end);
  text_ = argument.substr(0, end);
}

void Arguments::answerHelpAndVersion() const {
  if (is("--help")) {
    std::fputs(helpText(help_).c_str(), stdout);
    std::exit(0);
  }
  if (is("--version")) {
    std::printf("%s %s\n", program_, KORVEL_VERSION);
    std::exit(0);
  }
}

std::string Arguments::value() {
  if (hasAttached_) {
    hasAttached_ = false;
    return attached_;
  }
  if (++at_ >= argc_) wrong(filled("%s needs a value", text_.c_str()));
  return argv_[at_];
}

std::string Arguments::nonEmptyValue() {
  std::string text = value();
  if (text.empty()) wrong(filled("%s needs a value", text_.c_str()));
  return text;
}

int Arguments::number(int least, int most) {
  const std::string text = value();
  const bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
  const long number = digits ? std::strtol(text.c_str(), nullptr, 10) : -1;
  if (!digits || number < least || number > most) {
    wrong(filled("%s needs a number from %d to %d, not '%s'", text_.c_str(), least, most,
                 text.c_str()));
  }
  return static_cast<int>(number);
}

void Arguments::unknown() const {
  wrong(option_ ? filled("unknown option '%s'", text_.c_str())
                : filled("unexpected argument '%s'", text_.c_str()));
}

void Arguments::wrong(const std::string& what) const {
  std::fprintf(stderr, "%s\n",
               filled("%s: %s; see %s --help", program_, what.c_str(), program_).c_str());
  std::exit(2);
}

void Arguments::refuse(const std::string& sentence) const {
  reportFailure(program_, sentence);
  std::exit(2);
}

int reportFailure(const char* program, const std::string& sentence) {
  std::fflush(stdout);
  std::fprintf(stderr, "%s: %s\n", program, sentence.c_str());
  return 1;
}

}  // namespace korvel
