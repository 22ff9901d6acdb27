// Everything that the child needs is prepared before the fork, so that a program with several
// threads can start one too.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/process.h"

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "tools/common/translation.h"

namespace korvel {
namespace {

constexpr int kFirstOwnDescriptor = 10;
constexpr int kNotStarted = 127;

// ---- Descriptors ----

// Clear of the numbers that a filter starts with.
bool adopt(int fd, Descriptor* owner) {
  const Descriptor original(fd);
  owner->reset(fcntl(fd, F_DUPFD_CLOEXEC, kFirstOwnDescriptor));
  return owner->isOpen();
}

bool adoptBoth(const int (&ends)[2], Descriptor* first, Descriptor* second) {
  const bool adopted = adopt(ends[0], first);
  return adopt(ends[1], second) && adopted;
}

// ---- The ban on new files ----

constexpr unsigned kCallNumber = offsetof(seccomp_data, nr);
// openat(folder, path, flags, mode): the low half of a 64-bit argument.
constexpr unsigned kFlags =
    offsetof(seccomp_data, args) + 2 * 8 + (std::endian::native == std::endian::big ? 4 : 0);

// From here on writing to a file fails; pipes and sockets are not affected.
void keepFilesEmpty() {
  const rlimit none = {0, 0};
  setrlimit(RLIMIT_FSIZE, &none);
  signal(SIGXFSZ, SIG_IGN);
}

// The ban checks the flags of a system call, so it needs no privileges and no list of paths.
// Running as another user would not do: the files at the filter's fixed paths may be that user's.
void banNewFiles() {
  keepFilesEmpty();
  // Jumps count the instructions to skip, when true and when false.
  std::array<sock_filter, 6> steps = {{
      {BPF_LD | BPF_W | BPF_ABS, 0, 0, kCallNumber},
      {BPF_JMP | BPF_JEQ | BPF_K, 0, 3, SYS_openat},
      {BPF_LD | BPF_W | BPF_ABS, 0, 0, kFlags},
      {BPF_JMP | BPF_JSET | BPF_K, 0, 1, O_CREAT},
      {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ERRNO | EACCES},
      {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
  }};
  const sock_fprog ban = {static_cast<unsigned short>(steps.size()), steps.data()};
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0) {
    prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &ban);
  }
}

// ---- The start of a program ----

std::vector<std::string> pathsOf(const std::string& program) {
  if (program.find('/') != std::string::npos) return {program};
  const char* path = std::getenv("PATH");
  std::istringstream folders((path == nullptr ? "/usr/bin:/bin" : std::string(path)) +
                             ":/usr/sbin");
  std::vector<std::string> paths;
  for (std::string folder; std::getline(folders, folder, ':');) {
    paths.push_back((folder.empty() ? "." : folder) + "/" + program);
  }
  return paths;
}

std::vector<std::string> environmentOf(const Program& program) {
  std::vector<std::string> all;
  for (char** at = environ; *at != nullptr; ++at) {
    const std::string entry = *at;
    if (!program.environment.contains(entry.substr(0, entry.find('=')))) all.push_back(entry);
  }
  for (const auto& [name, value] : program.environment) {
    if (value) all.push_back(name + "=" + *value);
  }
  return all;
}

struct Start {
  std::vector<std::string> paths, argumentStrings, environmentStrings;
  std::vector<char*> arguments, environment;
  std::vector<int> descriptors;
  Descriptor nullDevice;
  Descriptor fault;  // carries errno when the program cannot be executed
  bool noNewFiles;
  bool ownGroup;
  pid_t parent;
};

// In the child. First all descriptors are moved away, because one may have the number that
// another is to get.
void placeDescriptors(Start* start) {
  for (int& fd : start->descriptors) {
    fd = fcntl(fd == kNullDevice ? start->nullDevice.get() : fd, F_DUPFD_CLOEXEC,
               kFirstOwnDescriptor);
  }
  for (size_t i = 0; i < start->descriptors.size(); ++i) {
    dup2(start->descriptors[i], static_cast<int>(i));
  }
}

[[noreturn]] void becomeProgram(Start* start) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != start->parent) _exit(kNotStarted);
  if (start->ownGroup) setpgid(0, 0);
  placeDescriptors(start);
  signal(SIGPIPE, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  if (start->noNewFiles) banNewFiles();
  for (const std::string& path : start->paths) {
    execve(path.c_str(), start->arguments.data(), start->environment.data());
    if (errno != ENOENT && errno != ENOTDIR) break;
  }
  const int reason = errno;
  if (write(start->fault.get(), &reason, sizeof reason) < 0) _exit(kNotStarted);
  _exit(kNotStarted);
}

