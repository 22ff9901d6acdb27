// One thread, one poll: whatever is due is done first, then the loop sleeps until a descriptor is
// ready, or until the printer or the connection has something to do.
// SPDX-License-Identifier: Apache-2.0
#include "tools/emulator/printer_server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <utility>

#include "tools/common/translation.h"
#include "tools/stream/printer_model.h"

namespace korvel {
namespace {

constexpr int kBacklog = 16;
constexpr int kReceiveBuffer = 65536;  // small, so that the host notices when reading stalls
constexpr size_t kLongestControlLine = 1000;
constexpr size_t kMostWritten = 4096;  // what a writable pipe accepts without blocking

Micros monotonicMicros() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return Micros{now.tv_sec} * 1'000'000 + now.tv_nsec / 1000;
}

Result<void> listenOn(int port, Descriptor* listener) {
  listener->reset(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const int on = 1;
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<uint16_t>(port));
  setsockopt(listener->get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  setsockopt(listener->get(), SOL_SOCKET, SO_RCVBUF, &kReceiveBuffer, sizeof kReceiveBuffer);
  if (bind(listener->get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener->get(), kBacklog) != 0) {
    return Failure{filled("Cannot listen on port %d: %s.", port, std::strerror(errno))};
  }
  return {};
}

int portOf(const Descriptor& listener) {
  sockaddr_in address = {};
  socklen_t length = sizeof address;
  getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &length);
  return ntohs(address.sin_port);
}

int acceptFrom(const Descriptor& listener) {
  const int fd = accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
  const int on = 1;
  if (fd >= 0) setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  return fd;
}

bool isTransient(int reason) { return reason == EAGAIN || reason == EINTR; }

}  // namespace

PrinterServer::PrinterServer(const ServerOptions& options)
    : options_(options),
      world_(options.body,
             {[this](const std::string& line) { event(line); },
              [this](unsigned number, const PagePicture& page) { writePage(number, page); },
              [this](unsigned number, const SheetPicture& sheet, const char* what) {
                writeSheet(number, sheet, what);
              }}) {}

Result<void> PrinterServer::open() {
  Result<void> opened;
  if (!options_.standardInput) opened = listenOn(options_.port, &listener_);
  if (opened && options_.controlPort) opened = listenOn(*options_.controlPort, &controlListener_);
  if (!opened) return opened;
  if (listener_.isOpen() && options_.port == 0) std::printf("%d\n", portOf(listener_));
  if (options_.controlPort == 0) std::printf("%d\n", portOf(controlListener_));
  return {};
}

// ---- The loop ----

bool PrinterServer::run(const volatile std::sig_atomic_t& stopped) {
  now_ = monotonicMicros();
  for (const Scenario& scenario : options_.scenarios) apply(scenario);
  if (options_.standardInput) attach(STDIN_FILENO, options_.replyDescriptor);
  while (stopped == 0 && !quit_) {
    now_ = monotonicMicros();
    world_.advance(now_);
    sendDue();
    if (readFd_ >= 0 && connection_.mustHangUp()) {
      connection_.hungUp();
      dropping_ = true;  // we cut the stream off ourselves
      detach("disconnected by the printer");
    }
    if (isDone()) break;
    poll();
  }
  return !failed_;
}

// At the end the motor may finish its work, unless nothing can make it move again.
bool PrinterServer::isDone() const {
  if (!ending_) return false;
  if (world_.idle()) return true;
  if (world_.nextChange() || controlListener_.isOpen()) return false;
  event("left in the printer: " + world_.stateText());
  return true;
}

std::optional<Micros> PrinterServer::nextMoment() const {
  std::optional<Micros> next = world_.nextChange();
  const auto consider = [&next](Micros moment) { next = std::min(next.value_or(moment), moment); };
  if (readFd_ >= 0 && connection_.readable(now_) == 0) consider(connection_.nextRead());
  if (!pieces_.empty() && pieces_.front().due > now_) consider(pieces_.front().due);
  return next;
}

bool PrinterServer::mayRead() const {
  return readFd_ >= 0 && connection_.readable(now_) > 0 && (dropping_ || !world_.full());
}

