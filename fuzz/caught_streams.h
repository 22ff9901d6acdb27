// Standard output and standard error of code under fuzzing, caught in memory. Only the C streams
// are led away: the fuzzer goes on reporting on the descriptors.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_FUZZ_CAUGHT_STREAMS_H
#define KORVEL_FUZZ_CAUGHT_STREAMS_H

#include <cstdio>
#include <cstdlib>
#include <string>

// One stream into a string; it lives as long as the process. Takes any buffering that the code
// under test sets, which a memory stream of the library does not.
class CaughtStream {
 public:
  CaughtStream() {
    cookie_io_functions_t functions{};
    functions.write = [](void* to, const char* bytes, size_t count) {
      static_cast<std::string*>(to)->append(bytes, count);
      return static_cast<ssize_t>(count);
    };
    stream_ = fopencookie(&text_, "w", functions);
    if (stream_ == nullptr) std::abort();
  }
  CaughtStream(const CaughtStream&) = delete;
  CaughtStream& operator=(const CaughtStream&) = delete;

  FILE* get() const { return stream_; }
  void clear() {
    std::fflush(stream_);
    text_.clear();
  }
  const std::string& text() {
    std::fflush(stream_);
    return text_;
  }

 private:
  std::string text_;
  FILE* stream_ = nullptr;
};

struct CaughtStreams {
  CaughtStream& out;
  CaughtStream& messages;
};

// Leads `stdout` and `stderr` away while it lives; what was caught before is gone.
class CatchStreams {
 public:
  CatchStreams() : keptOut_(stdout), keptMessages_(stderr) {
    streams().out.clear();
    streams().messages.clear();
    stdout = streams().out.get();
    stderr = streams().messages.get();
  }
  CatchStreams(const CatchStreams&) = delete;
  CatchStreams& operator=(const CatchStreams&) = delete;
  ~CatchStreams() {
    stdout = keptOut_;
    stderr = keptMessages_;
  }

  const std::string& out() { return streams().out.text(); }
  const std::string& messages() { return streams().messages.text(); }

 private:
  static CaughtStreams streams() {
    static auto* const out = new CaughtStream;  // never deleted: code may hold the stream
    static auto* const messages = new CaughtStream;
    return {*out, *messages};
  }

  FILE* keptOut_;
  FILE* keptMessages_;
};

#endif
