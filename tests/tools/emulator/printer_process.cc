// The output pipe is large, so that a printer whose events nobody reads yet does not wait.
// SPDX-License-Identifier: Apache-2.0
#include "tests/tools/emulator/printer_process.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>
#include <utility>

namespace {

constexpr int kMostWaitMs = 60000;
constexpr int kOutputPipeBytes = 1 << 20;

// Waits until `fd` can be read, then appends what is there. False at the end, or after the wait.
bool readSome(int fd, std::string* text, int waitMs = kMostWaitMs) {
  pollfd watched = {fd, POLLIN, 0};
  if (poll(&watched, 1, waitMs) <= 0) return false;
  char bytes[4096];
  const ssize_t count = read(fd, bytes, sizeof bytes);
  if (count <= 0) return false;
  text->append(bytes, static_cast<size_t>(count));
  return true;
}

std::string takeLine(std::string* text, size_t end) {
  std::string line = text->substr(0, end);
  text->erase(0, end + 1);
  return line;
}

}  // namespace

// ---- Any invocation ----

PrinterProcess::PrinterProcess(const std::string& program, const Lines& arguments) {
  korvel::Descriptor in, out, errors, replies;
  const bool opened = korvel::openPipe(&in, &in_).ok() && korvel::openPipe(&out_, &out).ok() &&
                      korvel::openPipe(&errors_, &errors).ok() &&
                      korvel::openPipe(&replies_, &replies).ok();
  if (!opened) std::abort();
  fcntl(out.get(), F_SETPIPE_SZ, kOutputPipeBytes);
  korvel::Program printer;
  printer.arguments = arguments;
  printer.arguments.insert(printer.arguments.begin(), program);
  printer.descriptors = {in.get(), out.get(), errors.get(), replies.get()};
  const korvel::Result<void> started = child_.start(printer);
  EXPECT_TRUE(started.ok()) << started.sentence();
}

std::string PrinterProcess::line() {
  size_t end = 0;
  while ((end = output_.find('\n')) == std::string::npos) {
    if (!readSome(out_.get(), &output_)) return "(end)";
  }
  return takeLine(&output_, end);
}

int PrinterProcess::number() { return std::atoi(line().c_str()); }

Lines PrinterProcess::linesTo(const std::string& start) {
  Lines lines;
  do {
    lines.push_back(line());
  } while (!lines.back().starts_with(start) && lines.back() != "(end)");
  return lines;
}

Lines PrinterProcess::linesSoFar() {
  while (readSome(out_.get(), &output_, 0)) {
  }
  Lines lines;
  for (size_t end = 0; (end = output_.find('\n')) != std::string::npos;) {
    lines.push_back(takeLine(&output_, end));
  }
  return lines;
}

void PrinterProcess::feed(const std::vector<uint8_t>& bytes) const {
  if (write(in_.get(), bytes.data(), bytes.size()) < 0) std::abort();
}

int PrinterProcess::status() {
  closeInput();
  int status = 0;
  for (int waited = 0; !child_.reap(&status); waited += 5) {
    if (waited > kMostWaitMs) child_.signal(SIGKILL);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

std::string PrinterProcess::all(const korvel::Descriptor& from) {
  std::string text;
  while (readSome(from.get(), &text)) {
  }
  return text;
}

// ---- A printer that listens ----

ListeningPrinter::ListeningPrinter(const std::string& program, const Lines& arguments)
    : process_(program, allArguments(arguments)),
      port_(process_.number()),
      controlPort_(process_.number()) {
  EXPECT_NE(controlPort_, 0);
}

Lines ListeningPrinter::allArguments(const Lines& arguments) const {
  Lines all = {"--port", "0", "--control-port", "0", "--out", folder_.file("out"), "--pages"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return all;
}

std::string ListeningPrinter::command(const std::string& line) const {
  std::string answer = HostConnection(controlPort_).ask(line);
  EXPECT_EQ(answer.substr(0, 2), "ok") << line << ": " << answer;
  return answer;
}

const Lines& ListeningPrinter::events() const {
  for (const std::string& line : process_.linesSoFar()) events_.push_back(line);
  return events_;
}

Lines ListeningPrinter::events(const Lines& beginnings) const {
  Lines chosen;
  for (const std::string& event : events()) {
    const bool matches =
        std::any_of(beginnings.begin(), beginnings.end(),
                    [&event](const std::string& start) { return event.starts_with(start); });
    if (matches) chosen.push_back(event);
  }
  return chosen;
}

bool ListeningPrinter::waitForEvent(const std::string& beginning, double seconds) const {
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (events({beginning}).empty()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

// ---- A host ----

HostConnection::HostConnection(int port)
    : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<uint16_t>(port));
  connected_ = connect(socket_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
}

void HostConnection::send(const char* bytes, size_t count) const {
  for (size_t at = 0; at < count;) {
    const ssize_t sent = ::send(socket_.get(), bytes + at, count - at, MSG_NOSIGNAL);
    if (sent < 0) return;
    at += static_cast<size_t>(sent);
  }
}

void HostConnection::endSending() const { shutdown(socket_.get(), SHUT_WR); }

std::string HostConnection::receive(size_t count) {
  while (received_.size() < count && readSome(socket_.get(), &received_)) {
  }
  std::string bytes = received_.substr(0, count);
  received_.erase(0, bytes.size());
  return bytes;
}

std::string HostConnection::receiveAll() {
  while (readSome(socket_.get(), &received_)) {
  }
  return std::exchange(received_, std::string());
}

std::string HostConnection::ask(const std::string& line) {
  send(line + "\n");
  std::string answer;
  while (!answer.ends_with("\n")) {
    const std::string byte = receive(1);
    if (byte.empty()) return answer + "(end)";
    answer += byte;
  }
  return answer.substr(0, answer.size() - 1);
}
