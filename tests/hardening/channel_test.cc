// Noise on the back channel and wrong answers on the side channel, against the status wait itself.
// Nobody sleeps here, and reads of the back channel can be scripted to the byte.
// SPDX-License-Identifier: Apache-2.0
#include <cups/cups.h>
#include <cups/sidechannel.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "printer/settings.h"
#include "printer/text.h"
#include "protocol/korvel_printer.h"
#include "protocol/status.h"
#include "tests/support/captured_stderr.h"
#include "tests/support/fake_channels.h"
#include "tests/support/hex_text.h"

namespace {

constexpr size_t kReplyBuffer = 1024;

int sleeps = 0;

// When it is set, it replaces the back channel, and every drain succeeds at once. Returns how
// many of `room` bytes a read gets.
std::function<size_t(size_t room)> bytesOfRead;
const char* bufferStart = nullptr;  // of the present attempt; null before its first read
bool passedTheEnd = false;
size_t attempts = 0;

constexpr const char* kReady = "64 FF 00 00 00 00 00 80 00 00 00 00 00";

}  // namespace

extern "C" {
unsigned int sleep(unsigned int seconds) {
  sleeps += static_cast<int>(seconds);
  return 0;
}

ssize_t __real_cupsBackChannelRead(char* buffer, size_t bytes, double timeout);
ssize_t __wrap_cupsBackChannelRead(char* buffer, size_t bytes, double timeout);
cups_sc_status_t __real_cupsSideChannelDoRequest(cups_sc_command_t command, char* data, int* length,
                                                 double timeout);
cups_sc_status_t __wrap_cupsSideChannelDoRequest(cups_sc_command_t command, char* data, int* length,
                                                 double timeout);

ssize_t __wrap_cupsBackChannelRead(char* buffer, size_t bytes, double timeout) {
  if (!bytesOfRead) return __real_cupsBackChannelRead(buffer, bytes, timeout);
  if (bufferStart == nullptr) bufferStart = buffer;
  const auto offset = static_cast<size_t>(buffer - bufferStart);
  if (offset + bytes > kReplyBuffer) passedTheEnd = true;
  const size_t count = bytesOfRead(bytes);
  std::memset(buffer, 0xFF, count);
  return static_cast<ssize_t>(count);
}

cups_sc_status_t __wrap_cupsSideChannelDoRequest(cups_sc_command_t command, char* data, int* length,
                                                 double timeout) {
  if (!bytesOfRead) return __real_cupsSideChannelDoRequest(command, data, length, timeout);
  bufferStart = nullptr;
  ++attempts;
  return CUPS_SC_STATUS_OK;
}
}

