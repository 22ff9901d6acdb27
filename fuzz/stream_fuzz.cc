// Arbitrary bytes as a command stream: the decoder and its listing must end with lines or an
// error, however the bytes arrive.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdlib>
#include <string>

#include "tools/stream/stream_decoder.h"
#include "tools/stream/stream_listing.h"

namespace {

std::string read(const uint8_t* bytes, size_t count, size_t step) {
  std::string lines;
  korvel::StreamListing listing([&](const std::string& line) { lines += line + "\n"; });
  korvel::StreamDecoder decoder([&](const korvel::StreamItem& item) { listing.add(item); });
  for (size_t at = 0; at < count; at += step) {
    decoder.push(bytes + at, std::min(step, count - at));
  }
  decoder.finish();
  listing.finish();
  return lines + decoder.error();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count) {
  if (read(bytes, count, 1) != read(bytes, count, 4096)) std::abort();
  return 0;
}
