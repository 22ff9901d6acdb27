// The stream as text, one line per item: "000064 control 0", "000161 image 4 rows x 125 bytes".
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_STREAM_STREAM_LISTING_H
#define KORVEL_TOOLS_STREAM_STREAM_LISTING_H

#include <functional>
#include <string>
#include <vector>

#include "tools/stream/stream_decoder.h"

namespace korvel {

// One item as text, without offset. The size of an image packet is in rows when `rowBytes` is not 0
// and divides it, otherwise in bytes.
std::string itemText(const StreamItem& item, size_t rowBytes);

// Writes lines in the order of the stream. The first image packet after a full-width area waits for
// the next item, which determines the length of a row.
class StreamListing {
 public:
  using Line = std::function<void(const std::string&)>;  // without line end

  explicit StreamListing(Line line) : line_(std::move(line)) {}

  void add(const StreamItem& item);
  void finish();  // writes a waiting packet

 private:
  void write(const StreamItem& item, bool complete);

  Line line_;
  bool haveArea_ = false;
  bool waiting_ = false;
  StreamItem area_;
  StreamItem held_;
  std::vector<size_t> blocks_;
};

}  // namespace korvel

#endif
