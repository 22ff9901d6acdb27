// The tests' own parser of printer commands, checked with packets written by hand.
// It must reject everything that a printer could not parse.
// SPDX-License-Identifier: Apache-2.0
#include "tests/job/stream_text.h"

#include <gtest/gtest.h>

namespace {

TEST(StreamText, ShowsEachPacketOnOneLine) {
  struct Case {
    const char* hex;
    const char* line;
  };
  const Case kCases[] = {
      {"64 0E 40 01 00 01 00 00 00 00 9B", "control 1\n"},
      {"64 41 00 01 00 0F 00 00 00 00 9B", "density 15\n"},
      {"64 00 00 03 00 00 2C 01 00 00 00 00 9B", "feed mode 0 lines 300\n"},
      {"64 02 00 00 00 00 00 00 00 9B", "cut\n"},
      {"64 43 00 04 00 68 01 E8 03 00 00 00 00 9B", "area offset 360 width 1000\n"},
      {"64 03 00 02 00 AA 64 00 00 00 00 9B", "image 2 bytes AA 64\n"},
      {"64 10 40 00 00 00 00 00 00 9B", "status request\n"},
  };
  for (const Case& c : kCases) {
    const StreamText stream = readStream(bytesOf(c.hex));
    EXPECT_EQ(stream.fault, "") << c.hex;
    EXPECT_EQ(stream.text(), c.line) << c.hex;
  }
  EXPECT_EQ(readStream(std::string(128, '\0')).text(), "page start\npage start\n");
}

TEST(StreamText, ReportsTheOffsetOfAFramingError) {
  struct Case {
    const char* sentence;
    std::string bytes;
    const char* fault;
  };
  const std::string good = bytesOf("64 02 00 00 00 00 00 00 00 9B");
  const Case kCases[] = {
      {"63 NUL bytes are no page start", std::string(63, '\0'), "offset 0: no head"},
      {"a foreign head", good + bytesOf("65 02 00 00 00 00 00 00 00 9B"), "offset 10: no head"},
      {"a check word", bytesOf("64 02 00 00 00 00 00 01 00 9B"), "offset 0: check word not zero"},
      {"a foreign tail", bytesOf("64 02 00 00 00 00 00 00 00 9C"), "offset 0: no tail"},
      {"too few bytes", good.substr(0, 9), "offset 0: packet cut short"},
      {"too few data bytes", bytesOf("64 03 00 02 00 AA 00 00 00 00 9B"),
       "offset 0: packet cut short"},
      {"a command of no printer", bytesOf("64 05 00 00 00 00 00 00 00 9B"),
       "offset 0: unknown command or parameter"},
      {"a parameter of another command", bytesOf("64 02 40 00 00 00 00 00 00 9B"),
       "offset 0: unknown command or parameter"},
      {"a cut with data", bytesOf("64 02 00 01 00 00 00 00 00 00 9B"), "offset 0: wrong length"},
  };
  for (const Case& c : kCases) EXPECT_EQ(readStream(c.bytes).fault, c.fault) << c.sentence;
}

TEST(StreamText, JoinsTheBlocksOfAPage) {
  struct Case {
    const char* sentence;
    SentPicture picture;
    std::string pbm;
  };
  const Case kCases[] = {
      {"an area narrower than the media defines the row length",
       {16, {bytesOf("80 01 40 02"), bytesOf("FF 00")}},
       "P1\n16 3\n1000000000000001\n0100000000000010\n1111111100000000\n"},
      {"the first of several blocks has four rows",
       {1728, {bytesOf("01 02 03 04"), bytesOf("05")}},
       "P1\n8 5\n00000001\n00000010\n00000011\n00000100\n00000101\n"},
      {"a lone block on the full area is one row",
       {2592, {bytesOf("01 80")}},
       "P1\n16 1\n0000000110000000\n"},
      {"missing bytes are blank",
       {16, {bytesOf("FF FF F0")}},
       "P1\n16 2\n1111111111111111\n"
       "1111000000000000\n"},
      {"wide pictures are packed", {88, {std::string(11, '\x41')}}, "P4\n88 1\nAAAAAAAAAAA"},
  };
  for (const Case& c : kCases) EXPECT_EQ(c.picture.pbm(), c.pbm) << c.sentence;
}

TEST(StreamText, ShowsAChecksumForLongBlocks) {
  EXPECT_EQ(crc32Of("123456789"), 0xCBF43926u);
  const std::string data(49, '1');
  const std::string packet = bytesOf("64 03 00 31 00") + data + bytesOf("00 00 00 00 9B");
  EXPECT_TRUE(readStream(packet).text().starts_with("image 49 bytes crc32 "));
}

}  // namespace
