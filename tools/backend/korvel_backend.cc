// The backend of addresses korvel://HOST[:PORT]: waits until no other queue sends to that printer,
// then becomes the spooler's own backend for socket://HOST[:PORT].
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr char kScheme[] = "korvel://";
constexpr int kFailed = 1;  // what the spooler's backends return: the error policy decides
constexpr int kStopQueue = 4;
constexpr int kLowestLock = 10;  // clear of the channels 0 to 4, which the next program inherits

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

// Holds until this process, and the program that it becomes, has ended. False when there can be no
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

[[noreturn]] void becomeSocketBackend(const std::string& address, char** argv) {
  std::string uri = "socket://" + address;
  setenv("DEVICE_URI", uri.c_str(), 1);
  argv[0] = uri.data();
  const char* folder = std::getenv("CUPS_SERVERBIN");
  const std::string path =
      std::string(folder == nullptr ? "/usr/lib/cups" : folder) + "/backend/socket";
  execv(path.c_str(), argv);
  std::fprintf(stderr, "ERROR: Cannot start %s: %s.\n", path.c_str(), std::strerror(errno));
  std::exit(kStopQueue);
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
  becomeSocketBackend(address, argv);
}
