// The printer commands as the tests parse them: 64 NUL bytes before each page, and packets of head,
// command, parameter, length, data, four zero bytes and tail.
// SPDX-License-Identifier: Apache-2.0
#include "tests/job/stream_text.h"

#include <cctype>
#include <cstdio>

namespace {

constexpr size_t kLeadingNuls = 64;
constexpr size_t kFrame = 10;         // bytes of a packet besides its data
constexpr size_t kShownAsHex = 48;    // image bytes; longer blocks show a checksum
constexpr uint32_t kPlainWidth = 80;  // dots

unsigned byteAt(const std::string& bytes, size_t at) {
  return static_cast<unsigned char>(bytes[at]);
}

unsigned word16(const std::string& bytes, size_t at) {
  return byteAt(bytes, at) | byteAt(bytes, at + 1) << 8;
}

struct Packet {
  unsigned command;
  unsigned parameter;
  std::string data;
};

// Returns an empty string for a valid packet, else what is wrong with it.
std::string describe(const Packet& packet, std::string* line) {
  struct Form {
    const char* name;
    unsigned command;
    unsigned parameter;
    long length;  // -1: any
  };
  static constexpr Form kForms[] = {{"control", 0x0E, 0x40, 1},
                                    {"density", 0x41, 0, 1},
                                    {"feed", 0x00, 0, 3},
                                    {"cut", 0x02, 0, 0},
                                    {"area", 0x43, 0, 4},
                                    {"image", 0x03, 0, -1},
                                    {"status request", 0x10, 0x40, 0}};
  const Form* form = nullptr;
  for (const Form& known : kForms) {
    if (known.command == packet.command && known.parameter == packet.parameter) form = &known;
  }
  if (form == nullptr) return "unknown command or parameter";
  const std::string& data = packet.data;
  if (form->length != -1 && form->length != static_cast<long>(data.size())) return "wrong length";

  char text[80] = "";
  *line = form->name;
  switch (packet.command) {
    case 0x0E:
    case 0x41:
      std::snprintf(text, sizeof text, " %u", byteAt(data, 0));
      break;
    case 0x00:
      std::snprintf(text, sizeof text, " mode %u lines %u", byteAt(data, 0), word16(data, 1));
      break;
    case 0x43:
      std::snprintf(text, sizeof text, " offset %u width %u", word16(data, 0), word16(data, 2));
      break;
    case 0x03:
      std::snprintf(text, sizeof text, " %zu bytes", data.size());
      break;
    default:
      break;
  }
  *line += text;
  if (packet.command != 0x03) return "";
  if (data.size() <= kShownAsHex) {
    *line += " " + hexText(data);
  } else {
    std::snprintf(text, sizeof text, " crc32 %08X", crc32Of(data));
    *line += text;
  }
  return "";
}

// Extracts the packet at `at` and moves `at` to its end. Returns what is wrong, or nothing.
std::string takePacket(const std::string& bytes, size_t* at, Packet* packet) {
  if (bytes.size() - *at < kFrame) return "packet cut short";
  if (byteAt(bytes, *at) != 0x64) return "no head";
  const size_t length = word16(bytes, *at + 3);
  if (bytes.size() - *at < kFrame + length) return "packet cut short";
  *packet = {byteAt(bytes, *at + 1), byteAt(bytes, *at + 2), bytes.substr(*at + 5, length)};
  const size_t check = *at + 5 + length;
  if (bytes.compare(check, 4, std::string(4, '\0')) != 0) return "check word not zero";
  if (byteAt(bytes, check + 4) != 0x9B) return "no tail";
  *at += kFrame + length;
  return "";
}

void keepPicture(const Packet& packet, std::vector<SentPicture>* pictures) {
  if (packet.command == 0x43) pictures->push_back({word16(packet.data, 2), {}});
  if (packet.command == 0x03 && !pictures->empty()) pictures->back().blocks.push_back(packet.data);
}

}  // namespace

StreamText readStream(const std::string& bytes) {
  StreamText stream;
  const std::string nuls(kLeadingNuls, '\0');
  for (size_t at = 0; at < bytes.size();) {
    if (bytes.compare(at, kLeadingNuls, nuls) == 0) {
      stream.lines.push_back("page start");
      at += kLeadingNuls;
      continue;
    }
    const size_t start = at;
    Packet packet;
    std::string line;
    std::string fault = takePacket(bytes, &at, &packet);
    if (fault.empty()) fault = describe(packet, &line);
    if (!fault.empty()) {
      stream.fault = "offset " + std::to_string(start) + ": " + fault;
      break;
    }
    stream.lines.push_back(line);
    keepPicture(packet, &stream.pictures);
  }
  return stream;
}

std::string StreamText::text() const {
  std::string all;
  for (const std::string& line : lines) all += line + "\n";
  return all;
}

uint32_t SentPicture::bytesPerRow() const {
  if (areaWidth != 2592 && areaWidth != 1728) return areaWidth / 8;
  if (blocks.empty()) return 0;
  const size_t first = blocks[0].size();
  return static_cast<uint32_t>(blocks.size() > 1 ? first / 4 : first);
}

std::string SentPicture::pbm() const {
  std::string dots;
  for (const std::string& block : blocks) dots += block;
  const size_t row = bytesPerRow();
  if (row == 0) return "P1\n0 0\n";
  const size_t rows = (dots.size() + row - 1) / row;
  dots.resize(rows * row, '\0');
  const bool plain = row * 8 <= kPlainWidth;
  std::string out = plain ? "P1\n" : "P4\n";
  out += std::to_string(row * 8) + " " + std::to_string(rows) + "\n";
  if (!plain) return out + dots;
  for (size_t y = 0; y < rows; ++y) {
    for (size_t x = 0; x < row * 8; ++x) {
      out += (byteAt(dots, y * row + x / 8) >> (7 - x % 8) & 1) != 0 ? '1' : '0';
    }
    out += '\n';
  }
  return out;
}

std::string hexText(const std::string& bytes) {
  std::string text;
  for (size_t i = 0; i < bytes.size(); ++i) {
    char pair[4];
    std::snprintf(pair, sizeof pair, "%02X", byteAt(bytes, i));
    text += (i == 0 ? "" : " ");
    text += pair;
  }
  return text;
}

std::string bytesOf(const std::string& hex) {
  std::string bytes;
  std::string pair;
  for (const char digit : hex) {
    if (std::isxdigit(static_cast<unsigned char>(digit)) == 0) continue;
    pair += digit;
    if (pair.size() < 2) continue;
    bytes += static_cast<char>(std::stoi(pair, nullptr, 16));
    pair.clear();
  }
  return bytes;
}

uint32_t crc32Of(const std::string& bytes) {
  uint32_t crc = 0xFFFFFFFF;
  for (const char c : bytes) {
    crc ^= static_cast<unsigned char>(c);
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
  }
  return ~crc;
}
