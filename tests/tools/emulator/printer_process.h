// The emulated printer as a process of a test, and a host's connection to it. Whatever waits here
// waits for something to happen, with a generous end; nothing outlives the test.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_TOOLS_PRINTER_PROCESS_H
#define KORVEL_TESTS_TOOLS_PRINTER_PROCESS_H

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <thread>
#include <utility>
#include <vector>

inline constexpr int kMostWaitMs = 60000;

// Waits until `fd` can be read, then appends what is there. False at the end, or after the wait.
inline bool readSome(int fd, std::string* text) {
  pollfd watched = {fd, POLLIN, 0};
  if (poll(&watched, 1, kMostWaitMs) <= 0) return false;
  char bytes[4096];
  const ssize_t count = read(fd, bytes, sizeof bytes);
  if (count <= 0) return false;
  text->append(bytes, static_cast<size_t>(count));
  return true;
}

class PrinterProcess {
 public:
  // Descriptors 0, 1 and 2 are pipes; the printer's 3 is the writing end of a pipe of replies.
  explicit PrinterProcess(const std::vector<std::string>& arguments) {
    int pipes[4][2];
    for (auto& ends : pipes) {
      if (pipe2(ends, O_CLOEXEC) != 0) std::abort();
    }
    std::vector<std::string> words = arguments;
    words.insert(words.begin(), KORVEL_PRINTER);
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ == 0) becomePrinter(pipes, parent, pointers.data());
    in_ = pipes[0][1];
    out_ = pipes[1][0];
    errors_ = pipes[2][0];
    replies_ = pipes[3][0];
    for (const int end : {pipes[0][0], pipes[1][1], pipes[2][1], pipes[3][1]}) close(end);
  }
  PrinterProcess(const PrinterProcess&) = delete;
  PrinterProcess& operator=(const PrinterProcess&) = delete;
  ~PrinterProcess() {
    if (pid_ > 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    closeInput();
    for (const int end : {out_, errors_, replies_}) close(end);
  }

  // The next line of its output, without its end; "(end)" when there is none any more.
  std::string line() {
    size_t end = 0;
    while ((end = output_.find('\n')) == std::string::npos) {
      if (!readSome(out_, &output_)) return "(end)";
    }
    std::string text = output_.substr(0, end);
    output_.erase(0, end + 1);
    return text;
  }
  int number() { return std::atoi(line().c_str()); }

  // The lines up to and with the first that begins like `start`.
  std::vector<std::string> linesTo(const std::string& start) {
    std::vector<std::string> lines;
    do {
      lines.push_back(line());
    } while (!lines.back().starts_with(start) && lines.back() != "(end)");
    return lines;
  }
  bool tells(const std::string& start) { return linesTo(start).back() != "(end)"; }

  void feed(const std::vector<uint8_t>& bytes) {
    if (write(in_, bytes.data(), bytes.size()) < 0) std::abort();
  }
  void closeInput() {
    if (in_ >= 0) close(in_);
    in_ = -1;
  }
  void signal(int number) const { kill(pid_, number); }

  // Waits for its end. Returns the exit status, 1000 and the signal when one ended it.
  int status() {
    closeInput();
    int status = 0;
    for (int waited = 0; waitpid(pid_, &status, WNOHANG) == 0; waited += 5) {
      if (waited > kMostWaitMs) kill(pid_, SIGKILL);
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  }
  std::string errors() { return all(errors_); }
  std::string replies() { return all(replies_); }

 private:
  [[noreturn]] static void becomePrinter(int (*pipes)[2], pid_t parent, char* const* words) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(127);
    // Out of the way first, for a pipe's end may lie where another has to go.
    const int ends[4] = {
        fcntl(pipes[0][0], F_DUPFD_CLOEXEC, 50), fcntl(pipes[1][1], F_DUPFD_CLOEXEC, 50),
        fcntl(pipes[2][1], F_DUPFD_CLOEXEC, 50), fcntl(pipes[3][1], F_DUPFD_CLOEXEC, 50)};
    for (int fd = 0; fd < 4; ++fd) dup2(ends[fd], fd);
    execv(words[0], words);
    _exit(127);
  }
  static std::string all(int fd) {
    std::string text;
    while (readSome(fd, &text)) {
    }
    return text;
  }

  pid_t pid_ = -1;
  int in_ = -1, out_ = -1, errors_ = -1, replies_ = -1;
  std::string output_;
};

// A host on the loopback address.
class HostConnection {
 public:
  explicit HostConnection(int port) : fd_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(port));
    connected_ = connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  }
  HostConnection(const HostConnection&) = delete;
  HostConnection& operator=(const HostConnection&) = delete;
  ~HostConnection() { hangUp(); }

  bool connected() const { return connected_; }
  template <typename Bytes>
  void send(const Bytes& bytes) const {
    for (size_t at = 0; at < bytes.size();) {
      const ssize_t count = ::send(fd_, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
      if (count < 0) return;
      at += static_cast<size_t>(count);
    }
  }
  void endSending() const { shutdown(fd_, SHUT_WR); }
  void hangUp() {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
  }
  // The next `count` bytes, or fewer at the end.
  std::string receive(size_t count) {
    while (received_.size() < count && readSome(fd_, &received_)) {
    }
    std::string bytes = received_.substr(0, count);
    received_.erase(0, bytes.size());
    return bytes;
  }
  std::string receiveAll() {
    while (readSome(fd_, &received_)) {
    }
    return std::exchange(received_, std::string());
  }
  // A line of the control port and its answer.
  std::string ask(const std::string& line) {
    send(line + "\n");
    std::string answer;
    while (!answer.ends_with("\n")) {
      const std::string byte = receive(1);
      if (byte.empty()) return answer + "(end)";
      answer += byte;
    }
    return answer.substr(0, answer.size() - 1);
  }

 private:
  int fd_;
  bool connected_ = false;
  std::string received_;
};

#endif
