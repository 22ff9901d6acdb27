// The status wait: whom it asks, what it makes of the answers, when it gives up.
// The channels are real descriptors served by a scripted spooler; sleeping is only counted.
// SPDX-License-Identifier: Apache-2.0
#include "protocol/status.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "printer/settings.h"
#include "printer/text.h"
#include "protocol/korvel_printer.h"
#include "tests/support/captured_stderr.h"
#include "tests/support/fake_channels.h"
#include "tests/support/hex_text.h"
#include "tests/support/memory_stream.h"

namespace {
int sleeps = 0;  // since the wait began
}

// Replaces the C library's: tests do not wait.
extern "C" unsigned int sleep(unsigned int seconds) {
  sleeps += static_cast<int>(seconds);
  return 0;
}

namespace {

using Strings = std::vector<std::string>;

constexpr int kWaitReady = 0x00800000;
constexpr int kWaitPaperOut = 0x00080000;

constexpr const char* kRequest = "64 10 40 00 00 00 00 00 00 9B";
constexpr const char* kDrain = "02 00 00 00";  // command, status, no data

// Replies of thirteen bytes; the status word begins at the sixth, low byte first.
constexpr const char* kNothing = "64 FF 00 00 00 00 00 00 00 00 00 00 00";
constexpr const char* kReady = "64 FF 00 00 00 00 00 80 00 00 00 00 00";
constexpr const char* kPaperOut = "64 FF 00 00 00 00 00 08 00 00 00 00 00";
constexpr const char* kReadyPaperOut = "64 FF 00 00 00 00 00 88 00 00 00 00 00";
constexpr const char* kCoverOpen = "64 FF 00 00 00 00 00 01 00 00 00 00 00";

struct Outcome {
  bool returned;
  std::string log;
  int slept;
  std::string printed;
  Strings requests;
};

Outcome waitFor(int mask, const std::vector<DrainAnswer>& script, const char* model = "Z4") {
  Settings settings{};
  pellamStrCpy(settings.ModelName, model, sizeof settings.ModelName);
  const MemoryStream stream;
  KorvelPrinter printer;
  printer.getOutputStreams() = {stream.get()};
  printer.settings_ = &settings;
  FakeChannels channels(script);
  sleeps = 0;
  CapturedStderr captured;
  const bool returned = printer.WaitForPrinterStatus(mask);
  return {returned, captured.text(), sleeps, hexText(stream.text()), channels.finish()};
}

TEST(StatusWait, AsksTheReportingModels) {
  for (const char* model : {"R57", "K220", "M6", "Z4"}) {
    const Outcome outcome = waitFor(kWaitReady, {{{kReady}}}, model);
    EXPECT_TRUE(outcome.returned) << model;
    EXPECT_EQ(outcome.printed, kRequest) << model;
    EXPECT_EQ(outcome.requests, Strings{kDrain}) << model;
  }
}

TEST(StatusWait, NeverAsksAModelWhoseNameOnlyBeginsAlike) {
  for (const char* model : {"K2200", "K220 ", "K22", "k220", "R5", "r57", "R57-300", "M60", "m6",
                            " M6", "Z", "Z4C", "z4", "", "A4"}) {
    for (const int mask : {kWaitReady, kWaitPaperOut}) {
      const Outcome outcome = waitFor(mask, {{{kReady}}}, model);
      EXPECT_TRUE(outcome.returned) << '"' << model << '"';
      EXPECT_EQ(outcome.printed, "") << '"' << model << '"';
      EXPECT_EQ(outcome.log, "") << '"' << model << '"';
      EXPECT_EQ(outcome.requests, Strings{}) << '"' << model << '"';
      EXPECT_EQ(outcome.slept, 0) << '"' << model << '"';
    }
  }
}

// Lines of one attempt: what each read brought, then the whole as hex.
std::string attempt(const std::vector<int>& reads, int total, const std::string& hex) {
  std::string text = "DEBUG: cups_sc_status_t = 1\n";
  for (const int read : reads) {
    text += "DEBUG: cupsBackChannelRead bytes " + std::to_string(read) + "\n";
  }
  return text + "DEBUG: cupsBackChannelRead Printer Status Data " + std::to_string(total) +
         " bytes - " + hex + (hex.empty() ? "\n" : " \n");
}

std::string attempt(const char* reply) { return attempt({13, 0}, 13, reply); }

std::string failedAttempt(int status) {
  return "DEBUG: cups_sc_status_t = " + std::to_string(status) + "\n";
}

const std::string kEnter = "DEBUG: Enter WaitForPrinterReady\n";
const std::string kExit = "DEBUG: Exit WaitForPrinterReady: ready to print.\n";
const std::string kPrinting =
    "STATE: -media-empty-warning\nINFO: Printing\nSTATE: -cover-open-warning\n";
const std::string kEmpty =
    "STATE: +media-empty-warning\nINFO: Paper out.\nSTATE: -cover-open-warning\n";
const std::string kOpen =
    "STATE: -media-empty-warning\nINFO: Printing\nSTATE: +cover-open-warning\n";
const std::string kEmptyAndOpen =
    "STATE: +media-empty-warning\nINFO: Paper out.\nSTATE: +cover-open-warning\n";

std::string repeated(int count, const std::string& text) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

struct Case {
  const char* sentence;
  int mask;
  std::vector<DrainAnswer> script;  // its last answer ends the wait
  std::string log;                  // all but the line of the beginning
};

const Case kCases[] = {
    {"ready at once", kWaitReady, {{{kReady}}}, attempt(kReady) + kPrinting + kExit},
    {"paper out first: reported once, although asked three times",
     kWaitReady,
     {{{kReadyPaperOut}}, {{kReadyPaperOut}}, {{kReadyPaperOut}}, {{kReady}}},
     attempt(kReadyPaperOut) + kEmpty + attempt(kReadyPaperOut) + attempt(kReadyPaperOut) +
         attempt(kReady) + kPrinting + kExit},
    {"cover open",
     kWaitReady,
     {{{kCoverOpen}}, {{kReady}}},
     attempt(kCoverOpen) + kOpen + attempt(kReady) + kPrinting + kExit},
    {"ready with an open cover is ready",
     kWaitReady,
     {{{"64 FF 00 00 00 00 00 81 00 00 00 00 00"}}},
     attempt("64 FF 00 00 00 00 00 81 00 00 00 00 00") + kOpen + kExit},
    {"a first status of 0 reports nothing",
     kWaitReady,
     {{{kNothing}}, {{kReady}}},
     attempt(kNothing) + attempt(kReady) + kPrinting + kExit},
    {"a bit without meaning is a change too",
     kWaitReady,
     {{{"64 FF 00 00 00 01 00 00 00 00 00 00 00"}},
      {{"64 FF 00 00 00 00 00 00 00 00 00 00 80"}},
      {{"64 FF 00 00 00 00 00 80 00 00 00 00 80"}}},
     attempt("64 FF 00 00 00 01 00 00 00 00 00 00 00") + kPrinting +
         attempt("64 FF 00 00 00 00 00 00 00 00 00 00 80") + kPrinting +
         attempt("64 FF 00 00 00 00 00 80 00 00 00 00 80") + kPrinting + kExit},
    {"the three bytes before the word are not looked at",
     kWaitReady,
     {{{"64 FF 99 88 77 00 00 80 00 00 00 00 00"}}},
     attempt("64 FF 99 88 77 00 00 80 00 00 00 00 00") + kPrinting + kExit},
    {"the word starts at its own byte, not at the next one",
     kWaitReady,
     {{{"64 FF 00 00 00 00 80 00 00 00 00 00 00"}}, {{kReady}}},
     attempt("64 FF 00 00 00 00 80 00 00 00 00 00 00") + kPrinting + attempt(kReady) + kPrinting +
         kExit},
    {"noise is shown and left",
     kWaitReady,
     {{{"00 01 AB"}},
      {{"64 FE 00 00 00 00 00 80 00 00 00 00 00"}},
      {{"FF 64 00 00 00 00 00 80 00 00 00 00 00"}},
      {{kReady}}},
     attempt({3, 0}, 3, "00 01 AB") + attempt("64 FE 00 00 00 00 00 80 00 00 00 00 00") +
         attempt("FF 64 00 00 00 00 00 80 00 00 00 00 00") + attempt(kReady) + kPrinting + kExit},
    {"an empty answer",
     kWaitReady,
     {{{}}, {{kReady}}},
     attempt({0}, 0, "") + attempt(kReady) + kPrinting + kExit},
    {"a reply in two pieces",
     kWaitReady,
     {{{"64 FF 00 00 00", "00 00 80 00 00 00 00 00"}}},
     attempt({5, 8, 0}, 13, kReady) + kPrinting + kExit},
    {"a reply in three pieces, the first of one byte",
     kWaitReady,
     {{{"64", "FF", "00 00 00 00 00 80 00 00 00 00 00"}}},
     attempt({1, 1, 11, 0}, 13, kReady) + kPrinting + kExit},
    {"of two replies in one the first counts",
     kWaitReady,
     {{{std::string(kReadyPaperOut) + " " + kReady}}, {{std::string(kReady) + " " + kPaperOut}}},
     attempt({26, 0}, 26, std::string(kReadyPaperOut) + " " + kReady) + kEmpty +
         attempt({26, 0}, 26, std::string(kReady) + " " + kPaperOut) + kPrinting + kExit},
    {"a reply of one byte is none",
     kWaitReady,
     {{{"64"}}, {{kReady}}},
     attempt({1, 0}, 1, "64") + attempt(kReady) + kPrinting + kExit},
    {"a reply of two bytes has a word of nothing",
     kWaitReady,
     {{{"64 FF"}}, {{kReady}}},
     attempt({2, 0}, 2, "64 FF") + attempt(kReady) + kPrinting + kExit},
    {"a reply of twelve bytes ends in zero",
     kWaitReady,
     {{{"64 FF 00 00 00 00 00 80 00 00 00 00"}}},
     attempt({12, 0}, 12, "64 FF 00 00 00 00 00 80 00 00 00 00") + kPrinting + kExit},
    {"nothing is left of an earlier reply",
     kWaitReady,
     {{{"64 FF 00 00 00 FF FF 88 FF FF FF FF FF"}}, {{"64 FF"}}, {{kReady}}},
     attempt("64 FF 00 00 00 FF FF 88 FF FF FF FF FF") + kEmpty + attempt({2, 0}, 2, "64 FF") +
         kPrinting + attempt(kReady) + kPrinting + kExit},
    {"other results of the drain only cost the attempt",
     kWaitReady,
     {{{}, CUPS_SC_STATUS_NONE},
      {{}, CUPS_SC_STATUS_IO_ERROR},
      {{}, CUPS_SC_STATUS_TIMEOUT},
      {{}, CUPS_SC_STATUS_NO_RESPONSE},
      {{}, CUPS_SC_STATUS_BAD_MESSAGE},
      {{}, CUPS_SC_STATUS_NOT_IMPLEMENTED},
      {{kReady}}},
     failedAttempt(0) + failedAttempt(2) + failedAttempt(3) + failedAttempt(4) + failedAttempt(5) +
         failedAttempt(7) + attempt(kReady) + kPrinting + kExit},
    {"paper out ends the other wait without a word",
     kWaitPaperOut,
     {{{kPaperOut}}},
     attempt(kPaperOut) + kEmpty},
    {"whether ready or not", kWaitPaperOut, {{{kReadyPaperOut}}}, attempt(kReadyPaperOut) + kEmpty},
    {"with an open cover too",
     kWaitPaperOut,
     {{{"64 FF 00 00 00 00 00 09 00 00 00 00 00"}}},
     attempt("64 FF 00 00 00 00 00 09 00 00 00 00 00") + kEmptyAndOpen},
    {"ready does not end it",
     kWaitPaperOut,
     {{{kReady}}, {{kReady}}, {{kPaperOut}}},
     attempt(kReady) + kPrinting + attempt(kReady) + attempt(kPaperOut) + kEmpty},
};

TEST(StatusWait, ReadsTheAnswersOfTheTable) {
  for (const Case& c : kCases) {
    const Outcome outcome = waitFor(c.mask, c.script);
    const int attempts = static_cast<int>(c.script.size());
    EXPECT_TRUE(outcome.returned) << c.sentence;
    EXPECT_EQ(outcome.log, kEnter + c.log) << c.sentence;
    EXPECT_EQ(outcome.slept, attempts - 1) << c.sentence;
    EXPECT_EQ(outcome.requests, Strings(c.script.size(), kDrain)) << c.sentence;
    EXPECT_EQ(outcome.printed, hexLine(repeated(attempts, kRequest))) << c.sentence;
  }
}

// Each row's last piece is longer than what may be read of it, and nothing is read after it.
TEST(StatusWait, ReadsShrinkByTheTotal) {
  struct Chatter {
    const char* sentence;
    std::vector<int> pieces;
    std::vector<int> reads;
    int total;
  };
  const Chatter cases[] = {
      {"ten and ten leave 994", {10, 10, 1100}, {10, 10, 994}, 1014},
      {"the whole buffer at once", {1100}, {1024}, 1024},
      {"just the buffer", {1024}, {1024}, 1024},
      {"half and half", {512, 1100}, {512, 512}, 1024},
      {"700 bytes in two reads use all of it up", {400, 300}, {400, 300}, 700},
      {"one byte a read ends after 45", std::vector<int>(45, 1), std::vector<int>(45, 1), 45},
  };
  for (const Chatter& c : cases) {
    DrainAnswer chatty;
    for (const int piece : c.pieces) chatty.replies.push_back(repeated(piece, "AA "));
    chatty.silent = true;  // no end: another read would wait and find nothing
    const Outcome outcome = waitFor(kWaitReady, {chatty, {{kReady}}});
    std::string hex = repeated(c.total, "AA ");
    hex.pop_back();
    EXPECT_EQ(outcome.log,
              kEnter + attempt(c.reads, c.total, hex) + attempt(kReady) + kPrinting + kExit)
        << c.sentence;
  }
}

// The room for an answer's own data is what the last answer filled: a longer one does not fit.
TEST(StatusWait, SetsTheRoomForDrainDataOnce) {
  const Outcome outcome = waitFor(kWaitReady, {{{kNothing}, CUPS_SC_STATUS_OK, "01 02 03"},
                                               {{}, CUPS_SC_STATUS_TIMEOUT, "01 02 03 04"},
                                               {{kReady}, CUPS_SC_STATUS_OK, "01 02"}});
  EXPECT_EQ(outcome.log, kEnter + attempt(kNothing) + failedAttempt(CUPS_SC_STATUS_TOO_BIG) +
                             attempt(kReady) + kPrinting + kExit);
}

TEST(StatusWait, GivesUpAfterThreeHundredAttempts) {
  const Outcome silent = waitFor(kWaitReady, {{{}, CUPS_SC_STATUS_TIMEOUT}});
  EXPECT_FALSE(silent.returned);
  EXPECT_EQ(silent.slept, 300);
  EXPECT_EQ(silent.requests.size(), 300u);
  EXPECT_EQ(silent.printed, hexLine(repeated(300, kRequest)));
  EXPECT_EQ(silent.log, kEnter + repeated(300, failedAttempt(3)));

  const Outcome empty = waitFor(kWaitReady, std::vector<DrainAnswer>(300, {{kReadyPaperOut}}));
  EXPECT_FALSE(empty.returned);
  EXPECT_EQ(empty.slept, 300);
  EXPECT_EQ(empty.log,
            kEnter + attempt(kReadyPaperOut) + kEmpty + repeated(299, attempt(kReadyPaperOut)));

  const Outcome printing = waitFor(kWaitPaperOut, std::vector<DrainAnswer>(300, {{kReady}}));
  EXPECT_FALSE(printing.returned);
  EXPECT_EQ(printing.slept, 300);
}

TEST(StatusWait, StillSeesTheLastAttempt) {
  std::vector<DrainAnswer> script(299, {{kNothing}});
  script.push_back({{kReady}});
  const Outcome outcome = waitFor(kWaitReady, script);
  EXPECT_TRUE(outcome.returned);
  EXPECT_EQ(outcome.slept, 299);
}

TEST(StatusWait, KnowsNoOtherMask) {
  for (const int mask : {0, 0x00010000, 0x00880000, -1}) {
    const Outcome outcome = waitFor(mask, {{{kReady}}, {{kReadyPaperOut}}, {{}}});
    EXPECT_FALSE(outcome.returned) << mask;
  }
}

TEST(StatusWait, AsksOnEveryStreamAndFlushesBeforeTheDrain) {
  Settings settings{};
  pellamStrCpy(settings.ModelName, "M6", sizeof settings.ModelName);
  const MemoryStream stream, copy;
  KorvelPrinter printer;
  printer.getOutputStreams() = {stream.get(), copy.get()};
  printer.settings_ = &settings;
  printer.PrintControl(1);
  Strings seen;
  FakeChannels channels({{{kNothing}}, {{kReady}}}, [&] {
    seen.push_back(hexText(stream.text(false)));
    seen.push_back(hexText(copy.text(false)));
  });
  CapturedStderr quiet;
  EXPECT_TRUE(printer.WaitForPrinterStatus(kWaitReady));
  quiet.text();
  channels.finish();
  const std::string once = hexLine(std::string("64 0E 40 01 00 01 00 00 00 00 9B") + kRequest);
  const std::string twice = once + " " + kRequest;
  EXPECT_EQ(seen, (Strings{once, once, twice, twice}));
}

TEST(StatusWait, RemembersTheStatusFromWaitToWait) {
  Settings settings{};
  pellamStrCpy(settings.ModelName, "R57", sizeof settings.ModelName);
  KorvelPrinter printer;
  printer.getOutputStreams().clear();
  printer.settings_ = &settings;
  FakeChannels channels({{{kReady}}, {{kReady}}, {{kPaperOut}}});
  CapturedStderr captured;
  EXPECT_TRUE(printer.WaitForPrinterStatus(kWaitReady));
  EXPECT_TRUE(printer.WaitForPrinterStatus(kWaitReady));
  EXPECT_TRUE(printer.WaitForPrinterStatus(kWaitPaperOut));
  EXPECT_EQ(captured.text(), kEnter + attempt(kReady) + kPrinting + kExit + kEnter +
                                 attempt(kReady) + kExit + kEnter + attempt(kPaperOut) + kEmpty);
}

TEST(StateLines, AreWrittenOnceAChange) {
  struct Change {
    const char* sentence;
    int64_t status;
    std::string lines;
  };
  const Change changes[] = {
      {"nothing is what it starts from", 0, ""},
      {"ready", 0x00800000, kPrinting},
      {"ready again", 0x00800000, ""},
      {"paper out", 0x00080000, kEmpty},
      {"cover open as well", 0x00090000, kEmptyAndOpen},
      {"paper back", 0x00010000, kOpen},
      {"another bit", 0x00010001, kOpen},
      {"a bit of the upper half", int64_t{1} << 62, kPrinting},
      {"all bits", -1, kEmptyAndOpen},
      {"nothing again is a change now", 0, kPrinting},
      {"and then none", 0, ""},
  };
  KorvelPrinter printer;
  for (const Change& c : changes) {
    CapturedStderr captured;
    printer.UpdatePrinterStatus(c.status);
    EXPECT_EQ(captured.text(), c.lines) << c.sentence;
  }
}

TEST(HexDump, PutsABlankAfterEachByte) {
  struct Dump {
    const char* bytes;
    size_t length;
    const char* want;
  };
  const Dump dumps[] = {
      {"64 FF 0A", 3, "64 FF 0A \n"},
      {"64 FF 0A", 1, "64 \n"},
      {"00", 1, "00 \n"},
      {"64", 0, "\n"},
  };
  for (const Dump& d : dumps) {
    const auto bytes = hexBytes(d.bytes);
    CapturedStderr captured;
    print_data_as_hex(bytes.data(), d.length);
    EXPECT_EQ(captured.text(), d.want);
  }
}

}  // namespace
