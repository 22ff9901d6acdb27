// The decoder and its listing: what each packet reads as, and where a broken stream breaks.
// Streams are hex text, answers are the lines that a person reads.
// SPDX-License-Identifier: Apache-2.0
#include "tools/stream/stream_decoder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/hex_text.h"
#include "tools/stream/stream_listing.h"

namespace {

struct Reading {
  std::string lines;  // with line ends
  std::string error;
};

// Feeds `bytes` in pieces of `step`.
Reading read(const std::vector<uint8_t>& bytes, size_t step) {
  Reading reading;
  korvel::StreamListing listing([&](const std::string& line) { reading.lines += line + "\n"; });
  korvel::StreamDecoder decoder([&](const korvel::StreamItem& item) { listing.add(item); });
  for (size_t at = 0; at < bytes.size(); at += step) {
    decoder.push(bytes.data() + at, std::min(step, bytes.size() - at));
  }
  decoder.finish();
  listing.finish();
  reading.error = decoder.error();
  return reading;
}

std::string zeros(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += "00 ";
  return text;
}

const char kArea8Dots[] = "64 43 00 04 00 58 03 08 00 00 00 00 00 9B ";

}  // namespace

TEST(StreamDecoder, ReadsEveryPacketAsOneLine) {
  struct Case {
    const char* sentence;
    std::string stream;
    const char* lines;
  };
  const Case cases[] = {
      {"an empty stream has no lines", "", ""},
      {"64 NUL bytes start a page", zeros(64), "000000 page start 64 nul\n"},
      {"control 0", "64 0E 40 01 00 00 00 00 00 00 9B", "000000 control 0\n"},
      {"control 1", "64 0E 40 01 00 01 00 00 00 00 9B", "000000 control 1\n"},
      {"density 15", "64 41 00 01 00 0F 00 00 00 00 9B", "000000 density 15\n"},
      {"feed of 300 lines", "64 00 00 03 00 00 2C 01 00 00 00 00 9B",
       "000000 feed mode 0 lines 300\n"},
      {"cut", "64 02 00 00 00 00 00 00 00 9B", "000000 cut\n"},
      {"area of 1000 dots at 360", "64 43 00 04 00 68 01 E8 03 00 00 00 00 9B",
       "000000 area offset 360 width 1000\n"},
      {"status request", "64 10 40 00 00 00 00 00 00 9B", "000000 status request\n"},
      {"image rows as long as the area is wide",
       std::string(kArea8Dots) + "64 03 00 03 00 81 42 81 00 00 00 00 9B",
       "000000 area offset 856 width 8\n000014 image 3 rows x 1 bytes\n"},
      {"an image without an area has no rows", "64 03 00 02 00 AA 55 00 00 00 00 9B",
       "000000 image 2 bytes, rows unknown\n"},
      {"data may look like framing",
       std::string(kArea8Dots) + "64 03 00 02 00 64 9B 00 00 00 00 9B",
       "000000 area offset 856 width 8\n000014 image 2 rows x 1 bytes\n"},
  };
  for (const Case& c : cases) {
    for (const size_t step : {size_t{1}, size_t{7}, size_t{4096}}) {
      const Reading have = read(hexBytes(c.stream), step);
      EXPECT_EQ(c.lines, have.lines) << c.sentence << ", in pieces of " << step;
      EXPECT_EQ("", have.error) << c.sentence << ", in pieces of " << step;
    }
  }
}

TEST(StreamDecoder, NamesTheOffsetWhereAStreamBreaks) {
  struct Case {
    const char* sentence;
    std::string stream;
    const char* error;
  };
  const Case cases[] = {
      {"a stray byte between packets", "64 02 00 00 00 00 00 00 00 9B 07",
       "offset 10: have 0x07, want head 0x64"},
      {"an unknown command", "64 77", "offset 1: have 0x77, want a known command"},
      {"a control with a wrong parameter", "64 0E 00", "offset 2: have 0x00, want parameter 0x40"},
      {"a cut with data", "64 02 00 01 00", "offset 3: have length 1, want length 0"},
      {"a feed of two bytes", "64 00 00 02 00", "offset 3: have length 2, want length 3"},
      {"a length's high byte counts", "64 41 00 01 01", "offset 3: have length 257, want length 1"},
      {"a control of 2", "64 0E 40 01 00 02 00 00 00 00 9B", "offset 5: have 0x02, want 0 to 1"},
      {"a density of 16", "64 41 00 01 00 10 00 00 00 00 9B", "offset 5: have 0x10, want 0 to 15"},
      {"a check word that is not zero", "64 02 00 00 00 00 05 00 00 9B",
       "offset 6: have 0x05, want check word 0x00"},
      {"a wrong tail", "64 02 00 00 00 00 00 00 00 9C", "offset 9: have 0x9C, want tail 0x9B"},
      {"63 NUL bytes and a packet", zeros(63) + "64 02 00 00 00 00 00 00 00 9B",
       "offset 63: have 0x64 after 63 NUL bytes, want 64 of them"},
      {"65 NUL bytes", zeros(65), "offset 64: have 0x00, want head 0x64"},
      {"the end in the middle of a packet", "64 02 00 00 00 00",
       "offset 6: have the end, want the rest of the packet at 0"},
      {"the end in the middle of the NUL bytes", zeros(12),
       "offset 12: have the end after 12 NUL bytes, want 64 of them"},
  };
  for (const Case& c : cases) {
    for (const size_t step : {size_t{1}, size_t{4096}}) {
      EXPECT_EQ(c.error, read(hexBytes(c.stream), step).error)
          << c.sentence << ", in pieces of " << step;
    }
  }
}

TEST(StreamDecoder, TakesNothingMoreAfterABreach) {
  const Reading have =
      read(hexBytes("64 02 00 00 00 00 00 00 00 9C 64 02 00 00 00 00 00 00 00 9B"), 4096);
  EXPECT_EQ("", have.lines);
  EXPECT_EQ("offset 9: have 0x9C, want tail 0x9B", have.error);
}

// A full-width area does not determine the row length; the lengths of the packets may.
TEST(StreamListing, FindsTheRowLengthOfAFullWidthImage) {
  const std::string area = "64 43 00 04 00 00 00 C0 06 00 00 00 00 9B ";  // offset 0 width 1728
  const auto block = [](int bytes) {
    char head[32];
    std::snprintf(head, sizeof head, "64 03 00 %02X %02X ", bytes & 0xFF, bytes >> 8);
    return head + zeros(bytes) + "00 00 00 00 9B ";
  };
  struct Case {
    const char* sentence;
    std::string stream;
    const char* lines;
  };
  const Case cases[] = {
      {"the first of two blocks holds four rows", area + block(4 * 220) + block(2 * 220),
       "000000 area offset 0 width 1728\n000014 image 4 rows x 220 bytes\n"
       "000904 image 2 rows x 220 bytes\n"},
      {"a lone block of one possible row length", area + block(216),
       "000000 area offset 0 width 1728\n000014 image 1 rows x 216 bytes\n"},
      {"a lone block that may be one row or two", area + block(432),
       "000000 area offset 0 width 1728\n000014 image 432 bytes, rows unknown\n"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.lines, read(hexBytes(c.stream), 4096).lines) << c.sentence;
  }
}
