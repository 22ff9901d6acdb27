// Owners of a descriptor and of a child process, the channels between the two, and the one way in
// which the tools start a program. Nothing stays open, and no child stays alive, after its owner.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_PROCESS_H
#define KORVEL_TOOLS_COMMON_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/common/result.h"

namespace korvel {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int fd) : fd_(fd) {}  // takes ownership; -1 is closed
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    reset(std::exchange(other.fd_, -1));
    return *this;
  }
  ~Descriptor() { reset(); }

  int get() const { return fd_; }
  bool isOpen() const { return fd_ >= 0; }
  void reset(int fd = -1);                          // closes what it has, and owns `fd`
  int release() { return std::exchange(fd_, -1); }  // to a new owner
  bool setNonBlocking();                            // false with errno set on failure

 private:
  int fd_ = -1;
};

// Both ends are closed on exec, and numbered above those that a filter starts with.
Result<void> openPipe(Descriptor* readEnd, Descriptor* writeEnd);
Result<void> openSocketPair(Descriptor* one, Descriptor* other);

// For poll(); 0 when `end` has passed.
int millisecondsUntil(std::chrono::steady_clock::time_point end);

// The strings as the exec functions expect them; the pointers point into `strings`.
std::vector<char*> execPointers(std::vector<std::string>& strings);

inline constexpr int kNullDevice = -1;

struct Program {
  // The program first: a path, or a name that is looked up in PATH and in /usr/sbin.
  std::vector<std::string> arguments;
  // Borrowed; they become the program's 0, 1, 2 and so on. kNullDevice opens /dev/null. The
  // standard descriptors that are not listed are inherited.
  std::vector<int> descriptors;
  // Added to our environment; a variable without a value is removed.
  std::map<std::string, std::optional<std::string>> environment;
  // The program cannot create files: opening one with O_CREAT fails, even if it exists. It can
  // open existing files, and use those that it inherits. On kernels without such a ban it can
  // create files, but they stay empty.
  bool noNewFiles = false;
  // The program leads a process group of its own; signals to the child reach the whole group.
  bool ownGroup = false;
};

// A process that is killed and reaped when its owner goes, and that dies with the thread that
// started it. It begins with SIGPIPE at its default and no signal blocked.
class Child {
 public:
  Child() = default;
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() { kill(); }

  // Returns after the program has been started; fails when it cannot be executed.
  Result<void> start(const Program& program);

  bool reap(int* status);  // true once, after it has ended; its wait status
  bool wait(int* status);  // waits for the end; false when there is no child
  void signal(int number) const;
  void kill();

 private:
  pid_t pid_ = -1;
  bool ownGroup_ = false;
};

// Runs a program to its end, with nothing on its standard input. Returns its wait status and what
// it wrote to standard output; standard error goes to `errors`, or kWithOutput.
struct ProgramOutput {
  int waitStatus = 0;
  std::string text;
};
inline constexpr int kWithOutput = -2;
Result<ProgramOutput> runProgram(Program program, int errors);

}  // namespace korvel

#endif
