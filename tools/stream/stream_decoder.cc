// The framing: head 64, command, parameter, length (low byte first), data, check word 0, tail 9B.
// Each command restricts its parameter, its length and the value of its data.
// SPDX-License-Identifier: Apache-2.0
#include "tools/stream/stream_decoder.h"

#include <algorithm>
#include <cstdio>

namespace korvel {

struct PacketRule {
  uint8_t command;
  uint8_t parameter;
  int length;
  int highestValue;  // of a single data byte
  ItemKind kind;
};

namespace {

constexpr uint8_t kHead = 0x64;
constexpr uint8_t kTail = 0x9B;
constexpr size_t kHeaderBytes = 5;
constexpr size_t kTrailerBytes = 5;  // four of the check word, one tail
constexpr int kAnyLength = -1;
constexpr int kAnyValue = -1;

constexpr PacketRule kRules[] = {
    {0x0E, 0x40, 1, 1, ItemKind::kControl},
    {0x41, 0x00, 1, 15, ItemKind::kDensity},
    {0x00, 0x00, 3, kAnyValue, ItemKind::kFeed},
    {0x02, 0x00, 0, kAnyValue, ItemKind::kCut},
    {0x43, 0x00, 4, kAnyValue, ItemKind::kArea},
    {0x03, 0x00, kAnyLength, kAnyValue, ItemKind::kImage},
    {0x10, 0x40, 0, kAnyValue, ItemKind::kStatusRequest},
};

std::string hexByte(uint8_t byte) {
  char text[8];
  std::snprintf(text, sizeof text, "0x%02X", static_cast<unsigned>(byte));
  return text;
}

}  // namespace

bool StreamDecoder::push(const uint8_t* bytes, size_t count) {
  size_t at = 0;
  while (at < count && !failed()) {
    if (state_ == State::kData) {
      at += takeData(bytes + at, count - at);
    } else {
      takeByte(bytes[at]);
      ++at;
    }
  }
  return !failed();
}

bool StreamDecoder::finish() {
  if (!failed() && state_ == State::kPageStart) {
    fail(offset_, "the end after " + std::to_string(taken_) + " NUL bytes", "64 of them");
  } else if (!failed() && state_ != State::kBoundary) {
    fail(offset_, "the end", "the rest of the packet at " + std::to_string(item_.offset));
  }
  return !failed();
}

void StreamDecoder::takeByte(uint8_t byte) {
  if (state_ == State::kBoundary) {
    item_.offset = offset_;
    item_.data.clear();
    taken_ = 0;
    state_ = byte == 0 && !afterPageStart_ ? State::kPageStart : State::kHeader;
  }
  if (state_ == State::kPageStart) {
    takePageStart(byte);
  } else if (state_ == State::kHeader) {
    takeHeader(byte);
  } else {
    takeTrailer(byte);
  }
  ++offset_;
}

void StreamDecoder::takePageStart(uint8_t byte) {
  if (byte != 0) {
    fail(offset_, hexByte(byte) + " after " + std::to_string(taken_) + " NUL bytes", "64 of them");
  } else if (++taken_ == kPageStartBytes) {
    item_.kind = ItemKind::kPageStart;
    emit();
    afterPageStart_ = true;
  }
}

void StreamDecoder::takeHeader(uint8_t byte) {
  switch (taken_) {
    case 0:
      if (byte != kHead) fail(offset_, hexByte(byte), "head 0x64");
      break;
    case 1:
      rule_ = std::find_if(std::begin(kRules), std::end(kRules),
                           [byte](const PacketRule& rule) { return rule.command == byte; });
      if (rule_ == std::end(kRules)) fail(offset_, hexByte(byte), "a known command");
      break;
    case 2:
      if (byte != rule_->parameter) {
        fail(offset_, hexByte(byte), "parameter " + hexByte(rule_->parameter));
      }
      break;
    case 3:
      length_ = byte;
      break;
    default:
      length_ |= static_cast<size_t>(byte) << 8;
      checkLength();
  }
  if (++taken_ == kHeaderBytes) {
    taken_ = 0;
    state_ = length_ > 0 ? State::kData : State::kTrailer;
  }
}

void StreamDecoder::checkLength() {
  if (rule_->length != kAnyLength && length_ != static_cast<size_t>(rule_->length)) {
    fail(item_.offset + 3, "length " + std::to_string(length_),
         "length " + std::to_string(rule_->length));
  }
}

size_t StreamDecoder::takeData(const uint8_t* bytes, size_t count) {
  const size_t part = std::min(count, length_ - item_.data.size());
  item_.data.insert(item_.data.end(), bytes, bytes + part);
  offset_ += part;
  if (item_.data.size() == length_) {
    taken_ = 0;
    state_ = State::kTrailer;
    checkValue();
  }
  return part;
}

void StreamDecoder::checkValue() {
  if (rule_->highestValue != kAnyValue && item_.data[0] > rule_->highestValue) {
    fail(item_.offset + kHeaderBytes, hexByte(item_.data[0]),
         "0 to " + std::to_string(rule_->highestValue));
  }
}

void StreamDecoder::takeTrailer(uint8_t byte) {
  const bool isTail = taken_ + 1 == kTrailerBytes;
  if (byte != (isTail ? kTail : 0)) {
    fail(offset_, hexByte(byte), isTail ? "tail 0x9B" : "check word 0x00");
  } else if (++taken_ == kTrailerBytes) {
    item_.kind = rule_->kind;
    emit();
    afterPageStart_ = false;
  }
}

void StreamDecoder::emit() {
  state_ = State::kBoundary;
  sink_(item_);
}

void StreamDecoder::fail(uint64_t offset, const std::string& have, const std::string& want) {
  if (failed()) return;
  error_ = "offset " + std::to_string(offset) + ": have " + have + ", want " + want;
}

}  // namespace korvel
