// The question that finds printers, byte by byte, and answers: whole, compressed, and damaged.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/dnssd_message.h"

#include <gtest/gtest.h>

namespace {

std::string bytes(const char* text, size_t size) { return {text, size}; }
#define BYTES(text) bytes(text, sizeof(text) - 1)

TEST(DnssdMessage, AsksForInstancesAndForOnePrinter) {
  EXPECT_EQ(korvel::dnssdQuestion("_ipp._tcp.local"),
            BYTES("\0\1\0\0\0\1\0\0\0\0\0\0\4_ipp\4_tcp\5local\0\0\14\0\1"));
  EXPECT_EQ(korvel::dnssdPrinterQuestion("A.b @ c"),
            BYTES("\0\1\0\0\0\1\0\0\0\0\0\0\7A.b @ c\4_ipp\4_tcp\5local\0\0\20\0\1"));
}

// The question at 12; a PTR record to "L @ s", whose name ends as the question's does; SRV with
// port 631; TXT with two pairs and one text without a value.
const std::string kAnswer = BYTES(
    "\0\1\204\0\0\1\0\1\0\0\0\2"
    "\4_ipp\4_tcp\5local\0\0\14\0\1"
    "\300\14\0\14\0\1\0\0\0\12\0\10\5L @ s\300\14"
    "\300\55\0\41\0\1\0\0\0\12\0\12\0\0\0\0\2\167\1s\300\26"
    "\300\55\0\20\0\1\0\0\0\12\0\25\13rp=printers\2q=\0\4flag");

TEST(DnssdMessage, ReadsInstancesWithTheirDetails) {
  const auto found = korvel::dnssdInstances(kAnswer, "_IPP._tcp.local");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].name, "L @ s");
  EXPECT_EQ(found[0].host, "s.local");
  EXPECT_EQ(found[0].port, 631);
  const std::map<std::string, std::string> text = {{"rp", "printers"}, {"q", ""}};
  EXPECT_EQ(found[0].text, text);
  EXPECT_EQ(korvel::dnssdPrinter(kAnswer, "L @ s").port, 631);
  EXPECT_EQ(korvel::dnssdPrinter(kAnswer, "another").name, "");
  EXPECT_TRUE(korvel::dnssdInstances(kAnswer, "_ipps._tcp.local").empty());
}

TEST(DnssdMessage, SurvivesDamage) {
  for (size_t size = 0; size < kAnswer.size(); ++size) {
    EXPECT_LE(korvel::dnssdInstances(kAnswer.substr(0, size), "_ipp._tcp.local").size(), 1u);
  }
  for (size_t place = 0; place < kAnswer.size(); ++place) {
    std::string damaged = kAnswer;
    damaged[place] = static_cast<char>(0xFF);
    EXPECT_LE(korvel::dnssdInstances(damaged, "_ipp._tcp.local").size(), 1u);
  }
  // A name that points to itself.
  const std::string loop = BYTES("\0\1\204\0\0\0\0\1\0\0\0\0\300\14\0\14\0\1\0\0\0\12\0\2\300\14");
  EXPECT_TRUE(korvel::dnssdInstances(loop, "_ipp._tcp.local").empty());
}

}  // namespace
