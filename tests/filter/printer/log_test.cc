// Log lines as the spooler reads them: a prefix, the text, a line end.
// Nothing is filtered and nothing is put between.
// SPDX-License-Identifier: Apache-2.0
#include "printer/log.h"

#include <gtest/gtest.h>

#include "tests/support/captured_stderr.h"

namespace {

TEST(LogLine, HasThePrefixOfItsLevel) {
  struct Case {
    const char* sentence;
    int level;
    const char* want;
  };
  const Case cases[] = {
      {"progress", 0, "DEBUG:x\n"},
      {"a second debug level", 1, "DEBUG:x\n"},
      {"a warning", 2, "WARN:x\n"},
      {"a recoverable failure", 3, "ERROR:x\n"},
      {"a failure that ends it", 4, "CRIT:x\n"},
      {"the last level", 5, "INVALID:x\n"},
  };
  for (const Case& c : cases) {
    CapturedStderr captured;
    pellamLogCommon(c.level, "x");
    EXPECT_EQ(captured.text(), c.want) << c.sentence;
  }
}

TEST(LogLine, FormatsItsArguments) {
  CapturedStderr captured;
  pellamLogCommon(3, "a %d, b %s, c %f, d %zu, e %%", -7, "two  words", 2.5, size_t{18});
  EXPECT_EQ(captured.text(), "ERROR:a -7, b two  words, c 2.500000, d 18, e %\n");
}

TEST(LogLine, EndsTwiceWhenTheTextEndsItself) {
  CapturedStderr captured;
  pellamLogCommon(0, "PAGE: %d %d\n", 0, 1);
  EXPECT_EQ(captured.text(), "DEBUG:PAGE: 0 1\n\n");
}

TEST(LogLine, StaysInOrderWithWhatOthersWrite) {
  CapturedStderr captured;
  pellamLogCommon(0, "first");
  std::fprintf(stderr, "DEBUG: second\n");
  pellamLogCommon(2, "%s", "");
  EXPECT_EQ(captured.text(), "DEBUG:first\nDEBUG: second\nWARN:\n");
}

}  // namespace
