// A program that a test starts, with everything that the program itself starts: filters and
// backends of a spooler, processes of a build. None of them outlives the object, nor the test.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SPOOLER_GUARDED_PROCESS_H
#define KORVEL_TESTS_SPOOLER_GUARDED_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>
#include <thread>
#include <vector>

struct Command {
  std::vector<std::string> words;                  // the program, looked up in PATH, first
  std::string output;                              // file for standard output and error
  std::map<std::string, std::string> environment;  // added to ours
};

class GuardedProcess {
 public:
  GuardedProcess() = default;
  GuardedProcess(const GuardedProcess&) = delete;
  GuardedProcess& operator=(const GuardedProcess&) = delete;
  ~GuardedProcess() { stop(); }

  void start(const Command& command);
  // Waits for the program's end. Returns its exit status, 128 plus the number of the signal that
  // ended it, or -1 when the time is over.
  int wait(double seconds);
  // Kills the program as a crash would; its guardian then ends all that descend from it.
  void killProgram();
  // Asks the program to end, then kills it and all that descend from it.
  void stop();

 private:
  pid_t guardian_ = -1;
};

struct CommandResult {
  int status = -1;  // as of GuardedProcess::wait
  std::string output;
};

// Runs a command to its end, or stops it when the time is over.
CommandResult run(const std::vector<std::string>& words, double seconds = 60,
                  const std::map<std::string, std::string>& environment = {});

// Asks `reached` every 20 ms. False when the time is over first.
template <typename Condition>
bool waitUntil(double seconds, const Condition& reached) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (!reached()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

#endif
