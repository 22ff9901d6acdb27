// A packet is head 64, command, parameter, length, data, check word 0, tail 9B.
// SPDX-License-Identifier: Apache-2.0
#include "tools/stream/feed_commands.h"

namespace korvel {

namespace {

constexpr unsigned char kFeed = 0x00;
constexpr unsigned char kCut = 0x02;
constexpr unsigned char kControl = 0x0E;

constexpr char kToTearPosition = 3;
constexpr char kBackToPrint = 4;
constexpr char kToMarkTearPosition = 5;

std::string packet(unsigned char command, char parameter, const std::string& data) {
  std::string bytes = {'\x64', static_cast<char>(command), parameter,
                       static_cast<char>(data.size()), '\0'};
  return bytes + data + std::string(4, '\0') + '\x9B';
}

// Control 0 before a group of commands, control 1 after it.
std::string group(const std::string& packets) {
  return packet(kControl, 0x40, std::string(1, '\0')) + packets +
         packet(kControl, 0x40, std::string(1, '\1'));
}

std::string feed(char mode) { return packet(kFeed, 0, {mode, '\0', '\0'}); }

}  // namespace

std::string feedCommands(Feed what, bool blackMarks) {
  switch (what) {
    case Feed::kToEdge:
      return group(feed(blackMarks ? kToMarkTearPosition : kToTearPosition));
    case Feed::kBack:
      return group(feed(kBackToPrint));
    case Feed::kCut:
      return group(feed(kToTearPosition) + packet(kCut, 0, "")) + group(feed(kBackToPrint));
  }
  return "";
}

}  // namespace korvel
