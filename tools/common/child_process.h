// Owners of a descriptor and of a child process, the channels between the two, and the words that
// start it: nothing stays open, and no child stays alive, behind the object that holds it.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_CHILD_PROCESS_H
#define KORVEL_TOOLS_COMMON_CHILD_PROCESS_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace korvel {

class Descriptor {
 public:
  Descriptor() = default;
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { reset(); }

  int get() const { return fd_; }
  bool isOpen() const { return fd_ >= 0; }
  void reset();
  // Takes `fd` over, closed on exec and moved clear of the numbers that a filter is born with.
  // False, with errno told, leaves this closed.
  bool adopt(int fd);
  bool setNonBlocking();

 private:
  int fd_ = -1;
};

// False, with errno told, when the pair cannot be made.
bool openPipe(Descriptor* readEnd, Descriptor* writeEnd);
bool openSocketPair(Descriptor* one, Descriptor* other);

// The words as the exec functions take them; they point into `words`.
std::vector<char*> execWords(std::vector<std::string>& words);

// A process that is killed and reaped when this goes.
class Child {
 public:
  Child() = default;
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() { kill(); }

  void start(pid_t pid) { pid_ = pid; }
  bool reap(int* status);  // true once, when it has ended; its wait status
  bool wait(int* status);  // the same, but waits for the end
  void kill();

 private:
  pid_t pid_ = -1;
};

}  // namespace korvel

#endif
