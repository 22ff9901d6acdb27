// The backend of addresses korvel://HOST[:PORT]: waits until no other queue sends to that printer,
// then runs the spooler's own backend for socket://HOST[:PORT], and fails when its connection is
// lost, so that the queue's error policy decides. SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr char kScheme[] = "korvel://";
constexpr int kFailed = 1;  // what the spooler's backends return: the error policy decides
constexpr int kStopQueue = 4;
constexpr int kLowestLock = 10;  // clear of the channels 0 to 4, which the backend inherits

// The address of a printer as the name of a file: 192.0.2.7_9100. Options after ? do not count,
// and the usual port is the same as none.
std::string lockName(std::string address) {
  address.resize(std::min(address.size(), address.find_first_of("/?")));
  if (address.ends_with(":9100")) address.resize(address.size() - 5);
  for (char& c : address) {
    if (std::strchr("0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ.-", c) ==
        nullptr)
      c = '_';
  }
  return "korvel-turn-" + address;
}

std::string lockPath(const std::string& address) {
  const char* folder = std::getenv("TMPDIR");
  return std::string(folder == nullptr ? "/var/spool/cups/tmp" : folder) + "/" + lockName(address);
}

// Whether the locked file is still the one that others will open.
bool isCurrent(int lock, const std::string& path) {
  struct stat held, there;
  return fstat(lock, &held) == 0 && stat(path.c_str(), &there) == 0 && held.st_ino == there.st_ino;
}

// Holds until this process, and the backend that it starts, have ended. False when there can be no
// lock: then nothing is sent.
bool waitForTurn(const std::string& path) {
  for (;;) {
    const int opened = open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0660);
    const int lock = fcntl(opened, F_DUPFD, kLowestLock);
    close(opened);
    if (lock == -1) return false;
    if (flock(lock, LOCK_EX | LOCK_NB) != 0) {
      std::fputs("INFO: Waiting for another queue of this printer.\n", stderr);
      while (flock(lock, LOCK_EX) != 0) {
        if (errno != EINTR) return false;
      }
    }
    if (isCurrent(lock, path)) return true;
    close(lock);
  }
}

std::string socketBackend() {
  const char* folder = std::getenv("CUPS_SERVERBIN");
  return std::string(folder == nullptr ? "/usr/lib/cups" : folder) + "/backend/socket";
}

[[noreturn]] void becomeSocketBackend(const std::string& address, char** argv) {
  std::string uri = "socket://" + address;
  setenv("DEVICE_URI", uri.c_str(), 1);
  argv[0] = uri.data();
  execv(socketBackend().c_str(), argv);
  std::fprintf(stderr, "ERROR: Cannot start %s: %s.\n", socketBackend().c_str(),
               std::strerror(errno));
  _exit(kStopQueue);
}

// The process of the spooler's backend; -1 when there is none. Its messages can be read from
// `messages`. All channels of the job are its own then, so that the filter notices its end.
pid_t startSocketBackend(const std::string& address, char** argv, int* messages) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return -1;
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(kFailed);
    dup2(ends[1], STDERR_FILENO);
    becomeSocketBackend(address, argv);
  }
  close(ends[1]);
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (const int channel : {0, 1, 3, 4}) dup2(nothing, channel);
  *messages = ends[0];
  return child;
}

// Reports whether a message says that an established connection was lost. While it is connecting,
// the backend tries again by itself. The prefixes are the same in all languages.
class ConnectionWatch {
 public:
  bool isLost(const std::string& message) {
    if (message.starts_with("STATE: +connecting-to-device")) connected_ = false;
    if (message.starts_with("STATE: -connecting-to-device")) connected_ = true;
    return connected_ && message.starts_with("ERROR:");
  }

 private:
  bool connected_ = false;
};

// Passes the messages on until the backend has ended or its connection is lost: it does not end by
// itself while a filter asks for the printer's status, which would take 20 minutes per page.
bool passOnUntilLost(int messages) {
  FILE* lines = fdopen(messages, "r");
  ConnectionWatch watch;
  bool lost = false;
  char* line = nullptr;
  size_t size = 0;
  while (lines != nullptr && !lost && getline(&line, &size, lines) > 0) {
    std::fputs(line, stderr);
    lost = watch.isLost(line);
  }
  std::free(line);
  if (lines != nullptr) std::fclose(lines);
  return lost;
}

volatile pid_t backend = -1;

int runSocketBackend(const std::string& address, char** argv) {
  int messages = -1;
  backend = startSocketBackend(address, argv, &messages);
  if (backend == -1) {
    std::fprintf(stderr, "ERROR: Cannot start %s: %s.\n", socketBackend().c_str(),
                 std::strerror(errno));
    return kFailed;
  }
  // Only while there is a process to end: -1 would mean every process of the machine.
  signal(SIGTERM, [](int number) { kill(backend, number); });  // it knows when to end
  const bool lost = passOnUntilLost(messages);
  if (lost) kill(backend, SIGKILL);
  int status = 0;
  while (waitpid(backend, &status, 0) == -1 && errno == EINTR) {
  }
  signal(SIGTERM, SIG_DFL);
  return !lost && WIFEXITED(status) ? WEXITSTATUS(status) : kFailed;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 1) return 0;  // asked for devices: sockets are found by others
  const char* named = std::getenv("DEVICE_URI");
  const std::string uri = named != nullptr ? named : argv[0];
  if (!uri.starts_with(kScheme)) {
    std::fprintf(stderr, "ERROR: %s is not an address korvel://HOST[:PORT].\n", uri.c_str());
    return kStopQueue;
  }
  const std::string address = uri.substr(sizeof kScheme - 1);
  if (!waitForTurn(lockPath(address))) {
    std::fprintf(stderr, "ERROR: Cannot lock %s: %s.\n", lockPath(address).c_str(),
                 std::strerror(errno));
    return kFailed;
  }
  return runSocketBackend(address, argv);
}
