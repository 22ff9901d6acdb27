// Names of new queues: the rule is the one that the message states.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tools/setup/queue_setup.h"

namespace {

TEST(QueueName, HasLettersDigitsHyphensAndUnderscoresOnly) {
  const struct {
    std::string name;
    bool good;
  } kCases[] = {
      {"labels", true},
      {"labels-2", true},
      {"K220_203", true},
      {"7", true},
      {"Büro", true},
      {"标签", true},
      {std::string(127, 'a'), true},
      {std::string(128, 'a'), false},
      {"", false},
      {"-p", false},
      {"a b", false},
      {"a/b", false},
      {"a#b", false},
      {"$(id)", false},
      {"a;b", false},
      {"a|b", false},
      {"a&b", false},
      {"`id`", false},
      {"..", false},
      {".", false},
      {"a.b", false},
      {"a*", false},
      {"a@host", false},
      {"a%20b", false},
      {"a\nb", false},
      {"a\x1b[1mb", false},
      {"a\xc2\x9b"
       "b",
       false},
      {"a\xc2\xa0"
       "b",
       false},  // a no-break space
      {"a\xe2\x80\xae"
       "b",
       false},  // turns the direction of writing
      {"a\xe3\x80\x80"
       "b",
       false},           // an ideographic space
      {"a\xfc", false},  // not UTF-8
  };
  for (const auto& c : kCases) {
    const korvel::Result<void> checked = korvel::checkName(c.name);
    EXPECT_EQ(checked.ok(), c.good) << "name: " << c.name;
  }
  EXPECT_EQ(korvel::checkName("a;b").sentence(),
            "'a;b' is not a valid queue name; use letters, digits, hyphens and underscores.");
}

TEST(QueueSetup, ARefusalNamesItsCause) {
  const struct {
    const char* reason;
    const char* want;
  } kCases[] = {
      {"Bad device-uri \"foo:bar\".",
       "The print service does not accept the device URI: \"Bad device-uri \"foo:bar\".\". Show "
       "all "
       "devices: korvel-setup --list"},
      {"Forbidden",
       "The print service refused the queue: \"Forbidden\". Run korvel-setup as root or as a "
       "member of the group lpadmin."},
      {"Unauthorized",
       "The print service refused the queue: \"Unauthorized\". Run korvel-setup as root or as a "
       "member of the group lpadmin."},
      {"Unable to copy PPD file.",
       "The print service refused the queue: \"Unable to copy PPD file.\". Details: "
       "/var/log/cups/error_log."},
  };
  for (const auto& c : kCases) EXPECT_EQ(korvel::refusal(c.reason).sentence, c.want) << c.reason;
}

}  // namespace
