// The emulated printer as tables: what arrives when, the status word after it, and the events it
// reports. At 254 dots per inch and 100 mm per second a row takes a millisecond.
// SPDX-License-Identifier: Apache-2.0
#include "tools/emulator/printer_world.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/support/hex_text.h"

namespace korvel {
namespace {

constexpr uint64_t kPrinting = 0;
constexpr uint64_t kReady = 0x00800000;
constexpr uint64_t kOut = 0x00080000;
constexpr uint64_t kCover = 0x00010000;

struct Row {
  Micros at;
  const char* what;  // an item in words, "break off", "give <scenario>", or nothing
  uint64_t word;
  const char* events;  // the lines, "; " between them
};

struct Story {
  const char* sentence;
  Media media;
  std::vector<Row> rows;
};

// "image FF 81" takes bytes in hex, "image of 8" as many zeros; the others take numbers.
StreamItem itemOf(const std::string& text) {
  std::istringstream in(text);
  std::string word;
  in >> word;
  StreamItem item;
  if (word == "image") {
    item.kind = ItemKind::kImage;
    const std::string rest = text.substr(6);
    if (rest.starts_with("of ")) {
      item.data.assign(std::stoul(rest.substr(3)), 0);
    } else {
      item.data = hexBytes(rest);
    }
    return item;
  }
  std::vector<unsigned> numbers;
  if (word == "page") in >> word;
  for (unsigned number = 0; in >> number;) numbers.push_back(number);
  const auto addWord = [&item](unsigned value) {
    item.data.push_back(static_cast<uint8_t>(value & 0xFF));
    item.data.push_back(static_cast<uint8_t>(value >> 8));
  };
  if (word == "start") item.kind = ItemKind::kPageStart;
  if (word == "control") item.kind = ItemKind::kControl;
  if (word == "density") item.kind = ItemKind::kDensity;
  if (word == "cut") item.kind = ItemKind::kCut;
  if (word == "area") {
    item.kind = ItemKind::kArea;
    addWord(numbers.at(0));
    addWord(numbers.at(1));
  } else if (word == "feed") {
    item.kind = ItemKind::kFeed;
    item.data.push_back(static_cast<uint8_t>(numbers.at(0)));
    addWord(numbers.at(1));
  } else if (!numbers.empty()) {
    item.data.push_back(static_cast<uint8_t>(numbers.at(0)));
  }
  return item;
}

class World {
 public:
  explicit World(Media media)
      : world_(
            {254, 100, media},
            {[this](const std::string& line) { report(line); }, [](unsigned, const PagePicture&) {},
             [this](unsigned number, const SheetPicture& sheet, const char* what) {
               report("sheet " + std::to_string(number) + " " + what + " " +
                      std::to_string(sheet.width()) + " x " + std::to_string(sheet.height()));
             }}) {}

  // Does what a row says and returns the events.
  std::string take(Micros at, const std::string& what) {
    events_.clear();
    if (what.empty()) {
      world_.advance(at);
    } else if (what == "break off") {
      world_.breakOff(at);
    } else if (what.starts_with("give ")) {
      const Result<Scenario> scenario = parseScenario(what.substr(5));
      EXPECT_TRUE(scenario.ok()) << what;
      EXPECT_TRUE(world_.apply(scenario.value(), at));
    } else {
      world_.take(itemOf(what), at);
    }
    return events_;
  }
  PrinterWorld& operator*() { return world_; }

 private:
  void report(const std::string& line) { events_ += (events_.empty() ? "" : "; ") + line; }

