// The bytes that move media, written down from the protocol, and what the decoder reads in them.
// SPDX-License-Identifier: Apache-2.0
#include "tools/stream/feed_commands.h"

#include <gtest/gtest.h>

#include "tests/support/hex_text.h"
#include "tools/stream/stream_listing.h"

namespace {

using korvel::Feed;

const std::string kBegin = "64 0E 40 01 00 00 00 00 00 00 9B ";
const std::string kEnd = "64 0E 40 01 00 01 00 00 00 00 9B ";

std::string listingOf(const std::string& bytes) {
  std::string lines;
  korvel::StreamDecoder decoder(
      [&](const korvel::StreamItem& item) { lines += korvel::itemText(item, 0) + "\n"; });
  decoder.push(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  EXPECT_TRUE(decoder.finish()) << decoder.error();
  return lines;
}

TEST(FeedCommands, AreThoseOfTheFilter) {
  const struct {
    const char* sentence;
    Feed feed;
    bool blackMarks;
    std::string bytes;
    const char* listing;
  } kCases[] = {
      {"to the tear-off edge", Feed::kToEdge, false,
       kBegin + "64 00 00 03 00 03 00 00 00 00 00 00 9B " + kEnd,
       "control 0\nfeed mode 3 lines 0\ncontrol 1\n"},
      {"to the tear-off edge after a black mark", Feed::kToEdge, true,
       kBegin + "64 00 00 03 00 05 00 00 00 00 00 00 9B " + kEnd,
       "control 0\nfeed mode 5 lines 0\ncontrol 1\n"},
      {"back to the print position", Feed::kBack, false,
       kBegin + "64 00 00 03 00 04 00 00 00 00 00 00 9B " + kEnd,
       "control 0\nfeed mode 4 lines 0\ncontrol 1\n"},
      {"cut, and back", Feed::kCut, false,
       kBegin + "64 00 00 03 00 03 00 00 00 00 00 00 9B 64 02 00 00 00 00 00 00 00 9B " + kEnd +
           kBegin + "64 00 00 03 00 04 00 00 00 00 00 00 9B " + kEnd,
       "control 0\nfeed mode 3 lines 0\ncut\ncontrol 1\ncontrol 0\nfeed mode 4 lines 0\n"
       "control 1\n"},
      {"black marks do not change the way back", Feed::kBack, true,
       kBegin + "64 00 00 03 00 04 00 00 00 00 00 00 9B " + kEnd,
       "control 0\nfeed mode 4 lines 0\ncontrol 1\n"},
  };
  for (const auto& c : kCases) {
    const std::string have = korvel::feedCommands(c.feed, c.blackMarks);
    EXPECT_EQ(hexText(have), hexLine(c.bytes)) << c.sentence;
    EXPECT_EQ(listingOf(have), c.listing) << c.sentence;
  }
}

}  // namespace
