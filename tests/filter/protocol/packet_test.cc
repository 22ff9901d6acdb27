// Packets byte by byte: head, command, parameter, length, data, check word, tail.
// Low bytes go first.
// SPDX-License-Identifier: Apache-2.0
#include "protocol/packet.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/hex_text.h"

namespace {

std::string bytesOf(const _ASTRAPV2& record) {
  int64_t length = -1;
  uint8_t* bytes = RapToArray(&record, &length);
  const std::string text = hexText(bytes, static_cast<size_t>(length));
  std::free(bytes);
  return text;
}

TEST(Packet, IsLaidOutAsTheTableSays) {
  struct Case {
    const char* sentence;
    uint8_t command;
    uint8_t parameter;
    const char* data;
    const char* want;
  };
  const Case cases[] = {
      {"without data it has ten bytes", 0x02, 0x00, "", "64 02 00 00 00  00 00 00 00 9B"},
      {"the parameter follows the command", 0x10, 0x40, "", "64 10 40 00 00  00 00 00 00 9B"},
      {"one byte of data", 0x0E, 0x40, "01", "64 0E 40 01 00  01  00 00 00 00 9B"},
      {"data is copied in its order", 0x43, 0x00, "68 01 E8 03",
       "64 43 00 04 00  68 01 E8 03  00 00 00 00 9B"},
      {"data may look like a tail", 0xFF, 0xFF, "9B 64", "64 FF FF 02 00  9B 64  00 00 00 00 9B"},
  };
  for (const Case& c : cases) {
    const auto data = hexBytes(c.data);
    const auto length = static_cast<uint16_t>(data.size());
    EXPECT_EQ(bytesOf(makePacket(c.command, c.parameter, data.data(), length)), hexLine(c.want))
        << c.sentence;
  }
}

TEST(Packet, CarriesEveryFieldOfTheRecord) {
  const uint8_t data[] = {0xAA};
  _ASTRAPV2 record{};
  record.head = 1;
  record.command = 2;
  record.parameter = 3;
  record.dataLength = 1;
  record.data = data;
  record.checkWord = 0x04050607;
  record.tail = 8;
  EXPECT_EQ(bytesOf(record), hexLine("01 02 03 01 00  AA  07 06 05 04  08"));
}

TEST(Packet, HoldsUpToSixteenBitsOfData) {
  struct Case {
    uint16_t length;
    const char* start;
  };
  const Case cases[] = {
      {255, "64 03 00 FF 00"}, {256, "64 03 00 00 01"}, {65535, "64 03 00 FF FF"}};
  for (const Case& c : cases) {
    const std::vector<uint8_t> data(c.length, 0x11);
    const _ASTRAPV2 record = makePacket(3, 0, data.data(), c.length);
    int64_t length = 0;
    uint8_t* bytes = RapToArray(&record, &length);
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(length, c.length + 10);
    EXPECT_EQ(hexText(bytes, 5), c.start);
    EXPECT_EQ(hexText(bytes + 5 + c.length - 1, 6), "11 00 00 00 00 9B");
    std::free(bytes);
  }
}

TEST(Packet, RecordIsPacked) {
  EXPECT_EQ(sizeof(_ASTRAPV2), 1 + 1 + 1 + 2 + sizeof(void*) + 4 + 1);
}

}  // namespace
