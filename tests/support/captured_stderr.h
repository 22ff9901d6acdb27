// Captures what a block writes to a C stream of the process, and restores the stream.
// It redirects the descriptor, so that direct writes and log lines are captured in order.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SUPPORT_CAPTURED_STDERR_H
#define KORVEL_TESTS_SUPPORT_CAPTURED_STDERR_H

#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <stdexcept>
#include <string>

class CapturedStream {
 public:
  explicit CapturedStream(FILE* stream) : stream_(stream), file_(std::tmpfile()) {
    if (file_ == nullptr) throw std::runtime_error("no temporary file for a captured stream");
    std::fflush(stream_);
    kept_ = dup(fileno(stream_));
    dup2(fileno(file_), fileno(stream_));
  }
  CapturedStream(const CapturedStream&) = delete;
  CapturedStream& operator=(const CapturedStream&) = delete;
  ~CapturedStream() {
    restore();
    std::fclose(file_);
  }

  // Ends the capture and returns the text; later calls return the same text.
  std::string text() {
    restore();
    std::string all;
    std::rewind(file_);
    char part[4096];
    for (size_t n = 0; (n = std::fread(part, 1, sizeof part, file_)) > 0;) all.append(part, n);
    return all;
  }

 private:
  void restore() {
    if (kept_ == -1) return;
    std::fflush(stream_);
    dup2(kept_, fileno(stream_));
    close(kept_);
    kept_ = -1;
  }

  FILE* stream_;
  FILE* file_;
  int kept_ = -1;
};

class CapturedStderr : public CapturedStream {
 public:
  CapturedStderr() : CapturedStream(stderr) {}
};

class CapturedStdout : public CapturedStream {
 public:
  CapturedStdout() : CapturedStream(stdout) {}
};

#endif
