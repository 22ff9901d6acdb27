// A stream of the C library with a write function of its own.
// The library's own one gives up when the descriptor has no room, and drops what it held.
// SPDX-License-Identifier: Apache-2.0
#include "driver/waiting_stream.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace {

void waitForRoom(int descriptor) {
  struct pollfd watched = {descriptor, POLLOUT, 0};
  poll(&watched, 1, -1);
}

// Returns the bytes written; fewer than `count` after an error.
ssize_t writeAll(void* cookie, const char* bytes, size_t count) {
  const auto descriptor = static_cast<int>(reinterpret_cast<intptr_t>(cookie));
  size_t done = 0;
  while (done < count) {
    const ssize_t written = write(descriptor, bytes + done, count - done);
    if (written >= 0) {
      done += static_cast<size_t>(written);
    } else if (errno == EAGAIN) {
      waitForRoom(descriptor);
    } else if (errno != EINTR) {
      break;
    }
  }
  return static_cast<ssize_t>(done);
}

}  // namespace

FILE* openWaitingStream(FILE* stream) {
  const int descriptor = fileno(stream);
  if (descriptor == -1) return stream;
  cookie_io_functions_t functions{};
  functions.write = writeAll;
  void* cookie = reinterpret_cast<void*>(static_cast<intptr_t>(descriptor));
  FILE* waiting = fopencookie(cookie, "w", functions);
  return waiting != nullptr ? waiting : stream;
}
