// Who is let in: by name, by origin, by token.
// SPDX-License-Identifier: Apache-2.0
#include "studio/gatekeeper.h"

#include <gtest/gtest.h>

namespace {

using korvel::Gatekeeper;
using korvel::Visit;

constexpr char kToken[] = "0123456789abcdef0123456789abcdef";

std::string codeOf(const Gatekeeper& gatekeeper, const Visit& visit) {
  const korvel::Sentence* refused = gatekeeper.refusal(visit);
  return refused == nullptr ? "" : refused->code;
}

TEST(Gatekeeper, OnLoopbackLetsInWhatComesFromHereAndFromPrograms) {
  const struct {
    const char* sentence;
    Visit visit;
    const char* code;
  } kCases[] = {
      {"a program that reads", {"GET", "/api/queues", "127.0.0.1:8631", "", "", false, "", ""}, ""},
      {"a program that prints",
       {"POST", "/api/print", "localhost:8631", "", "", false, "", ""},
       ""},
      {"the IPv6 address", {"GET", "/api/queues", "[::1]:8631", "", "", false, "", ""}, ""},
      {"any case, and a dot behind", {"GET", "/", "LocalHost.:1", "", "", false, "", ""}, ""},
      {"our page",
       {"POST", "/api/documents", "127.0.0.1:8631", "http://127.0.0.1:8631", "same-origin", true,
        "", ""},
       ""},
      {"our page behind a proxy that adds TLS",
       {"POST", "/api/documents", "localhost", "https://localhost", "same-origin", true, "", ""},
       ""},
      {"our page's address without our header",
       {"POST", "/api/documents", "127.0.0.1:8631", "http://127.0.0.1:8631", "same-origin", false,
        "", ""},
       "cross-site"},
      {"a name that was made to point here",
       {"GET", "/", "rebound.example:8631", "", "", false, "", ""},
       "wrong-host"},
      {"a name that only begins like ours",
       {"GET", "/", "localhost.example", "", "", false, "", ""},
       "wrong-host"},
      {"no name", {"GET", "/", "", "", "", false, "", ""}, "wrong-host"},
      {"another site's form",
       {"POST", "/api/print", "127.0.0.1:8631", "http://shop.example", "cross-site", false, "", ""},
       "cross-site"},
      {"another site's form with our header",
       {"POST", "/api/print", "127.0.0.1:8631", "http://shop.example", "", true, "", ""},
       "cross-site"},
      {"a sandboxed frame",
       {"POST", "/api/print", "127.0.0.1:8631", "null", "", true, "", ""},
       "cross-site"},
      {"another port of this machine",
       {"POST", "/api/print", "127.0.0.1:8631", "http://127.0.0.1:80", "same-site", true, "", ""},
       "cross-site"},
      {"another site's picture of our state",
       {"GET", "/api/queues", "127.0.0.1:8631", "", "cross-site", false, "", ""},
       "cross-site"},
      {"another site's link to the page",
       {"GET", "/", "127.0.0.1:8631", "", "cross-site", false, "", ""},
       ""},
      {"a numeric address that is not loopback",
       {"GET", "/", "192.0.2.1:8631", "", "", false, "", ""},
       "wrong-host"},
  };
  const Gatekeeper gatekeeper(true, {}, "");
  for (const auto& c : kCases) EXPECT_EQ(codeOf(gatekeeper, c.visit), c.code) << c.sentence;
}

TEST(Gatekeeper, BeyondLoopbackNeedsTheToken) {
  const std::string cookie = std::string("a=b; ") + korvel::kTokenCookie + "=" + kToken;
  const struct {
    const char* sentence;
    Visit visit;
    const char* code;
  } kCases[] = {
      {"no token", {"GET", "/api/queues", "192.0.2.1:8631", "", "", false, "", ""}, "no-token"},
      {"the page itself", {"GET", "/", "192.0.2.1:8631", "", "", false, "", ""}, ""},
      {"a program's token",
       {"GET", "/api/queues", "192.0.2.1", "", "", false, std::string("Bearer ") + kToken, ""},
       ""},
      {"a wrong token",
       {"GET", "/api/queues", "192.0.2.1", "", "", false, std::string("Bearer ") + kToken + "0",
        ""},
       "no-token"},
      {"a part of the token",
       {"GET", "/api/queues", "192.0.2.1", "", "", false, "Bearer 0123456789abcdef", ""},
       "no-token"},
      {"an empty token",
       {"GET", "/api/queues", "192.0.2.1", "", "", false, "Bearer ", ""},
       "no-token"},
      {"the cookie",
       {"GET", "/api/queues", "print.example", "", "same-origin", false, "", cookie},
       ""},
      {"the cookie from another site",
       {"GET", "/api/queues", "print.example", "", "cross-site", false, "", cookie},
       "cross-site"},
      {"another name",
       {"GET", "/api/queues", "other.example", "", "", false, "", cookie},
       "wrong-host"},
  };
  const Gatekeeper gatekeeper(false, {"Print.Example"}, kToken);
  for (const auto& c : kCases) EXPECT_EQ(codeOf(gatekeeper, c.visit), c.code) << c.sentence;
}

TEST(UnguessableName, Has32DigitsAndNeverComesTwice) {
  const std::string one = korvel::unguessableName();
  EXPECT_EQ(one.size(), 32u);
  EXPECT_EQ(one.find_first_not_of("0123456789abcdef"), std::string::npos);
  EXPECT_NE(one, korvel::unguessableName());
}

}  // namespace