Start prepared(const Program& program) {
  Start start = {pathsOf(program.arguments[0]),
                 program.arguments,
                 environmentOf(program),
                 {},
                 {},
                 program.descriptors,
                 Descriptor(),
                 Descriptor(),
                 program.noNewFiles,
                 program.ownGroup,
                 getpid()};
  start.nullDevice.reset(open("/dev/null", O_RDWR | O_CLOEXEC));
  return start;
}

}  // namespace

void Descriptor::reset(int fd) {
  const int reason = errno;
  if (fd_ >= 0) close(fd_);
  fd_ = fd;
  errno = reason;
}

bool Descriptor::setNonBlocking() {
  return fcntl(fd_, F_SETFL, fcntl(fd_, F_GETFL) | O_NONBLOCK) == 0;
}

Result<void> openPipe(Descriptor* readEnd, Descriptor* writeEnd) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) == 0 && adoptBoth(ends, readEnd, writeEnd)) return {};
  return Failure{filled("Cannot open a pipe: %s.", std::strerror(errno))};
}

Result<void> openSocketPair(Descriptor* one, Descriptor* other) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0 &&
      adoptBoth(ends, one, other)) {
    return {};
  }
  return Failure{filled("Cannot open a pipe: %s.", std::strerror(errno))};
}

int millisecondsUntil(std::chrono::steady_clock::time_point end) {
  const auto left = end - std::chrono::steady_clock::now();
  return static_cast<int>(
      std::max<long>(0, std::chrono::duration_cast<std::chrono::milliseconds>(left).count()));
}

std::vector<char*> execPointers(std::vector<std::string>& strings) {
  std::vector<char*> pointers;
  pointers.reserve(strings.size() + 1);
  for (std::string& string : strings) pointers.push_back(string.data());
  pointers.push_back(nullptr);
  return pointers;
}

Result<void> Child::start(const Program& program) {
  kill();
  Start start = prepared(program);
  start.arguments = execPointers(start.argumentStrings);
  start.environment = execPointers(start.environmentStrings);
  Descriptor fault;
  const Result<void> opened = openPipe(&fault, &start.fault);
  if (!opened) return opened;
  ownGroup_ = program.ownGroup;
  pid_ = fork();
  if (pid_ < 0) return Failure{filled("Cannot start a process: %s.", std::strerror(errno))};
  if (pid_ == 0) becomeProgram(&start);
  start.fault.reset();
  int reason = 0;
  if (read(fault.get(), &reason, sizeof reason) <= 0) return {};
  kill();
  return Failure{filled("Cannot run %s: %s.", program.arguments[0].c_str(), std::strerror(reason))};
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

void Child::signal(int number) const {
  if (pid_ > 0) ::kill(ownGroup_ ? -pid_ : pid_, number);
}

void Child::kill() {
  if (pid_ <= 0) return;
  int status = 0;
  signal(SIGKILL);
  wait(&status);
}

Result<ProgramOutput> runProgram(Program program, int errors) {
  Descriptor output, theirs;
  const Result<void> opened = openPipe(&output, &theirs);
  if (!opened) return opened.failure();
  program.descriptors = {kNullDevice, theirs.get(), errors == kWithOutput ? theirs.get() : errors};
  Child child;
  const Result<void> started = child.start(program);
  if (!started) return started.failure();
  theirs.reset();
  ProgramOutput result;
  char bytes[4096];
  for (ssize_t count = 0; (count = read(output.get(), bytes, sizeof bytes)) > 0;) {
    result.text.append(bytes, static_cast<size_t>(count));
  }
  child.wait(&result.waitStatus);
  return result;
}

}  // namespace korvel