void PrinterServer::poll() {
  const bool sends = !pieces_.empty() && pieces_.front().due <= now_;
  const bool accepts = readFd_ < 0 && !ending_;
  std::array<pollfd, 5> watched = {{{mayRead() ? readFd_ : -1, POLLIN, 0},
                                    {sends ? writeFd_ : -1, POLLOUT, 0},
                                    {accepts ? listener_.get() : -1, POLLIN, 0},
                                    {control_.isOpen() ? -1 : controlListener_.get(), POLLIN, 0},
                                    {control_.get(), POLLIN, 0}}};
  timespec wait = {};
  const std::optional<Micros> next = nextMoment();
  if (next) {
    const Micros left = std::max<Micros>(0, *next - monotonicMicros());
    wait.tv_sec = left / 1'000'000;
    wait.tv_nsec = left % 1'000'000 * 1000;
  }
  // The signals that end the program are delivered here and nowhere else.
  sigset_t signals;
  sigprocmask(SIG_SETMASK, nullptr, &signals);
  sigdelset(&signals, SIGTERM);
  sigdelset(&signals, SIGINT);
  if (ppoll(watched.data(), watched.size(), next ? &wait : nullptr, &signals) <= 0) return;
  now_ = monotonicMicros();
  if (watched[4].revents != 0) readControl();
  if (watched[3].revents != 0) acceptControl();
  if (watched[2].revents != 0) {
    const int fd = acceptFrom(listener_);
    host_.reset(fd);
    if (fd >= 0) attach(fd, fd);
  } else if (watched[0].revents != 0 && readFd_ >= 0) {
    readStream();
  }
}

// ---- The connection ----

void PrinterServer::attach(int readFd, int writeFd) {
  readFd_ = readFd;
  writeFd_ = writeFd;
  dropping_ = false;
  decoder_ = std::make_unique<StreamDecoder>([this](const StreamItem& item) { takeItem(item); });
  event("connected");
}

void PrinterServer::detach(const std::string& how) {
  if (!dropping_ && !decoder_->finish()) malformed();
  world_.breakOff(now_);
  event(how);
  pieces_.clear();
  host_.reset();
  readFd_ = -1;
  writeFd_ = -1;
  ending_ = options_.once || options_.standardInput;
}

void PrinterServer::readStream() {
  std::array<uint8_t, 65536> bytes;
  if (!mayRead()) return;
  const size_t most = std::min(bytes.size(), connection_.readable(now_));
  const ssize_t count = read(readFd_, bytes.data(), most);
  if (count < 0 && isTransient(errno)) return;
  if (count <= 0) {
    detach(count == 0 ? "disconnected" : std::string("disconnected: ") + std::strerror(errno));
    return;
  }
  connection_.took(static_cast<size_t>(count), now_);
  if (!dropping_ && !decoder_->push(bytes.data(), static_cast<size_t>(count))) malformed();
}

void PrinterServer::takeItem(const StreamItem& item) {
  if (item.kind == ItemKind::kStatusRequest) {
    answerStatus();
  } else {
    world_.take(item, now_);
  }
}

void PrinterServer::malformed() {
  dropping_ = true;
  world_.breakOff(now_);
  event("malformed stream, the rest is dropped: " + decoder_->error());
}

void PrinterServer::answerStatus() {
  const uint64_t word = world_.statusWord();
  PrinterConnection::Reply reply = connection_.answer(statusReply(word), now_);
  std::vector<PrinterConnection::Piece>& pieces = reply.pieces;
  const bool isTrue = reply.kind == ReplyKind::kTrue;
  const std::string scripted = pieces.empty() ? "silence" : "bytes of the scenario";
  event("status request -> " + (isTrue ? statusText(word) : scripted));
  if (writeFd_ < 0) return;
  pieces_.insert(pieces_.end(), std::make_move_iterator(pieces.begin()),
                 std::make_move_iterator(pieces.end()));
}

