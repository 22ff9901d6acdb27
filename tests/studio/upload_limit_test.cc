// Which upload ends when one too many begins.
// SPDX-License-Identifier: Apache-2.0
#include "studio/upload_limit.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using korvel::UploadLimit;

// Uploads are digits, addresses letters: "1a" is upload 1 from address a, "-1" its end.
std::string endedBy(const std::string& events) {
  static const char kConnections[10] = {};
  UploadLimit limit(3);
  std::string ended;
  for (size_t at = 0; at < events.size(); at += 3) {
    if (events[at] == '-') {
      limit.end(&kConnections[events[at + 1] - '0']);
      continue;
    }
    const void* other = limit.begin(&kConnections[events[at] - '0'], events.substr(at + 1, 1));
    if (other != nullptr) ended += std::to_string(static_cast<const char*>(other) - kConnections);
  }
  return ended;
}

TEST(UploadLimit, EndsTheOldestOfTheAddressThatHasMost) {
  const struct {
    const char* description;
    std::string events;
    std::string ended;
  } kCases[] = {
      {"three fit", "1a 2a 3a", ""},
      {"the fourth ends the first", "1a 2a 3a 4a", "1"},
      {"one by one", "1a 2a 3a 4a 5a 6a", "123"},
      {"what has ended leaves room", "1a 2a 3a -2 4a 5a", "1"},
      {"an older one of somebody else stays", "1b 2a 3a 4a", "2"},
      {"also when it is that one's own second", "1b 2a 3a 4b", "2"},
      {"of equals the oldest", "1a 2b 3c 4d", "1"},
      {"an end that is not counted changes nothing", "1a 2a 3a 4a -1 5a", "12"},
  };
  for (const auto& c : kCases) EXPECT_EQ(endedBy(c.events), c.ended) << c.description;
}

}  // namespace
