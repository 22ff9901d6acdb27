// The CUPS side of descriptors 3 and 4: answers drain requests from a script and returns the
// printer's replies, one per read, without waiting for the clock.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SUPPORT_FAKE_CHANNELS_H
#define KORVEL_TESTS_SUPPORT_FAKE_CHANNELS_H

#include <cups/sidechannel.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstddef>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/hex_text.h"

// What happens at one drain request. Each reply, as hex text, is returned by one read of the back
// channel; after the last one the channel is at its end, or silent.
struct DrainAnswer {
  std::vector<std::string> replies = {};
  cups_sc_status_t status = CUPS_SC_STATUS_OK;
  std::string data = {};  // hex text, part of the answer itself
  bool silent = false;    // no end of the data: the reader runs into its timeout
  int echo = -1;          // the command in the answer; -1: the one of the request
};

// Takes over the two descriptors during its lifetime and then restores them. Requests beyond the
// script get the last answer again, without its replies.
class FakeChannels {
 public:
  using OnRequest = std::function<void()>;

  // `onRequest` runs at each request, before it is answered, while the requesting thread waits.
  explicit FakeChannels(std::vector<DrainAnswer> script, OnRequest onRequest = {})
      : script_(std::move(script)), onRequest_(std::move(onRequest)) {
    backEnd_ = openOn(kBackChannel, &keptBack_);
    sideEnd_ = openOn(kSideChannel, &keptSide_);
    spooler_ = std::thread([this] { serve(); });
  }
  FakeChannels(const FakeChannels&) = delete;
  FakeChannels& operator=(const FakeChannels&) = delete;
  ~FakeChannels() { finish(); }

  // Stops answering and returns the received requests as hex text.
  std::vector<std::string> finish() {
    if (spooler_.joinable()) {
      putBack(kSideChannel, keptSide_);  // the thread ends when the channel is closed
      spooler_.join();
      putBack(kBackChannel, keptBack_);
      close(sideEnd_);
      close(backEnd_);
    }
    return requests_;
  }

 private:
  static constexpr int kBackChannel = 3;
  static constexpr int kSideChannel = 4;
  static constexpr int kOutOfTheWay = 50;

  // Packets keep their boundaries, so that pieces arrive as they were written, and an empty one is
  // read as the end.
  static int openOn(int descriptor, int* kept) {
    *kept = fcntl(descriptor, F_DUPFD_CLOEXEC, kOutOfTheWay);
    int ends[2] = {-1, -1};
    socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends);
    const int ours = fcntl(ends[0], F_DUPFD_CLOEXEC, kOutOfTheWay);
    const int theirs = fcntl(ends[1], F_DUPFD_CLOEXEC, kOutOfTheWay);
    close(ends[0]);
    close(ends[1]);
    dup2(theirs, descriptor);
    close(theirs);
    return ours;
  }

  static void putBack(int descriptor, int kept) {
    if (kept == -1) {
      close(descriptor);
    } else {
      dup2(kept, descriptor);
      close(kept);
    }
  }

  static void sendPacket(int descriptor, const std::vector<uint8_t>& bytes) {
    send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
  }

  void serve() {
    uint8_t request[256];
    for (ssize_t n = 0; (n = read(sideEnd_, request, sizeof request)) > 0;) {
      requests_.push_back(hexText(request, static_cast<size_t>(n)));
      if (onRequest_) onRequest_();
      answer(request[0]);
    }
  }

  void answer(uint8_t command) {
    DrainAnswer now = script_.empty() ? DrainAnswer{} : script_.back();
    if (next_ < script_.size()) {
      now = script_[next_++];
    } else {
      now.replies.clear();
    }
    if (now.status == CUPS_SC_STATUS_OK) {
      for (const std::string& reply : now.replies) sendPacket(backEnd_, hexBytes(reply));
      if (!now.silent) sendPacket(backEnd_, {});
    }
    // Command, status, length (most significant byte first), data.
    const std::vector<uint8_t> data = hexBytes(now.data);
    const auto echo = now.echo == -1 ? command : static_cast<uint8_t>(now.echo);
    std::vector<uint8_t> message = {echo, static_cast<uint8_t>(now.status),
                                    static_cast<uint8_t>(data.size() >> 8),
                                    static_cast<uint8_t>(data.size() & 0xFF)};
    message.insert(message.end(), data.begin(), data.end());
    sendPacket(sideEnd_, message);
  }

  std::vector<DrainAnswer> script_;
  OnRequest onRequest_;
  size_t next_ = 0;
  std::vector<std::string> requests_;
  int keptBack_ = -1;
  int keptSide_ = -1;
  int backEnd_ = -1;
  int sideEnd_ = -1;
  std::thread spooler_;
};

#endif
