// The connection of the emulated printer in numbers: how much may be read when, and which bytes of
// a reply go out when. Times are microseconds. SPDX-License-Identifier: Apache-2.0
#include "tools/stream/printer_connection.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/hex_text.h"

namespace korvel {
namespace {

Scenario scenario(const std::string& text) {
  const Result<Scenario> parsed = parseScenario(text);
  EXPECT_TRUE(parsed.ok()) << text;
  return parsed.value();
}

// One question to the connection: bytes taken at a moment, and how many may be read afterwards.
struct Reading {
  Micros at;
  size_t taken;
  size_t readable;
};

TEST(PrinterConnection, ReadsNeverPassTheByteAtWhichSomethingHappens) {
  struct Case {
    const char* sentence;
    std::vector<const char*> scenarios;
    std::vector<Reading> readings;
  };
  const Case cases[] = {
      {"nothing is wrong", {}, {{0, 0, 65536}, {0, 65536, 65536}, {1, 1, 65536}}},
      {"a thousand bytes a second, fifty at once",
       {"slow 1000"},
       {{0, 0, 50}, {0, 50, 0}, {49999, 0, 0}, {50000, 0, 50}, {60000, 10, 0}, {70000, 0, 50}}},
      {"one byte a second", {"slow 1"}, {{0, 0, 1}, {0, 1, 0}, {999999, 0, 0}, {1000000, 0, 1}}},
      {"slow no longer", {"slow 1", "slow off"}, {{0, 0, 65536}, {0, 9, 65536}}},
      {"a stall at once", {"stall for 2"}, {{0, 0, 0}, {1999999, 0, 0}, {2000000, 0, 65536}}},
      {"a stall after ten bytes",
       {"stall for 2 after 10"},
       {{0, 0, 10}, {5, 4, 6}, {9, 6, 0}, {2000008, 0, 0}, {2000009, 0, 65536}}},
      {"a hang-up after ten bytes", {"disconnect after 10"}, {{0, 0, 10}, {5, 9, 1}, {6, 1, 0}}},
      {"a hang-up at once", {"disconnect"}, {{0, 0, 0}, {9000000, 0, 0}}},
      {"the nearer of two",
       {"disconnect after 10", "stall for 1 after 4"},
       {{0, 0, 4}, {0, 4, 0}, {1000000, 0, 6}, {1000000, 6, 0}, {9000000, 0, 0}}},
  };
  for (const Case& c : cases) {
    PrinterConnection connection;
    for (const char* text : c.scenarios) EXPECT_TRUE(connection.apply(scenario(text), 0)) << text;
    for (const Reading& reading : c.readings) {
      connection.took(reading.taken, reading.at);
      EXPECT_EQ(reading.readable, connection.readable(reading.at))
          << c.sentence << " at " << reading.at;
    }
  }
}

TEST(PrinterConnection, TellsWhenToReadAgain) {
  PrinterConnection connection;
  connection.apply(scenario("stall for 2"), 1000);
  EXPECT_EQ(2001000, connection.nextRead());
}

TEST(PrinterConnection, AHangUpHappensOnce) {
  PrinterConnection connection;
  EXPECT_FALSE(connection.mustHangUp());
  connection.apply(scenario("disconnect after 3"), 0);
  EXPECT_FALSE(connection.mustHangUp());
  connection.took(3, 0);
  EXPECT_TRUE(connection.mustHangUp());
  connection.hungUp();
  EXPECT_FALSE(connection.mustHangUp());
  EXPECT_EQ(65536u, connection.readable(0));
}

TEST(PrinterConnection, RepliesGoOutAsTheScenariosSay) {
  // Status requests at the given times, with replies of four bytes; "time: bytes" is one write.
  struct Case {
    const char* sentence;
    std::vector<const char*> scenarios;
    std::vector<Micros> asked;
    std::vector<std::string> written;
  };
  const Case cases[] = {
      {"whole and at once", {}, {7, 9}, {"7: 01 02 03 04", "9: 01 02 03 04"}},
      {"never", {"silent"}, {0, 9000000}, {}},
      {"not for a second", {"silent for 1"}, {0, 999999, 1000000}, {"1000000: 01 02 03 04"}},
      {"again", {"silent", "silent off"}, {5}, {"5: 01 02 03 04"}},
      {"in pieces a twentieth of a second apart", {"split 3"}, {5}, {"5: 01 02 03", "50005: 04"}},
      {"the next reply after the last piece",
       {"split 3"},
       {0, 1},
       {"0: 01 02 03", "50000: 04", "100000: 01 02 03", "150000: 04"}},
      {"whole when the piece is longer", {"split"}, {0}, {"0: 01 02 03 04"}},
      {"whole again", {"split 1", "split off"}, {0}, {"0: 01 02 03 04"}},
      {"twice in one write, once",
       {"glue"},
       {0, 1},
       {"0: 01 02 03 04 01 02 03 04", "1: 01 02 03 04"}},
      // From 1 the first state is 1664525 + 1013904223 = 3C88596C in hex; then come 5E8885DB and
      // 8116017E. The noise is their highest bytes.
      {"after noise, once", {"noise 3"}, {0, 1}, {"0: 3C 5E 81 01 02 03 04", "1: 01 02 03 04"}},
      {"a scripted reply, then the printer's",
       {"reply AA | BB"},
       {0, 1},
       {"0: AA", "50000: BB", "100000: 01 02 03 04"}},
      {"a scripted reply twice",
       {"reply AA times 2"},
       {0, 1, 2},
       {"0: AA", "1: AA", "2: 01 02 03 04"}},
      {"no reply to the second",
       {"reply true", "reply nothing"},
       {0, 1, 2},
       {"0: 01 02 03 04", "2: 01 02 03 04"}},
      {"noise stays while the printer is silent",
       {"noise 1", "silent for 1"},
       {0, 1000000},
       {"1000000: 3C 01 02 03 04"}},
  };
  for (const Case& c : cases) {
    PrinterConnection connection;
    for (const char* text : c.scenarios) EXPECT_TRUE(connection.apply(scenario(text), 0)) << text;
    std::vector<std::string> written;
    for (const Micros now : c.asked) {
      for (const PrinterConnection::Piece& piece :
           connection.answer("\x01\x02\x03\x04", now).pieces) {
        written.push_back(std::to_string(piece.due) + ": " + hexText(piece.bytes));
      }
    }
    EXPECT_EQ(c.written, written) << c.sentence;
  }
}

TEST(PrinterConnection, LeavesPaperAndCoverToTheWorld) {
  PrinterConnection connection;
  for (const char* text : {"out-of-paper", "load", "cover open", "cover close", "state", "quit"}) {
    EXPECT_FALSE(connection.apply(scenario(text), 0)) << text;
  }
}

}  // namespace
}  // namespace korvel
