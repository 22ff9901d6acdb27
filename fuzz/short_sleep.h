// sleep() for a target that waits: counted and over at once. Other threads, as the fuzzer's own
// watch over memory, go on sleeping.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_FUZZ_SHORT_SLEEP_H
#define KORVEL_FUZZ_SHORT_SLEEP_H

#include <ctime>

// Sleeps of this thread while it lives.
class ShortSleep {
 public:
  ShortSleep() { current_ = this; }
  ShortSleep(const ShortSleep&) = delete;
  ShortSleep& operator=(const ShortSleep&) = delete;
  ~ShortSleep() { current_ = nullptr; }

  int seconds() const { return seconds_; }

  static unsigned int sleep(unsigned int seconds) {
    if (current_ == nullptr) {
      const timespec time{static_cast<time_t>(seconds), 0};
      nanosleep(&time, nullptr);
    } else {
      current_->seconds_ += static_cast<int>(seconds);
    }
    return 0;
  }

 private:
  inline static thread_local ShortSleep* current_ = nullptr;
  int seconds_ = 0;
};

// Replaces the C library's.
extern "C" unsigned int sleep(unsigned int seconds) { return ShortSleep::sleep(seconds); }

#endif