namespace {

struct Outcome {
  bool returned;
  std::string log;
};

Outcome waitUntilReady(const std::vector<DrainAnswer>& script) {
  Settings settings{};
  pellamStrCpy(settings.ModelName, "Z4", sizeof settings.ModelName);
  KorvelPrinter printer;
  printer.getOutputStreams().clear();
  printer.settings_ = &settings;
  FakeChannels channels(script);
  CapturedStderr captured;
  const bool returned = printer.WaitForPrinterStatus(kStatusReady);
  return {returned, captured.text()};
}

size_t countOf(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

// Three hundred attempts, each of as many reads as the wait makes.
void readBy(const std::function<size_t(size_t room)>& reads) {
  Settings settings{};
  pellamStrCpy(settings.ModelName, "Z4", sizeof settings.ModelName);
  KorvelPrinter printer;
  printer.getOutputStreams().clear();
  printer.settings_ = &settings;
  passedTheEnd = false;
  attempts = 0;
  bytesOfRead = reads;
  CapturedStderr quiet;
  EXPECT_FALSE(printer.WaitForPrinterStatus(kStatusReady));
  quiet.text();
  bytesOfRead = nullptr;
  EXPECT_EQ(attempts, 300u);
  EXPECT_FALSE(passedTheEnd);
}

TEST(ReadCounter, NoReadPassesTheBuffersEnd) {
  readBy([](size_t) { return size_t{1}; });
  readBy([](size_t room) { return room; });
  readBy([](size_t room) { return (room + 1) / 2; });
  bool first = true;
  readBy([&](size_t room) {
    first = bufferStart == nullptr || !first;
    return first ? size_t{1} : room;
  });
  std::mt19937 dice(3);
  for (const size_t most : {size_t{2}, size_t{13}, size_t{40}, size_t{300}, size_t{1024}}) {
    readBy([&](size_t room) { return 1 + dice() % std::min(room, most); });
  }
}

TEST(BackChannel, AReplySplitAnywhereIsPutTogether) {
  const std::string reply = kReady;
  for (size_t cut = 1; cut < 13; ++cut) {
    const Outcome outcome =
        waitUntilReady({{{reply.substr(0, 3 * cut - 1), reply.substr(3 * cut)}}});
    EXPECT_TRUE(outcome.returned) << cut;
    EXPECT_EQ(countOf(outcome.log, "Printer Status Data 13 bytes - " + reply + " \n"), 1u)
        << cut << "\n"
        << outcome.log;
    EXPECT_EQ(countOf(outcome.log, "STATE: "), 2u) << cut;
  }
}

TEST(BackChannel, AKibibyteOfNoiseIsShownAndLeft) {
  std::mt19937 dice(11);
  for (int round = 0; round < 20; ++round) {
    std::string noise = "65";  // no reply begins so
    for (int i = 1; i < 1024; ++i) {
      const auto byte = static_cast<uint8_t>(dice());
      noise += " " + hexText(&byte, 1);
    }
    const Outcome outcome = waitUntilReady({{{noise}}, {{kReady}}});
    EXPECT_TRUE(outcome.returned);
    EXPECT_EQ(countOf(outcome.log, "Printer Status Data 1024 bytes - " + noise + " \n"), 1u);
    EXPECT_EQ(countOf(outcome.log, "STATE: "), 2u) << "only the reply contains a state";
  }
}

TEST(BackChannel, NoiseThatBeginsLikeAReplyIsOne) {
  // Sixteen FF bytes set every state there is, once.
  std::string storm = "64";
  for (int i = 1; i < 1024; ++i) storm += " FF";
  const Outcome outcome = waitUntilReady({{{storm}}, {{storm}}, {{kReady}}});
  EXPECT_TRUE(outcome.returned);
  EXPECT_EQ(countOf(outcome.log, "STATE: +media-empty-warning\n"), 1u);
  EXPECT_EQ(countOf(outcome.log, "STATE: +cover-open-warning\n"), 1u);
  EXPECT_EQ(countOf(outcome.log, "STATE: "), 4u);
}

TEST(SideChannel, WrongAnswersOnlyCostTheAttempt) {
  struct Case {
    const char* sentence;
    DrainAnswer answer;
    cups_sc_status_t status;
  };
  DrainAnswer oversized;
  for (int i = 0; i < 1025; ++i) oversized.data += "00 ";
  DrainAnswer echo;
  echo.echo = CUPS_SC_CMD_GET_BIDI;
  const Case cases[] = {
      {"not implemented", {{}, CUPS_SC_STATUS_NOT_IMPLEMENTED}, CUPS_SC_STATUS_NOT_IMPLEMENTED},
      {"a time-out", {{}, CUPS_SC_STATUS_TIMEOUT}, CUPS_SC_STATUS_TIMEOUT},
      {"an answer to another command", echo, CUPS_SC_STATUS_BAD_MESSAGE},
      {"more than there is room for", oversized, CUPS_SC_STATUS_TOO_BIG},
  };
  for (const Case& c : cases) {
    const Outcome outcome = waitUntilReady({c.answer, {{kReady}}});
    EXPECT_TRUE(outcome.returned) << c.sentence;
    EXPECT_EQ(countOf(outcome.log, "cups_sc_status_t = " + std::to_string(c.status) + "\n"), 1u)
        << c.sentence << "\n"
        << outcome.log;
  }
}

// Seconds slept in a wait in which the printer never answers.
int sleepsWith(FILE* stream) {
  Settings settings{};
  pellamStrCpy(settings.ModelName, "Z4", sizeof settings.ModelName);
  KorvelPrinter printer;
  printer.getOutputStreams() = {stream};
  printer.settings_ = &settings;
  sleeps = 0;
  bytesOfRead = [](size_t) { return size_t{0}; };
  CapturedStderr quiet;
  EXPECT_FALSE(printer.WaitForPrinterStatus(kStatusReady));
  quiet.text();
  bytesOfRead = nullptr;
  return sleeps;
}

TEST(StatusWait, DoesNotSleepWhenThePrintersConnectionIsGone) {
  signal(SIGPIPE, SIG_IGN);  // or the first request would end this test
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  FILE* stream = fdopen(ends[1], "w");
  EXPECT_EQ(sleepsWith(stream), 300);
  close(ends[0]);
  EXPECT_EQ(sleepsWith(stream), 0);
  std::fclose(stream);
  signal(SIGPIPE, SIG_DFL);
}

TEST(StatusWait, SleepsWhereAStreamCannotTellOfItsReader) {
  EXPECT_EQ(sleepsWith(nullptr), 300) << "a copy that could not be opened";
  constexpr int kUnusedByOthers = 300;
  const int descriptor = fcntl(STDERR_FILENO, F_DUPFD, kUnusedByOthers);
  FILE* closed = fdopen(descriptor, "w");
  ASSERT_NE(closed, nullptr);
  close(descriptor);
  EXPECT_EQ(sleepsWith(closed), 300) << "its descriptor is closed";
  std::fclose(closed);
}

}  // namespace
