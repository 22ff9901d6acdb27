// Which lines of the print server's error log are a job's errors.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/error_log.h"

#include <gtest/gtest.h>

namespace {

const std::string kDate = " [22/Nov/2026:08:30:23 +0000] ";

struct Case {
  const char* description;
  std::string log;
  std::string want;
};

const Case kCases[] = {
    {"an empty log", "", ""},
    {"nothing of this job", "E" + kDate + "[Job 30] Page too large\n", ""},
    {"errors only",
     "D" + kDate + "[Job 3] Page too large\nE" + kDate + "[Job 3] Paper size must not\n",
     "Paper size must not\n"},
    {"all errors in their order",
     "E" + kDate + "[Job 3] one\nE" + kDate + "[Job 4] other\nE" + kDate + "[Job 3] two\n",
     "one\ntwo\n"},
    {"up to its end", "E" + kDate + "[Job 3] one\nE" + kDate + "[Job 3] Job stopped due to\n",
     "one\n"},
    {"started again: the last time",
     "E" + kDate + "[Job 3] one\nE" + kDate + "[Job 3] Job stopped due to\nE" + kDate +
         "[Job 3] two\nE" + kDate + "[Job 3] Job stopped due to\n",
     "two\n"},
    {"a line without an end", "E" + kDate + "[Job 3] one", "one\n"},
    {"a job's number in a text", "E" + kDate + "[Client 9] [Job 3] one\n", ""},
};

TEST(ErrorLog, HasTheErrorsOfAJob) {
  for (const Case& c : kCases) {
    EXPECT_EQ(korvel::loggedErrors(c.log, 3), c.want) << c.description;
  }
}

}  // namespace
