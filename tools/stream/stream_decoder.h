// Reads the printer's command stream, byte by byte and strictly: runs of NUL bytes and framed
// packets. Written from the printer's point of view, without the code that creates the stream.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_STREAM_STREAM_DECODER_H
#define KORVEL_TOOLS_STREAM_STREAM_DECODER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace korvel {

enum class ItemKind { kPageStart, kControl, kDensity, kFeed, kCut, kArea, kImage, kStatusRequest };

// One whole item of the stream.
struct StreamItem {
  ItemKind kind = ItemKind::kPageStart;
  uint64_t offset = 0;        // of the item's first byte, from the stream's start
  std::vector<uint8_t> data;  // the packet's data bytes, framing not included

  // Two bytes of data, low byte first. `at` must be inside the data.
  unsigned word(size_t at) const { return data[at] | static_cast<unsigned>(data[at + 1]) << 8; }
};

// Number of NUL bytes at the start of a page.
inline constexpr size_t kPageStartBytes = 64;

struct PacketRule;

// A parser that accepts bytes in parts of any size and passes every complete item to a sink. It
// stops at the first malformed byte: from then on push() and finish() return false, and error() has
// the offset, the byte and what was expected: "offset 133: have 0x00, want tail 0x9B".
class StreamDecoder {
 public:
  using Sink = std::function<void(const StreamItem&)>;

  explicit StreamDecoder(Sink sink) : sink_(std::move(sink)) {}

  bool push(const uint8_t* bytes, size_t count);
  bool finish();  // the stream has ended; false inside an item

  bool failed() const { return !error_.empty(); }
  const std::string& error() const { return error_; }
  uint64_t offset() const { return offset_; }  // bytes accepted so far

 private:
  void takeByte(uint8_t byte);
  size_t takeData(const uint8_t* bytes, size_t count);
  void takePageStart(uint8_t byte);
  void takeHeader(uint8_t byte);
  void takeTrailer(uint8_t byte);
  void checkLength();
  void checkValue();
  void emit();
  void fail(uint64_t offset, const std::string& have, const std::string& want);

  enum class State { kBoundary, kPageStart, kHeader, kData, kTrailer };

  Sink sink_;
  State state_ = State::kBoundary;
  bool afterPageStart_ = false;  // two runs of NUL bytes may not follow each other
  size_t taken_ = 0;             // bytes of the current state's field
  size_t length_ = 0;            // announced data bytes
  const PacketRule* rule_ = nullptr;
  StreamItem item_;
  uint64_t offset_ = 0;
  std::string error_;
};

}  // namespace korvel

#endif
