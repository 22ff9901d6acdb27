// SPDX-License-Identifier: Apache-2.0
#include "tests/sharing/turn_taking.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

CrowdedPrinter::CrowdedPrinter() {
  listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = {};
  socklen_t size = sizeof address;
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (bind(listener_, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
      listen(listener_, 8) == 0 &&
      getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) == 0) {
    port_ = ntohs(address.sin_port);
  }
  server_ = std::thread([this] { serve(); });
}

CrowdedPrinter::~CrowdedPrinter() {
  shutdown(listener_, SHUT_RDWR);
  server_.join();
  for (std::thread& reader : readers_) reader.join();
  close(listener_);
}

void CrowdedPrinter::serve() {
  for (int fd = 0; (fd = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) != -1;) {
    readers_.emplace_back([this, fd] { read(fd); });
  }
}

// Slow enough for the other queue to come in between.
void CrowdedPrinter::read(int fd) {
  const int now = ++now_;
  for (int most = most_; now > most && !most_.compare_exchange_weak(most, now);) {
  }
  char bytes[4096];
  size_t count = 0;
  for (ssize_t got = 0; (got = recv(fd, bytes, sizeof bytes, 0)) > 0;) {
    count += static_cast<size_t>(got);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  close(fd);
  --now_;
  if (count > 0) ++ended_;
}
