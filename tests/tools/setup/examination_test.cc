// Results of the doctor as JSON.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/examination.h"

#include <gtest/gtest.h>

namespace {

TEST(Examination, IsWrittenAsJson) {
  const struct {
    const char* sentence;
    std::vector<korvel::Examination> examinations;
    const char* want;
  } kCases[] = {
      {"nothing", {}, "{\"queues\": []}\n"},
      {"a good queue",
       {{"labels", "Korvel K220", {}}},
       "{\"queues\": [{\"queue\": \"labels\", \"driver\": \"Korvel K220\", \"good\": true, "
       "\"findings\": []}]}\n"},
      {"an advice and a problem, with everything that is escaped",
       {{"a", "K", {{false, "say \"x\\y\""}}}, {"b", "", {{true, "1\n\x1b\xc3\xa4"}, {true, ""}}}},
       "{\"queues\": [{\"queue\": \"a\", \"driver\": \"K\", \"good\": true, \"findings\": "
       "[{\"kind\": \"advice\", \"text\": \"say \\\"x\\\\y\\\"\"}]}, "
       "{\"queue\": \"b\", \"driver\": \"\", \"good\": false, \"findings\": "
       "[{\"kind\": \"problem\", \"text\": \"1\\u000a\\u001b\xc3\xa4\"}, "
       "{\"kind\": \"problem\", \"text\": \"\"}]}]}\n"},
  };
  for (const auto& c : kCases) EXPECT_EQ(korvel::asJson(c.examinations), c.want) << c.sentence;
}

}  // namespace
