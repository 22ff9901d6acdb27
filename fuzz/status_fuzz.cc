// Arbitrary answers of the spooler and the printer during the status wait: no read passes the
// buffer, every line of the log is the one that the answers ask for, and the wait ends.
// First line: ready or out, once or more, a wait each. Every further line answers a request: the
// drain's result, then hex bytes that one read gets, pieces parted by "|"; "+9" among them is the
// length of the drain's own answer. After the last line nothing more is answered.
// SPDX-License-Identifier: Apache-2.0
#include "protocol/status.h"

#include <cups/cups.h>
#include <cups/sidechannel.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/caught_streams.h"
#include "fuzz/demand.h"
#include "fuzz/header_line.h"
#include "fuzz/short_sleep.h"
#include "printer/settings.h"
#include "printer/text.h"
#include "protocol/korvel_printer.h"

namespace {

constexpr size_t kBuffer = 1024;
constexpr int kAttempts = 300;
constexpr int kMaxWaits = 4;

using Read = std::optional<std::string>;  // nothing: the read failed

struct Answer {
  int status = 0;
  int length = 0;
  std::vector<std::string> reads;
};

// The spooler's side of both channels; one at a time.
struct Channels {
  std::vector<Answer> script;
  size_t requests = 0;
  size_t nextRead = 0;
  std::vector<std::vector<Read>> delivered;  // what the reads of each request really got

