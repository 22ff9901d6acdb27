// Events are read from the program's output file, whose first two lines are the ports it picked.
// SPDX-License-Identifier: Apache-2.0
#include "tests/spooler/printer_process.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace {

constexpr double kStartSeconds = 20;
constexpr size_t kPortLines = 2;

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

}  // namespace

PrinterProcess::PrinterProcess(const std::string& program,
                               const std::vector<std::string>& arguments) {
  std::vector<std::string> words = {
      program, "--port", "0", "--control-port", "0", "--out", folder_.file("out"), "--pages"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  process_.start({words, folder_.file("output"), {}});
  waitUntil(kStartSeconds, [this] {
    const bool ended = process_.wait(0) != -1;
    const std::vector<std::string> lines = linesOf(folder_.read("output"));
    if (lines.size() < kPortLines) return ended;
    port_ = std::atoi(lines[0].c_str());
    controlPort_ = std::atoi(lines[1].c_str());
    return ended || controlPort_ != 0;
  });
  EXPECT_NE(controlPort_, 0) << folder_.read("output");
}

std::string PrinterProcess::command(const std::string& line) const {
  const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<uint16_t>(controlPort_));
  const std::string text = line + "\n";
  std::string answer;
  if (connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
      send(connection, text.data(), text.size(), MSG_NOSIGNAL) != -1) {
    char bytes[1024];
    const ssize_t count = recv(connection, bytes, sizeof bytes, 0);
    if (count > 0) answer.assign(bytes, static_cast<size_t>(count));
  }
  close(connection);
  EXPECT_EQ(answer.substr(0, 2), "ok") << line << ": " << answer;
  return answer;
}

std::vector<std::string> PrinterProcess::events() const {
  std::vector<std::string> lines = linesOf(folder_.read("output"));
  lines.erase(lines.begin(),
              lines.begin() + static_cast<ptrdiff_t>(std::min(kPortLines, lines.size())));
  return lines;
}

std::vector<std::string> PrinterProcess::events(const std::vector<std::string>& beginnings) const {
  std::vector<std::string> chosen;
  for (const std::string& event : events()) {
    const bool wanted =
        std::any_of(beginnings.begin(), beginnings.end(),
                    [&event](const std::string& word) { return event.starts_with(word); });
    if (wanted) chosen.push_back(event);
  }
  return chosen;
}

bool PrinterProcess::waitForEvent(const std::string& beginning, double seconds) const {
  return waitUntil(seconds, [&] { return !events({beginning}).empty(); });
}
