// Malformed streams: cut off after every byte, and with a wrong byte at every place. The printer
// names the offset, answers nothing more, and serves the next host.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/hex_text.h"
#include "tests/tools/emulator/printer_process.h"

namespace {

// The offsets stand on the right. The stream ends with a status request.
const char kStream[] =
    "00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000"
    "00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000"  // 0 to 63
    "64 0E 40 01 00 00 00 00 00 00 9B"                                         // 64 to 74
    "64 41 00 01 00 08 00 00 00 00 9B"                                         // 75 to 85
    "64 43 00 04 00 08 00 08 00 00 00 00 00 9B"                                // 86 to 99
    "64 03 00 02 00 FF 81 00 00 00 00 9B"                                      // 100 to 111
    "64 00 00 03 00 03 00 00 00 00 00 00 9B"                                   // 112 to 124
    "64 02 00 00 00 00 00 00 00 9B"                                            // 125 to 134
    "64 10 40 00 00 00 00 00 00 9B";                                           // 135 to 144
constexpr size_t kLength = 145;

struct Packet {
  size_t start;
  size_t data;   // bytes
  size_t stop;   // offset after it
  bool checked;  // its data has forbidden values
  bool anyLength;
};

const Packet kPackets[] = {
    {64, 1, 75, true, false},    {75, 1, 86, true, false},    {86, 4, 100, false, false},
    {100, 2, 112, false, true},  {112, 3, 125, false, false}, {125, 0, 135, false, false},
    {135, 0, 145, false, false},
};

const Packet* packetAt(size_t offset) {
  const auto found = std::find_if(std::begin(kPackets), std::end(kPackets), [&](const Packet& p) {
    return offset >= p.start && offset < p.stop;
  });
  return found == std::end(kPackets) ? nullptr : found;
}

// How the printer names the breach, up to what it found there; empty for a sound stream.
std::string breach(size_t offset) {
  return "malformed stream, the rest is dropped: offset " + std::to_string(offset) + ": have ";
}

// Sends bytes to a printer that serves one host after another. Returns its reply in hex and sets
// the line that reports the malformed byte, if any.
std::string serve(PrinterProcess* printer, int port, const std::vector<uint8_t>& bytes,
                  std::string* report) {
  HostConnection host(port);
  host.send(bytes);
  host.endSending();
  std::string reply = hexText(host.receiveAll());
  report->clear();
  for (const std::string& line : printer->linesTo("disconnected")) {
    if (line.starts_with("malformed")) *report = line;
  }
  return reply;
}

TEST(PrinterMalformed, AStreamMayEndBetweenPacketsOnly) {
  PrinterProcess printer(KORVEL_PRINTER, {"--port", "0", "--speed", "100000"});
  const int port = printer.number();
  const std::vector<uint8_t> whole = hexBytes(kStream);
  ASSERT_EQ(kLength, whole.size());
  for (size_t length = 0; length <= kLength; ++length) {
    std::string report;
    serve(&printer, port, {whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length)}, &report);
    std::string want;
    if (length > 0 && length < 64) {
      want = breach(length) + "the end after " + std::to_string(length) +
             " NUL bytes, want 64 of them";
    }
    const Packet* packet = packetAt(length);
    if (packet != nullptr && length > packet->start) {
      want = breach(length) + "the end, want the rest of the packet at " +
             std::to_string(packet->start);
    }
    EXPECT_EQ(want, report) << length << " bytes";
  }
  printer.signal(SIGTERM);
  EXPECT_EQ(0, printer.status());
}

// 0xEE is wrong as head, command, parameter, check word, tail, and as a checked value. As a
// length's byte it is named at the length's start; where any length goes, it swallows the stream.
std::string answerToWrongByte(size_t offset) {
  if (offset < 64) {
    // The first byte opens a packet instead of a run of NUL bytes.
    return breach(offset) +
           (offset == 0 ? "0xEE, want head 0x64"
                        : "0xEE after " + std::to_string(offset) + " NUL bytes, want 64 of them");
  }
  const Packet& packet = *packetAt(offset);
  const size_t at = offset - packet.start;
  if (at == 3 || at == 4) {
    if (packet.anyLength) {
      return breach(kLength) + "the end, want the rest of the packet at " +
             std::to_string(packet.start);
    }
    return breach(packet.start + 3) + "length ";
  }
  if (at >= 5 && at < 5 + packet.data && !packet.checked) return std::string();
  return breach(offset) + "0xEE, want ";
}

TEST(PrinterMalformed, AWrongByteIsNamedWhereverItStands) {
  PrinterProcess printer(KORVEL_PRINTER, {"--port", "0", "--speed", "100000"});
  const int port = printer.number();
  for (size_t offset = 0; offset < kLength; ++offset) {
    std::vector<uint8_t> bytes = hexBytes(kStream);
    bytes[offset] = 0xEE;
    std::string report;
    const std::string reply = serve(&printer, port, bytes, &report);
    const std::string want = answerToWrongByte(offset);
    if (want.empty()) {
      EXPECT_EQ("", report) << "offset " << offset;
      EXPECT_EQ(26u + 12u, reply.size()) << "offset " << offset;
    } else {
      EXPECT_EQ(want, report.substr(0, want.size())) << "offset " << offset;
      EXPECT_EQ("", reply) << "offset " << offset;
    }
  }
  printer.signal(SIGTERM);
  EXPECT_EQ(0, printer.status());
}

TEST(PrinterMalformed, NothingIsAnsweredBehindABreach) {
  PrinterProcess printer(KORVEL_PRINTER, {"--port", "0"});
  const int port = printer.number();
  const std::string request = "64 10 40 00 00 00 00 00 00 9B";
  HostConnection host(port);
  host.send(hexBytes("01" + request + request));
  EXPECT_EQ((std::vector<std::string>{"connected", breach(0) + "0x01, want head 0x64"}),
            printer.linesTo("malformed"));
  host.send(hexBytes(request));
  host.endSending();
  EXPECT_EQ("", host.receiveAll());
  HostConnection next(port);
  next.send(hexBytes(request));
  EXPECT_EQ("64 FF 00 08 00 00 00 80 00 00 00 00 00", hexText(next.receive(13)));
}

}  // namespace