  const Answer* current() const {
    return requests == 0 || requests > script.size() ? nullptr : &script[requests - 1];
  }
};

Channels* channels = nullptr;

int digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

Answer parseAnswer(std::string_view text) {
  HeaderLine line(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  Answer answer;
  answer.status = line.number();
  answer.reads.emplace_back();
  int high = -1;
  const std::string_view rest = line.remainder();
  for (size_t i = 0; i < rest.size(); ++i) {
    if (rest[i] == '|') answer.reads.emplace_back();
    if (rest[i] == '+') answer.length = HeaderLine::numberIn(rest.substr(i + 1));
    const int value = digit(rest[i]);
    if (value >= 0 && high >= 0) {
      answer.reads.back() += static_cast<char>(high * 16 + value);
      high = -1;
    } else if (value >= 0) {
      high = value;
    }
  }
  return answer;
}

// ---- the expected log, derived from the answers alone ----

std::string hexOf(const std::string& bytes) {
  std::string text;
  for (const char byte : bytes) {
    char pair[4];
    std::snprintf(pair, sizeof pair, "%02X ", static_cast<unsigned>(static_cast<uint8_t>(byte)));
    text += pair;
  }
  return text;
}

struct Expected {
  std::string log;
  uint64_t lastStatus = 0;

  // Returns whether this answer ends the wait.
  bool answer(const Answer* given, const std::vector<Read>& reads, bool waitsReady) {
    log += "DEBUG: cups_sc_status_t = " +
           std::to_string(given == nullptr ? int{CUPS_SC_STATUS_TIMEOUT} : given->status) + "\n";
    if (given == nullptr || given->status != CUPS_SC_STATUS_OK) return false;
    std::string all;
    for (const Read& read : reads) {
      const std::string count = read ? std::to_string(read->size()) : "-1";
      log += "DEBUG: cupsBackChannelRead bytes " + count + "\n";
      all += read.value_or("");
    }
    log += "DEBUG: cupsBackChannelRead Printer Status Data " + std::to_string(all.size()) +
           " bytes - " + hexOf(all) + "\n";
    if (all.empty() || all[0] != '\x64' || (all + '\0')[1] != '\xFF') return false;
    return word(all, waitsReady);
  }

  bool word(std::string reply, bool waitsReady) {
    reply.resize(kBuffer);
    uint64_t status = 0;
    for (size_t i = 5; i < 13; ++i) {
      status |= uint64_t{static_cast<uint8_t>(reply[i])} << (8 * (i - 5));
    }
    const bool ready = (status & 0x00800000) != 0;
    const bool out = (status & 0x00080000) != 0;
    const bool open = (status & 0x00010000) != 0;
    if (status != lastStatus) {
      log += std::string("STATE: ") + (out ? "+" : "-") + "media-empty-warning\n";
      log += std::string("INFO: ") + (out ? "Paper out." : "Printing") + "\n";
      log += std::string("STATE: ") + (open ? "+" : "-") + "cover-open-warning\n";
    }
    lastStatus = status;
    if (!waitsReady) return out;
    if (!ready || out) return false;
    log += "DEBUG: Exit WaitForPrinterReady: ready to print.\n";
    return true;
  }
};

void waitOnce(KorvelPrinter& printer, bool waitsReady, Expected& expected) {
  const size_t before = channels->requests;
  CatchStreams caught;
  const ShortSleep slept;
  const bool seen = printer.WaitForPrinterStatus(waitsReady ? 0x00800000 : 0x00080000);

  expected.log = "DEBUG: Enter WaitForPrinterReady\n";
  bool wanted = false;
  size_t at = before;
  for (; at < before + kAttempts && !wanted; ++at) {
    const Answer* given = at < channels->script.size() ? &channels->script[at] : nullptr;
    demand(at < channels->delivered.size(), "the wait asks until it has its answer");
    wanted = expected.answer(given, channels->delivered[at], waitsReady);
  }
  demand(channels->requests == at, "the wait does not ask on");
  demand(seen == wanted, "the wait returns what the answers say");
  const int failed = static_cast<int>(at - before) - (wanted ? 1 : 0);
  demand(slept.seconds() == failed, "one sleep a failed attempt");
  demandSame(caught.messages(), expected.log, "the logs");
}

}  // namespace

// ---- in place of the library's ----

extern "C" cups_sc_status_t cupsSideChannelDoRequest(cups_sc_command_t command, char* data,
                                                     int* datalen, double timeout) {
  demand(command == CUPS_SC_CMD_DRAIN_OUTPUT && timeout == 1.0, "only drains are asked for");
  demand(*datalen >= 0 && *datalen <= static_cast<int>(kBuffer), "the length fits the buffer");
  ++channels->requests;
  channels->nextRead = 0;
  channels->delivered.emplace_back();
  const Answer* now = channels->current();
  if (now == nullptr) return CUPS_SC_STATUS_TIMEOUT;
  // The library writes at most what it was offered.
  *datalen = std::clamp(now->length, 0, *datalen);
  std::memset(data, 0x64, static_cast<size_t>(*datalen));
  return static_cast<cups_sc_status_t>(now->status);
}

extern "C" ssize_t cupsBackChannelRead(char* buffer, size_t bytes, double timeout) {
  demand(bytes > 0 && bytes <= kBuffer && timeout == 1.0, "a read asks for what fits");
  std::memset(buffer, 0, bytes);  // a sanitizer sees whether all of it may be written
  const Answer* now = channels->current();
  auto& delivered = channels->delivered.back();
  if (now == nullptr || channels->nextRead >= now->reads.size()) {
    delivered.emplace_back();
    return -1;
  }
  const std::string& read = now->reads[channels->nextRead++];
  const size_t count = std::min(bytes, read.size());
  std::copy_n(read.data(), count, buffer);
  delivered.push_back(read.substr(0, count));
  return static_cast<ssize_t>(count);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count) {
  HeaderLine line(bytes, count);
  Channels played;
  std::string_view rest = line.rest();
  while (!rest.empty()) {
    const size_t end = std::min(rest.find('\n'), rest.size());
    played.script.push_back(parseAnswer(rest.substr(0, end)));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  channels = &played;

  Settings settings{};
  pellamStrCpy(settings.ModelName, "Z4", sizeof settings.ModelName);
  KorvelPrinter printer;
  printer.getOutputStreams().clear();
  printer.settings_ = &settings;
  Expected expected;
  for (int i = 0; i < kMaxWaits && line.hasMore(); ++i) {
    waitOnce(printer, line.word() == "ready", expected);
  }
  channels = nullptr;
  return 0;
}
