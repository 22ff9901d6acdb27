// The stream as text, a line an item: "000064 control 0", "000161 image 4 rows x 125 bytes".
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_STREAM_STREAM_LISTING_H
#define KORVEL_TOOLS_STREAM_STREAM_LISTING_H

#include <functional>
#include <string>
#include <vector>

#include "tools/stream/stream_decoder.h"

namespace korvel {

// One item in words, without offset. An image packet is told in rows when `rowBytes` is not 0 and
// divides it, else in bytes alone.
std::string itemText(const StreamItem& item, size_t rowBytes);

// Writes lines in the stream's order. The first image packet behind a full-width area waits for
// the item after it, which decides how long a row is.
class StreamListing {
 public:
  using Line = std::function<void(const std::string&)>;  // without line end

  explicit StreamListing(Line line) : line_(std::move(line)) {}

  void add(const StreamItem& item);
  void finish();  // writes what still waits

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
