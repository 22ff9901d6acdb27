// A printer accepts one connection at a time, so it is asked only while its queue is idle.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/queue_facts.h"

#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "tools/common/process.h"

namespace fs = std::filesystem;

namespace korvel {

namespace {

constexpr int kConnectMilliseconds = 3000;
constexpr int kAnswerMilliseconds = 2000;

// A status request, and the first bytes of a reply.
constexpr unsigned char kRequest[] = {0x64, 0x10, 0x40, 0, 0, 0, 0, 0, 0, 0x9B};
constexpr unsigned char kReplyStart[] = {0x64, 0xFF};

FilterFile lookAt(const std::string& path) {
  struct stat found;
  if (stat(path.c_str(), &found) != 0) return FilterFile::kMissing;
  if ((found.st_mode & S_IXOTH) == 0) return FilterFile::kNotExecutable;
  const bool ours = found.st_uid == 0 || found.st_uid == geteuid();
  if (!ours || (found.st_mode & (S_IWGRP | S_IWOTH)) != 0) return FilterFile::kUnsafe;
  return FilterFile::kFine;
}

uint64_t bytesOfDumps(const std::string& folder) {
  uint64_t sum = 0;
  std::error_code fault;
  for (fs::directory_iterator at(folder, fault), end; !fault && at != end; at.increment(fault)) {
    const std::string name = at->path().filename().string();
    if (!name.ends_with(".bmp")) continue;
    if (!name.starts_with("origin_") && !name.starts_with("dithered_")) continue;
    std::error_code gone;
    const uintmax_t size = at->file_size(gone);
    if (!gone) sum += size;
  }
  return sum;
}

// False when `fd` does not become ready for `events` in time.
bool ready(int fd, short events, int milliseconds) {
  pollfd watched = {fd, events, 0};
  return poll(&watched, 1, milliseconds) == 1;
}

// Both return a closed descriptor when there is no connection.
Descriptor connectTo(const addrinfo& address) {
  Descriptor socket(::socket(address.ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const int fd = socket.get();
  int fault = 0;
  socklen_t size = sizeof fault;
  const bool begun = connect(fd, address.ai_addr, address.ai_addrlen) == 0 || errno == EINPROGRESS;
  if (begun && ready(fd, POLLOUT, kConnectMilliseconds) &&
      getsockopt(fd, SOL_SOCKET, SO_ERROR, &fault, &size) == 0 && fault == 0) {
    return socket;
  }
  return Descriptor();
}

Descriptor connectTo(const std::string& host, const std::string& port) {
  addrinfo wanted = {};
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* addresses = nullptr;
  if (getaddrinfo(host.c_str(), port.c_str(), &wanted, &addresses) != 0) return Descriptor();
  Descriptor socket;
  for (const addrinfo* at = addresses; at != nullptr && !socket.isOpen(); at = at->ai_next) {
    socket = connectTo(*at);
  }
  freeaddrinfo(addresses);
  return socket;
}

PrinterAnswer answerOn(int fd) {
  if (send(fd, kRequest, sizeof kRequest, MSG_NOSIGNAL) != sizeof kRequest) {
    return PrinterAnswer::kSilent;
  }
  unsigned char reply[64];
  if (!ready(fd, POLLIN, kAnswerMilliseconds)) return PrinterAnswer::kSilent;
  const ssize_t count = read(fd, reply, sizeof reply);
  const bool good = count >= 2 && reply[0] == kReplyStart[0] && reply[1] == kReplyStart[1];
  return good ? PrinterAnswer::kAnswers : PrinterAnswer::kSilent;
}

}  // namespace

std::string filterPath() {
  const char* folder = std::getenv("CUPS_SERVERBIN");
  return std::string(folder == nullptr ? KORVEL_CUPS_SERVERBIN : folder) + "/filter/rastertokorvel";
}

PrinterAnswer askPrinter(const std::string& uri) {
  const std::string scheme = "socket://";
  if (!uri.starts_with(scheme)) return PrinterAnswer::kNotAsked;
  std::string host =
      uri.substr(scheme.size(), uri.find_first_of("/?", scheme.size()) - scheme.size());
  std::string port = "9100";
  const size_t colon = host.rfind(':');
  if (colon != std::string::npos && host.find(']', colon) == std::string::npos) {
    port = host.substr(colon + 1);
    host.resize(colon);
  }
  if (host.starts_with("[") && host.ends_with("]")) host = host.substr(1, host.size() - 2);
  const Descriptor connection = connectTo(host, port);
  return connection.isOpen() ? answerOn(connection.get()) : PrinterAnswer::kNotReached;
}

QueueFacts gatherFacts(const PrintSystem& system, const Queue& queue,
                       const std::string& dumpFolder) {
  QueueFacts facts;
  facts.queue = queue;
  facts.job = system.newestJob(queue.name);
  facts.description = system.queueDescription(queue.name);
  const Description installed = system.installedFor(facts.description);
  facts.installedName = installed.bareName();
  if (!installed.name.empty()) facts.installed = system.installedDescription(installed.name);
  facts.filterPath = filterPath();
  if (system.isThisMachine()) facts.filter = lookAt(facts.filterPath);
  if (!queue.busy) facts.answer = askPrinter(queue.uri);
  facts.dumpFolder = dumpFolder;
  facts.dumpBytes = bytesOfDumps(dumpFolder);
  return facts;
}

}  // namespace korvel
