// Orders from JSON and from a query: what is taken, and what is refused.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "studio/api.h"
#include "studio/studio_arguments.h"

namespace {

using korvel::PrintOrder;
using korvel::Result;

TEST(OrderFromJson, TakesEverySetting) {
  const Result<PrintOrder> order = korvel::orderFromJson(
      R"({"queue":"q","page":3,"copies":7,"view":"v","options":{"PageSize":"4x6"},)"
      R"("placement":{"fit":"own","scale":0.5,"right":-3,"down":4.5,"turn":90}})");
  ASSERT_TRUE(order.ok());
  EXPECT_EQ(order.value().queue, "q");
  EXPECT_EQ(order.value().page, 3u);
  EXPECT_EQ(order.value().copies, 7);
  EXPECT_EQ(order.value().choices.at("PageSize"), "4x6");
  EXPECT_EQ(order.value().placement.fit, korvel::Fit::kOwn);
  EXPECT_EQ(order.value().placement.scale, 0.5);
  EXPECT_EQ(order.value().placement.right, -3);
  EXPECT_EQ(order.value().placement.down, 4.5);
  EXPECT_EQ(order.value().placement.turn, 90);
}

TEST(OrderFromJson, RefusesWhatIsMalformedOrOutOfRange) {
  const char* kBodies[] = {
      "",
      "[]",
      "{",
      R"({"options":{}})",
      R"({"queue":7})",
      R"({"queue":""})",
      R"({"queue":"q","options":{"PageSize":4}})",
      R"({"queue":"q","options":{"PageSize":""}})",
      R"({"queue":"q","options":[]})",
      R"({"queue":"q","page":0})",
      R"({"queue":"q","page":501})",
      R"({"queue":"q","copies":0})",
      R"({"queue":"q","copies":101})",
      R"({"queue":"q","copies":"2"})",
      R"({"queue":"q","placement":{"fit":"stretch"}})",
      R"({"queue":"q","placement":{"scale":0}})",
      R"({"queue":"q","placement":{"scale":1e308}})",
      R"({"queue":"q","placement":{"right":1e9}})",
      R"({"queue":"q","placement":{"turn":1e300}})",
      R"({"queue":"q","placement":7})",
  };
  for (const char* body : kBodies) {
    const Result<PrintOrder> order = korvel::orderFromJson(body);
    ASSERT_FALSE(order.ok()) << body;
    EXPECT_EQ(korvel::codeOf(order.sentence()), "bad-request") << body;
  }
  EXPECT_FALSE(korvel::orderFromJson(std::string(60000, '[')).ok());
}

TEST(OrderFromQuery, TakesOptionsOfTheDriverByTheirNames) {
  const Result<PrintOrder> order = korvel::orderFromQuery(
      {{"queue", "labels"}, {"PageSize", "4x6"}, {"fit", "fill"}, {"copies", "2"}, {"title", "x"}});
  ASSERT_TRUE(order.ok());
  EXPECT_EQ(order.value().queue, "labels");
  EXPECT_EQ(order.value().choices, (korvel::Choices{{"PageSize", "4x6"}}));
  EXPECT_EQ(order.value().placement.fit, korvel::Fit::kFill);
  EXPECT_EQ(order.value().copies, 2);
}

TEST(OrderFromQuery, RefusesWhatIsNoNumber) {
  for (const char* name : {"scale", "right", "down", "turn", "page", "copies", "fit"}) {
    for (const char* value : {"", "x", "1x", "nan", "inf", "1e999", " 1"}) {
      EXPECT_FALSE(korvel::orderFromQuery({{"queue", "q"}, {name, value}}).ok()) << name << value;
    }
  }
}

TEST(Listen, IsAnAddressAndAPort) {
  const struct {
    const char* text;
    const char* address;  // null: refused
    int port;
  } kCases[] = {
      {"127.0.0.1:8631", "127.0.0.1", 8631},
      {"0.0.0.0:0", "0.0.0.0", 0},
      {"[::1]:80", "::1", 80},
      {"localhost:80", "127.0.0.1", 80},
      {"8631", nullptr, 0},
      {"127.0.0.1", nullptr, 0},
      {"127.0.0.1:65536", nullptr, 0},
      {"127.0.0.1:-1", nullptr, 0},
      {"example.com:80", nullptr, 0},
      {"127.0.0.1:80 ", nullptr, 0},
  };
  for (const auto& c : kCases) {
    std::string address;
    int port = -1;
    EXPECT_EQ(korvel::splitListen(c.text, &address, &port), c.address != nullptr) << c.text;
    if (c.address == nullptr) continue;
    EXPECT_EQ(address, c.address) << c.text;
    EXPECT_EQ(port, c.port) << c.text;
  }
}

TEST(Sentences, EachHasItsCodeAndStatus) {
  EXPECT_EQ(korvel::codeOf(korvel::kTooLarge.english), "too-large");
  EXPECT_EQ(korvel::statusOf("too-large"), 413);
  EXPECT_EQ(korvel::codeOf("anything else"), "failed");
  EXPECT_EQ(korvel::statusOf("failed"), 500);
}

}  // namespace