  std::string events_;
  PrinterWorld world_;
};

void check(const std::vector<Story>& stories) {
  for (const Story& c : stories) {
    World world(c.media);
    for (const Row& row : c.rows) {
      const std::string where =
          std::string(c.sentence) + ", at " + std::to_string(row.at) + " '" + row.what + "'";
      EXPECT_EQ(row.events, world.take(row.at, row.what)) << where;
      EXPECT_EQ(row.word, (*world).statusWord()) << where;
    }
  }
}

TEST(PrinterWorld, APageMakesItBusyThenOutAndTheNextReady) {
  check({
      {"one page",
       Media::kGap,
       {{0, "", kReady, ""},
        {0, "page start", kReady, "page start"},
        {0, "control 0", kReady, "control 0"},
        {0, "density 8", kReady, "density 8"},
        {0, "control 1", kReady, "control 1"},
        {500, "control 0", kReady, "control 0"},
        {500, "area 8 8", kPrinting, "area offset 8 width 8"},
        {900, "image FF 81", kPrinting, ""},
        {1000, "control 1", kPrinting, "image 2 rows x 1 bytes; control 1"},
        {2999, "", kPrinting, ""},
        {3000, "", kOut, "sheet 1 out 2592 x 2"},
        {900000, "", kOut, ""},
        {900000, "control 0", kOut, "control 0"},
        {900000, "control 1", kOut, "control 1"},
        {900000, "page start", kReady, "page start"}}},
      {"packets of an image are one image",
       Media::kGap,
       {{0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image 01 02 03 04", kPrinting, ""},
        {0, "image 05", kPrinting, ""},
        {0, "control 1", kPrinting, "image 5 rows x 1 bytes; control 1"},
        {5000, "", kOut, "sheet 1 out 2592 x 5"}}},
      {"the sheet waits for the control after it",
       Media::kGap,
       {{0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image FF", kPrinting, ""},
        {0, "feed 0 2", kPrinting, "image 1 rows x 1 bytes; feed mode 0 lines 2"},
        {9000, "", kPrinting, ""},
        {9000, "control 0", kPrinting, "control 0"},
        {9000, "control 1", kOut, "control 1; sheet 1 out 2592 x 3"}}},
      {"time that goes back moves nothing",
       Media::kGap,
       {{5000, "area 0 8", kPrinting, "area offset 0 width 8"},
        {5000, "image FF", kPrinting, ""},
        {5000, "control 1", kPrinting, "image 1 rows x 1 bytes; control 1"},
        {100, "", kPrinting, ""},
        {5999, "", kPrinting, ""},
        {6000, "", kOut, "sheet 1 out 2592 x 1"}}},
      {"a host that does not wait",
       Media::kGap,
       {{0, "page start", kReady, "page start"},
        {0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image FF", kPrinting, ""},
        {0, "control 1", kPrinting, "image 1 rows x 1 bytes; control 1"},
        {0, "page start", kPrinting, "page start"},
        {0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image FF FF", kPrinting, ""},
        {0, "control 1", kPrinting, "image 2 rows x 1 bytes; control 1"},
        {1000, "", kPrinting, "sheet 1 out 2592 x 1"},
        {3000, "", kOut, "sheet 2 out 2592 x 2"}}},
  });
}

TEST(PrinterWorld, FeedsMakeTheSheetAndTakeTheirTime) {
  check({
      {"tear-off on gaps: 100 lines to the edge, 30 of the gap, 3 of the mark",
       Media::kGap,
       {{0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image FF FF", kPrinting, ""},
        {0, "feed 3 0", kPrinting, "image 2 rows x 1 bytes; feed mode 3 lines 0"},
        {0, "control 1", kPrinting, "control 1"},
        {131999, "", kPrinting, ""},
        {132000, "", kOut, "sheet 1 out 2592 x 35"},
        {200000, "page start", kReady, "page start"},
        {200000, "feed 4 0", kPrinting, "feed mode 4 lines 0"},
        {200000, "area 0 8", kPrinting, "area offset 0 width 8"},
        {200000, "image FF FF", kPrinting, ""},
        {200000, "control 1", kPrinting, "image 2 rows x 1 bytes; control 1"},
        {301999, "", kPrinting, ""},
        {302000, "", kOut, "sheet 2 out 2592 x 2"}}},
      {"without going back the next sheet begins with the way to the edge",
       Media::kContinuous,
       {{0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image FF FF", kPrinting, ""},
        {0, "feed 3 0", kPrinting, "image 2 rows x 1 bytes; feed mode 3 lines 0"},
        {0, "control 1", kPrinting, "control 1"},
        {102000, "", kOut, "sheet 1 out 2592 x 5"},
        {102000, "page start", kReady, "page start"},
        {102000, "area 0 8", kPrinting, "area offset 0 width 8"},
        {102000, "image FF FF", kPrinting, ""},
        {102000, "control 1", kPrinting, "image 2 rows x 1 bytes; control 1"},
        {104000, "", kOut, "sheet 2 out 2592 x 102"}}},
      {"a tear-off and a cut after the job",
       Media::kGap,
       {{0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image FF FF", kPrinting, ""},
        {0, "control 1", kPrinting, "image 2 rows x 1 bytes; control 1"},
        {2000, "", kOut, "sheet 1 out 2592 x 2"},
        {5000, "control 0", kOut, "control 0"},
        {5000, "feed 3 0", kOut, "feed mode 3 lines 0"},
        {5000, "cut", kOut, "cut"},
        {5000, "control 1", kOut, "control 1"},
        {134999, "", kOut, ""},
        {135000, "", kOut, "sheet 1 fed 2592 x 35; sheet 1 cut 2592 x 35"}}},
      {"a second feed to the edge finds the paper there",
       Media::kGap,
       {{0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image FF", kPrinting, ""},
        {0, "feed 3 0", kPrinting, "image 1 rows x 1 bytes; feed mode 3 lines 0"},
        {0, "control 1", kPrinting, "control 1"},
        {131000, "", kOut, "sheet 1 out 2592 x 34"},
        {131000, "feed 3 0", kOut, "feed mode 3 lines 0"},
        {999000, "", kOut, ""}}},
      {"cut sheets: the feed before the page is blank, no mark",
       Media::kSheet,
       {{0, "feed 0 20", kPrinting, "feed mode 0 lines 20"},
        {0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image FF", kPrinting, ""},
        {0, "feed 3 0", kPrinting, "image 1 rows x 1 bytes; feed mode 3 lines 0"},
        {0, "control 1", kPrinting, "control 1"},
        {120999, "", kPrinting, ""},
        {121000, "", kOut, "sheet 1 out 2592 x 21"},
        {121000, "page start", kReady, "page start"},
        {121000, "feed 4 0", kReady, "feed mode 4 lines 0"},
        {121000, "feed 0 20", kPrinting, "feed mode 0 lines 20"},
        {121000, "area 0 8", kPrinting, "area offset 0 width 8"},
        {121000, "image FF", kPrinting, ""},
        {121000, "control 1", kPrinting, "image 1 rows x 1 bytes; control 1"},
        {142000, "", kOut, "sheet 2 out 2592 x 21"}}},
      {"a feed back takes a feed before the page back too",
       Media::kGap,
       {{0, "feed 0 20", kPrinting, "feed mode 0 lines 20"},
        {20000, "feed 4 0", kPrinting, "feed mode 4 lines 0"},
        {39999, "", kPrinting, ""},
        {40000, "", kReady, ""},
        {40000, "area 0 8", kPrinting, "area offset 0 width 8"},
        {40000, "image FF", kPrinting, ""},
        {40000, "control 1", kPrinting, "image 1 rows x 1 bytes; control 1"},
        {41000, "", kOut, "sheet 1 out 2592 x 1"}}},
      {"mode 5 stops at a mark",
       Media::kMark,
       {{0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image FF", kPrinting, ""},
        {0, "feed 5 0", kPrinting, "image 1 rows x 1 bytes; feed mode 5 lines 0"},
        {0, "control 1", kPrinting, "control 1"},
        {131000, "", kOut, "sheet 1 out 2592 x 34"}}},
      {"mode 5 misses the mark on other paper",
       Media::kGap,
       {{0, "feed 5 0", kPrinting,
         "feed mode 5 lines 0; no mark on this paper: feed mode 5 goes to the edge"},
        {130000, "", kReady, ""}}},
      {"a cut without a sheet is only reported", Media::kGap, {{0, "cut", kReady, "cut"}}},
  });
}

TEST(PrinterWorld, WithoutPaperTheMotorStandsAndTheWordSaysSo) {
  check({
      {"no paper before the job",
       Media::kGap,
       {{0, "give out-of-paper", kOut, "out of paper"},
        {0, "page start", kOut, "page start"},
        {0, "control 0", kOut, "control 0"},
        {5000000, "", kOut, ""},
        {5000000, "give load", kReady, "paper loaded"},
        {5000000, "give load", kReady, ""}}},
      {"no paper for a second",
       Media::kGap,
       {{0, "give out-of-paper for 1", kOut, "out of paper"},
        {999999, "", kOut, ""},
        {1000000, "", kReady, "paper loaded"},
        {9000000, "", kReady, ""}}},
      {"the paper ends in mid page, and the page goes on where it stood",
       Media::kGap,
       {{0, "give out-of-paper for 1 after 0.5", kReady, ""},
        {0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image 01 02 03 04", kPrinting, ""},
        {0, "control 1", kPrinting, "image 4 rows x 1 bytes; control 1"},
        {1999, "", kPrinting, ""},
        {2000, "", kOut, "out of paper"},
        {1001999, "", kOut, ""},
        {1002000, "", kPrinting, "paper loaded"},
        {1003999, "", kPrinting, ""},
        {1004000, "", kOut, "sheet 1 out 2592 x 4"}}},
      {"one long step in time meets all of it",
       Media::kGap,
       {{0, "give out-of-paper for 1 after 0.5", kReady, ""},
        {0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image 01 02 03 04", kPrinting, ""},
        {0, "control 1", kPrinting, "image 4 rows x 1 bytes; control 1"},
        {9000000, "", kOut, "out of paper; paper loaded; sheet 1 out 2592 x 4"}}},
      {"after one page: the next waits until paper is loaded",
       Media::kGap,
       {{0, "give out-of-paper after 1", kReady, ""},
        {0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image FF", kPrinting, ""},
        {0, "control 1", kPrinting, "image 1 rows x 1 bytes; control 1"},
        {1000, "", kOut, "sheet 1 out 2592 x 1; out of paper"},
        {1000, "page start", kOut, "page start"},
        {1000, "area 0 8", kOut, "area offset 0 width 8"},
        {1000, "image FF", kOut, ""},
        {1000, "control 1", kOut, "image 1 rows x 1 bytes; control 1"},
        {9000000, "", kOut, ""},
        {9000000, "give load", kPrinting, "paper loaded"},
        {9001000, "", kOut, "sheet 2 out 2592 x 1"}}},
      {"pages count from the moment it is given",
       Media::kGap,
       {{0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image FF", kPrinting, ""},
        {0, "control 1", kPrinting, "image 1 rows x 1 bytes; control 1"},
        {1000, "", kOut, "sheet 1 out 2592 x 1"},
        {1000, "give out-of-paper after 1", kOut, ""},
        {1000, "page start", kReady, "page start"},
        {1000, "area 0 8", kPrinting, "area offset 0 width 8"},
        {1000, "image FF", kPrinting, ""},
        {1000, "control 1", kPrinting, "image 1 rows x 1 bytes; control 1"},
        {2000, "", kOut, "sheet 2 out 2592 x 1; out of paper"}}},
      {"loading does not take the sheet out of the exit",
       Media::kGap,
       {{0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image FF", kPrinting, ""},
        {0, "control 1", kPrinting, "image 1 rows x 1 bytes; control 1"},
        {1000, "give out-of-paper", kOut, "sheet 1 out 2592 x 1; out of paper"},
        {1000, "give load", kOut, "paper loaded"}}},
  });
}

TEST(PrinterWorld, AnOpenCoverStopsTheMotor) {
  check({
      {"open and closed",
       Media::kGap,
       {{0, "give cover open", kCover, "cover opened"},
        {0, "page start", kCover, "page start"},
        {9000000, "give cover close", kReady, "cover closed"}}},
      {"for a while",
       Media::kGap,
       {{0, "give cover for 2", kCover, "cover opened"}, {2000000, "", kReady, "cover closed"}}},
      {"in the middle of the first page",
       Media::kGap,
       {{0, "give cover for 1 at 1", kReady, ""},
        {0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image 01 02 03 04", kPrinting, ""},
        {0, "control 1", kPrinting, "image 4 rows x 1 bytes; control 1"},
        {2000, "", kCover, "cover opened"},
        {1002000, "", kPrinting, "cover closed"},
        {1004000, "", kOut, "sheet 1 out 2592 x 4"}}},
      {"together with no paper",
       Media::kGap,
       {{0, "give cover open", kCover, "cover opened"},
        {0, "give out-of-paper", kOut | kCover, "out of paper"},
        {0, "give cover close", kOut, "cover closed"},
        {0, "give load", kReady, "paper loaded"}}},
      {"while a sheet is out",
       Media::kGap,
       {{0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image FF", kPrinting, ""},
        {0, "control 1", kPrinting, "image 1 rows x 1 bytes; control 1"},
        {1000, "give cover open", kOut | kCover, "sheet 1 out 2592 x 1; cover opened"},
        {1000, "page start", kCover, "page start"}}},
      {"opened in a page that waits for paper",
       Media::kGap,
       {{0, "give out-of-paper", kOut, "out of paper"},
        {0, "area 0 8", kOut, "area offset 0 width 8"},
        {0, "image FF FF", kOut, ""},
        {0, "control 1", kOut, "image 2 rows x 1 bytes; control 1"},
        {5000, "give cover for 1", kOut | kCover, "cover opened"},
        {6000, "give load", kCover, "paper loaded"},
        {1005000, "", kPrinting, "cover closed"},
        {1007000, "", kOut, "sheet 1 out 2592 x 2"}}},
  });
}

TEST(PrinterWorld, PagesThatBreakOffArePrintedAsFarAsTheyCame) {
  check({
      {"in the image",
       Media::kGap,
       {{0, "page start", kReady, "page start"},
        {0, "area 0 16", kPrinting, "area offset 0 width 16"},
        {0, "image 01 02 03", kPrinting, ""},
        {0, "break off", kPrinting, "image 2 rows x 2 bytes; page 1 broken off"},
        {2000, "", kOut, "sheet 1 out 2592 x 2"},
        {2000, "page start", kReady, "page start"}}},
      {"after the image",
       Media::kGap,
       {{0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image FF", kPrinting, ""},
        {0, "feed 0 1", kPrinting, "image 1 rows x 1 bytes; feed mode 0 lines 1"},
        {0, "break off", kPrinting, "page 1 broken off"},
        {2000, "", kOut, "sheet 1 out 2592 x 2"}}},
      {"before the image",
       Media::kGap,
       {{0, "page start", kReady, "page start"},
        {0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "break off", kReady, "page 1 has no image"}}},
      {"between pages there is nothing to break", Media::kGap, {{0, "break off", kReady, ""}}},
      {"by the next page start",
       Media::kGap,
       {{0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image FF", kPrinting, ""},
        {0, "page start", kPrinting, "image 1 rows x 1 bytes; page 1 broken off; page start"},
        {1000, "", kReady, "sheet 1 out 2592 x 1"}}},
      {"by the next area",
       Media::kGap,
       {{0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "image FF", kPrinting, ""},
        {0, "area 8 8", kPrinting,
         "image 1 rows x 1 bytes; page 1 broken off; area offset 8 width 8"},
        {0, "image FF", kPrinting, ""},
        {0, "control 1", kPrinting, "image 1 rows x 1 bytes; control 1"},
        {2000, "", kOut, "sheet 1 out 2592 x 1; sheet 2 out 2592 x 1"}}},
  });
}

TEST(PrinterWorld, OddPagesAreToldAndPrinted) {
  check({
      {"an area without an image makes no sheet",
       Media::kGap,
       {{0, "area 0 8", kPrinting, "area offset 0 width 8"},
        {0, "density 3", kPrinting, "density 3"},
        {0, "control 1", kReady, "page 1 has no image; control 1"}}},
      {"an image without an area is not printed",
       Media::kGap,
       {{0, "image FF FF", kReady, "image of 2 bytes without an area, not printed"}}},
      {"a page past the head's 2592 dots",
       Media::kGap,
       {{0, "area 2588 8", kPrinting, "area offset 2588 width 8"},
        {0, "image FF", kPrinting, ""},
        {0, "control 1", kPrinting,
         "image 1 rows x 1 bytes; page 1 ends at dot 2596, the head at 2592; control 1"},
        {1000, "", kOut, "sheet 1 out 2596 x 1"}}},
      {"a full page whose packets leave the row open",
       Media::kGap,
       {{0, "area 0 2592", kPrinting, "area offset 0 width 2592"},
        {0, "image of 1296", kPrinting, ""},
        {0, "control 1", kPrinting, "image 4 rows x 324 bytes; control 1"},
        {4000, "", kOut, "sheet 1 out 2592 x 4"}}},
      {"an area without width",
       Media::kGap,
       {{0, "area 0 0", kPrinting, "area offset 0 width 0"},
        {0, "image FF", kPrinting, ""},
        {0, "control 1", kOut, "image 0 rows x 0 bytes; control 1; sheet 1 out 2592 x 0"}}},
  });
}

TEST(PrinterWorld, IsFullWithFourPagesInWork) {
  World world(Media::kGap);
  for (size_t pages = 1; pages <= 5; ++pages) {
    world.take(0, "area 0 8");
    world.take(0, "image FF");
    world.take(0, "control 1");
    EXPECT_EQ(pages, (*world).pagesWaiting());
    EXPECT_EQ(pages >= 4, (*world).full()) << pages;
  }
  world.take(2000, "");
  EXPECT_FALSE((*world).full());
  EXPECT_FALSE((*world).idle());
  world.take(5000, "");
  EXPECT_TRUE((*world).idle());
}

TEST(PrinterWorld, TellsTheMomentOfTheNextChange) {
  struct Moment {
    Micros at;
    const char* what;
    Micros next;  // -1: none to come
  };
  const Moment moments[] = {
      {0, "", -1},
      {0, "give out-of-paper for 1 after 0.5", -1},
      {0, "area 0 8", -1},
      {0, "image 01 02 03 04", -1},
      {1000, "control 1", 3000},
      {2000, "", 3000},
      {3000, "", 1003000},
      {500000, "give cover for 0.1", 600000},
      {600000, "", 1003000},
      {1003000, "", 1005000},
      {1004000, "give out-of-paper", -1},
      {1004000, "give load", 1005000},
      {1005000, "", -1},
  };
  World world(Media::kGap);
  for (const Moment& moment : moments) {
    world.take(moment.at, moment.what);
    EXPECT_EQ(moment.next, (*world).nextChange().value_or(-1))
        << "at " << moment.at << " '" << moment.what << "'";
  }
}

TEST(PrinterWorld, MovesAtTheSpeedItHas) {
  struct Case {
    const char* sentence;
    PrinterBody body;
    size_t rows;
    Micros duration;
    size_t width;
  };
  const Case cases[] = {
      {"an inch at 203 dots and 100 mm a second", {203, 100, Media::kGap}, 203, 254000, 1728},
      {"an inch at 300 dots and 50 mm a second", {300, 50, Media::kGap}, 300, 508000, 2592},
      {"one line at 203 dots: 25400000 / (203 * 150)", {203, 150, Media::kGap}, 1, 834, 1728},
      {"204 dots have the wide head", {204, 100, Media::kGap}, 204, 254000, 2592},
  };
  for (const Case& c : cases) {
    size_t width = 0;
    PrinterWorld world(
        c.body, {[](const std::string&) {}, [](unsigned, const PagePicture&) {},
                 [&](unsigned, const SheetPicture& sheet, const char*) { width = sheet.width(); }});
    world.take(itemOf("area 0 8"), 0);
    world.take(itemOf("image of " + std::to_string(c.rows)), 0);
    world.take(itemOf("control 1"), 0);
    EXPECT_EQ(c.duration, world.nextChange().value_or(-1)) << c.sentence;
    world.advance(c.duration - 1);
    EXPECT_EQ(0u, width) << c.sentence;
    world.advance(c.duration);
    EXPECT_EQ(c.width, width) << c.sentence;
  }
}

TEST(PrinterWorld, HandsOutThePagesDots) {
  std::vector<std::string> pages;
  PrinterWorld world({203, 100, Media::kGap},
                     {[](const std::string&) {},
                      [&](unsigned number, const PagePicture& page) {
                        pages.push_back(std::to_string(number) + ": " + hexText(page.dots()));
                      },
                      [](unsigned, const SheetPicture&, const char*) {}});
  for (const char* what : {"page start", "area 0 8", "image 80 40 20 10", "image 08", "control 1",
                           "page start", "area 0 8", "image FF", "control 1"}) {
    world.take(itemOf(what), 0);
  }
  EXPECT_EQ((std::vector<std::string>{"1: 80 40 20 10 08", "2: FF"}), pages);
}

TEST(PrinterWorld, TellsItsStateInOneLine) {
  World world(Media::kGap);
  EXPECT_EQ("ready 0x00800000, paper loaded, cover closed, pages waiting 0, sheets out 0",
            (*world).stateText());
  for (const char* what : {"area 0 8", "image FF", "control 1"}) world.take(0, what);
  EXPECT_EQ("printing 0x00000000, paper loaded, cover closed, pages waiting 1, sheets out 0",
            (*world).stateText());
  world.take(1000, "give cover open");
  world.take(1000, "give out-of-paper");
  EXPECT_EQ("paper out, cover open 0x00090000, no paper, cover open, pages waiting 0, sheets out 1",
            (*world).stateText());
}

TEST(PrinterWorld, LeavesTheConnectionToOthers) {
  World world(Media::kGap);
  for (const char* text : {"silent", "noise 1", "split", "glue", "slow 1", "stall for 1",
                           "disconnect", "state", "quit"}) {
    const Result<Scenario> scenario = parseScenario(text);
    ASSERT_TRUE(scenario.ok()) << text;
    EXPECT_FALSE((*world).apply(scenario.value(), 0)) << text;
  }
}

}  // namespace
}  // namespace korvel
