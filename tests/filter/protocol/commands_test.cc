// Every command that is not an image, as bytes.
// Feeds leave a note for the next page.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <climits>
#include <functional>

#include "protocol/korvel_printer.h"
#include "tests/support/hex_text.h"
#include "tests/support/memory_stream.h"

namespace {

struct Case {
  const char* sentence;
  std::function<void(KorvelPrinter&)> command;
  const char* want;
};

const Case kCases[] = {
    {"control before a group", [](auto& p) { p.PrintControl(0); },
     "64 0E 40 01 00 00 00 00 00 00 9B"},
    {"control after it", [](auto& p) { p.PrintControl(1); }, "64 0E 40 01 00 01 00 00 00 00 9B"},
    {"control carries any byte", [](auto& p) { p.PrintControl(0xFE); },
     "64 0E 40 01 00 FE 00 00 00 00 9B"},
    {"density as it is at first", [](auto& p) { p.SendPrintSetting(); },
     "64 41 00 01 00 08 00 00 00 00 9B"},
    {"the darkest density",
     [](auto& p) {
       p.setPrintDensity(99);
       p.SendPrintSetting();
     },
     "64 41 00 01 00 0F 00 00 00 00 9B"},
    {"the lightest density",
     [](auto& p) {
       p.setPrintDensity(0);
       p.SendPrintSetting();
     },
     "64 41 00 01 00 00 00 00 00 00 9B"},
    {"twelve millimetres at 203 dpi", [](auto& p) { p.FeedPaper(0, 95); },
     "64 00 00 03 00  00 5F 00  00 00 00 00 9B"},
    {"the high byte carries the rest", [](auto& p) { p.FeedPaper(0, 300); },
     "64 00 00 03 00  00 2C 01  00 00 00 00 9B"},
    {"to the tear position", [](auto& p) { p.FeedPaper(3, 0); },
     "64 00 00 03 00  03 00 00  00 00 00 00 9B"},
    {"back to the print position", [](auto& p) { p.FeedPaper(4, 0); },
     "64 00 00 03 00  04 00 00  00 00 00 00 9B"},
    {"to the tear position on marks", [](auto& p) { p.FeedPaper(5, 0); },
     "64 00 00 03 00  05 00 00  00 00 00 00 9B"},
    {"the most lines", [](auto& p) { p.FeedPaper(0, 65535); },
     "64 00 00 03 00  00 FF FF  00 00 00 00 9B"},
    {"more lines lose their upper half", [](auto& p) { p.FeedPaper(0, 0x7A12345); },
     "64 00 00 03 00  00 45 23  00 00 00 00 9B"},
    {"lines below zero are cut like all others", [](auto& p) { p.FeedPaper(0, -2); },
     "64 00 00 03 00  00 FE FF  00 00 00 00 9B"},
    {"the least number of lines", [](auto& p) { p.FeedPaper(0, INT_MIN); },
     "64 00 00 03 00  00 00 00  00 00 00 00 9B"},
    {"a mode is its low byte", [](auto& p) { p.FeedPaper(0x1FF, 1); },
     "64 00 00 03 00  FF 01 00  00 00 00 00 9B"},
    {"a cut is ten bytes", [](auto& p) { p.DoPaperCut(); }, "64 02 00 00 00 00 00 00 00 9B"},
    {"feed, then cut", [](auto& p) { p.DoFeedCutPaper(); },
     "64 00 00 03 00  03 00 00  00 00 00 00 9B  64 02 00 00 00 00 00 00 00 9B"},
};

TEST(Commands, AreTheBytesOfTheTable) {
  for (const Case& c : kCases) {
    const MemoryStream stream, copy;
    KorvelPrinter printer;
    printer.getOutputStreams() = {stream.get(), copy.get()};
    c.command(printer);
    EXPECT_EQ(hexText(stream.text()), hexLine(c.want)) << c.sentence;
    EXPECT_EQ(hexText(copy.text()), hexLine(c.want)) << c.sentence << ", in the copy";
  }
}

TEST(Commands, SettingAlwaysSucceeds) {
  KorvelPrinter printer;
  printer.getOutputStreams().clear();
  EXPECT_TRUE(printer.SendPrintSetting());
}

TEST(Feeds, NoteWhetherTheMediaHasToComeBack) {
  struct Note {
    const char* sentence;
    int before;
    std::function<void(KorvelPrinter&)> command;
    int after;
  };
  const Note notes[] = {
      {"a feed of lines", 0, [](auto& p) { p.FeedPaper(0, 95); }, 1},
      {"a feed of no line", 0, [](auto& p) { p.FeedPaper(0, 0); }, 1},
      {"a tear-off", 0, [](auto& p) { p.FeedPaper(3, 0); }, 1},
      {"a tear-off on marks", 0, [](auto& p) { p.FeedPaper(5, 0); }, 1},
      {"a second one changes nothing", 1, [](auto& p) { p.FeedPaper(3, 0); }, 1},
      {"the way back", 1, [](auto& p) { p.FeedPaper(4, 0); }, 0},
      {"the way back when it is back", 0, [](auto& p) { p.FeedPaper(4, 0); }, 0},
      {"the mode counts whole, not its low byte", 0, [](auto& p) { p.FeedPaper(0x104, 0); }, 1},
      {"feed and cut", 0, [](auto& p) { p.DoFeedCutPaper(); }, 1},
      {"a cut alone is no feed", 0, [](auto& p) { p.DoPaperCut(); }, 0},
      {"nor is a control", 1, [](auto& p) { p.PrintControl(4); }, 1},
  };
  for (const Note& n : notes) {
    KorvelPrinter printer;
    printer.getOutputStreams().clear();
    bNeedGoBack = n.before;
    n.command(printer);
    EXPECT_EQ(bNeedGoBack, n.after) << n.sentence;
  }
  bNeedGoBack = 0;
}

}  // namespace