void PrinterServer::sendDue() {
  while (!pieces_.empty() && pieces_.front().due <= now_) {
    pollfd writable = {writeFd_, POLLOUT, 0};
    if (::poll(&writable, 1, 0) <= 0) return;
    std::string& bytes = pieces_.front().bytes;
    const ssize_t count = write(writeFd_, bytes.data(), std::min(bytes.size(), kMostWritten));
    if (count < 0 && isTransient(errno)) return;
    if (count < 0) {
      pieces_.clear();  // the host has gone, which reading will find out
      return;
    }
    bytes.erase(0, static_cast<size_t>(count));
    if (bytes.empty()) pieces_.pop_front();
  }
}

// ---- The control port ----

void PrinterServer::acceptControl() {
  control_.reset(acceptFrom(controlListener_));
  controlBytes_.clear();
}

void PrinterServer::readControl() {
  char bytes[4096];
  const ssize_t count = read(control_.get(), bytes, sizeof bytes);
  if (count < 0 && isTransient(errno)) return;
  if (count > 0) controlBytes_.append(bytes, static_cast<size_t>(count));
  if (count == 0 && !controlBytes_.empty()) controlBytes_ += '\n';  // a last line without its end
  for (size_t end = 0; (end = controlBytes_.find('\n')) != std::string::npos && !quit_;) {
    const std::string line = controlBytes_.substr(0, end);
    controlBytes_.erase(0, end + 1);
    takeControlLine(line);
  }
  if (controlBytes_.size() > kLongestControlLine) {
    takeControlLine(controlBytes_);
    control_.reset();
  }
  if (count <= 0) control_.reset();
}

void PrinterServer::takeControlLine(const std::string& line) {
  const std::string text = line.substr(0, line.find('#'));
  if (text.find_first_not_of(" \t\r") == std::string::npos) return;
  const std::string answer = answerTo(text) + "\n";
  send(control_.get(), answer.data(), answer.size(), MSG_NOSIGNAL);
}

std::string PrinterServer::answerTo(const std::string& text) {
  if (text.size() > kLongestControlLine) {
    return "error: the line is longer than " + std::to_string(kLongestControlLine) + " characters";
  }
  const Result<Scenario> scenario = parseScenario(text);
  if (!scenario) return "error: " + scenario.sentence();
  if (needsSpooler(scenario.value())) return "error: only a spooler's side channel can do that";
  if (scenario.value().kind == ScenarioKind::kState) {
    world_.advance(now_);
    return "ok: " + world_.stateText();
  }
  if (scenario.value().kind == ScenarioKind::kQuit) {
    quit_ = true;
  } else {
    event("scenario " + text.substr(0, text.find_last_not_of(" \t\r") + 1));
    apply(scenario.value());
  }
  return "ok";
}

bool PrinterServer::apply(const Scenario& scenario) {
  return world_.apply(scenario, now_) || connection_.apply(scenario, now_);
}

// ---- Events and pictures ----

void PrinterServer::event(const std::string& line) const {
  if (!options_.quiet) std::printf("%s\n", line.c_str());
}

// A page that was cut off may have no picture, which is no failure.
void PrinterServer::note(const std::string& what, bool hasShape, const Result<void>& written) {
  if (written) return;
  if (!hasShape) {
    event(what + ": " + written.sentence());
    return;
  }
  event(what + ": the picture cannot be written");
  failed_ = true;
  std::fprintf(stderr, "korvel-printer: %s: %s\n", what.c_str(), written.sentence().c_str());
}

void PrinterServer::writePage(unsigned number, const PagePicture& page) {
  if (!options_.pages || options_.folder.empty()) return;
  const std::string path = options_.folder + "/page-" + std::to_string(number) + ".png";
  note("page " + std::to_string(number), page.checkShape().ok(),
       page.writePng(path, options_.body.dpi));
}

void PrinterServer::writeSheet(unsigned number, const SheetPicture& sheet, const char* what) {
  const std::string name = "sheet " + std::to_string(number);
  std::string path;
  if (!options_.folder.empty()) {
    path = options_.folder + "/sheet-" + std::to_string(number) + ".png";
    note(name, sheet.height() != 0, sheet.writePng(path, options_.body.dpi));
    path += ' ';
  }
  event(name + " " + what + ": " + path + std::to_string(sheet.width()) + " x " +
        std::to_string(sheet.height()));
}

}  // namespace korvel
