// Descriptors and the child's end.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/child_process.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace korvel {
namespace {

constexpr int kFirstOwnDescriptor = 10;

bool adoptBoth(const int (&ends)[2], Descriptor* first, Descriptor* second) {
  const bool adopted = first->adopt(ends[0]);
  return second->adopt(ends[1]) && adopted;
}

}  // namespace

void Descriptor::reset() {
  if (fd_ >= 0) close(fd_);
  fd_ = -1;
}

bool Descriptor::adopt(int fd) {
  reset();
  if (fd < 0) return false;
  fd_ = fcntl(fd, F_DUPFD_CLOEXEC, kFirstOwnDescriptor);
  const int reason = errno;
  close(fd);
  errno = reason;
  return fd_ >= 0;
}

bool Descriptor::setNonBlocking() {
  return fcntl(fd_, F_SETFL, fcntl(fd_, F_GETFL) | O_NONBLOCK) == 0;
}

bool openPipe(Descriptor* readEnd, Descriptor* writeEnd) {
  int ends[2];
  return pipe2(ends, O_CLOEXEC) == 0 && adoptBoth(ends, readEnd, writeEnd);
}

bool openSocketPair(Descriptor* one, Descriptor* other) {
  int ends[2];
  return socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0 &&
         adoptBoth(ends, one, other);
}

std::vector<char*> execWords(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return pointers;
}

bool Child::reap(int* status) {
  if (pid_ <= 0 || waitpid(pid_, status, WNOHANG) != pid_) return false;
  pid_ = -1;
  return true;
}

bool Child::wait(int* status) {
  if (pid_ <= 0) return false;
  pid_t ended = 0;
  while ((ended = waitpid(pid_, status, 0)) < 0 && errno == EINTR) {
  }
  pid_ = -1;
  return ended > 0;
}

void Child::kill() {
  if (pid_ <= 0) return;
  ::kill(pid_, SIGKILL);
  while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
  }
  pid_ = -1;
}

}  // namespace korvel
