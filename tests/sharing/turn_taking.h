// A printer that takes any number of connections at once, and remembers how many there were.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SHARING_TURN_TAKING_H
#define KORVEL_TESTS_SHARING_TURN_TAKING_H

#include <atomic>
#include <thread>
#include <vector>

class CrowdedPrinter {
 public:
  CrowdedPrinter();
  CrowdedPrinter(const CrowdedPrinter&) = delete;
  CrowdedPrinter& operator=(const CrowdedPrinter&) = delete;
  ~CrowdedPrinter();

  int port() const { return port_; }
  int most() const { return most_; }    // connections at a time
  int ended() const { return ended_; }  // connections that sent something and closed

 private:
  void serve();
  void read(int fd);

  int listener_ = -1;
  int port_ = 0;
  std::atomic<int> now_ = 0, most_ = 0, ended_ = 0;
  std::vector<std::thread> readers_;
  std::thread server_;
};

#endif
