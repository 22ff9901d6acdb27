// A stream to memory, so that a test can read what was written.
// Several of them form a list of output streams.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SUPPORT_MEMORY_STREAM_H
#define KORVEL_TESTS_SUPPORT_MEMORY_STREAM_H

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>

// Owns the stream and its bytes; nothing else closes it.
class MemoryStream {
 public:
  MemoryStream() : stream_(open_memstream(&bytes_, &size_)) {}
  MemoryStream(const MemoryStream&) = delete;
  MemoryStream& operator=(const MemoryStream&) = delete;
  ~MemoryStream() {
    std::fclose(stream_);
    std::free(bytes_);
  }

  FILE* get() const { return stream_; }

  // What has been written so far; with `flush` off, only what the writer has flushed.
  std::string text(bool flush = true) const {
    if (flush) std::fflush(stream_);
    return bytes_ == nullptr ? std::string() : std::string(bytes_, size_);
  }

 private:
  char* bytes_ = nullptr;
  size_t size_ = 0;
  FILE* stream_;
};

#endif
