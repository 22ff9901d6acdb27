// Writes log lines for the spooler to standard error.
// Buffering is the stream's own: the program makes it line-buffered at start.
// SPDX-License-Identifier: Apache-2.0
#include "printer/log.h"

#include <cstdarg>
#include <cstdio>

void pellamLogCommon(int level, const char* format, ...) {
  static const char* const sLogLevelTexts[] = {
      "DEBUG:", "DEBUG:", "WARN:", "ERROR:", "CRIT:", "INVALID:"};
  std::fprintf(stderr, "%s", sLogLevelTexts[level]);
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stderr, format, arguments);
  va_end(arguments);
  std::fprintf(stderr, "\n");
}
