// Every request is a connection of its own.
// SPDX-License-Identifier: Apache-2.0
#include "tests/studio/studio_process.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace fs = std::filesystem;

namespace {

constexpr double kStartSeconds = 20;
constexpr double kAnswerSeconds = 90;

std::string lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// The server may remove a folder meanwhile.
void addFiles(const fs::path& folder, std::vector<std::string>* names) {
  std::error_code gone;
  fs::directory_iterator at(folder, gone);
  for (; !gone && at != fs::directory_iterator(); at.increment(gone)) {
    std::error_code unknown;
    if (at->is_directory(unknown)) addFiles(at->path(), names);
    if (at->is_regular_file(unknown)) names->push_back(at->path().filename());
  }
}

Reply parseReply(const std::string& bytes) {
  Reply reply;
  const size_t end = bytes.find("\r\n\r\n");
  if (!bytes.starts_with("HTTP/1.1 ") || end == std::string::npos) return reply;
  reply.status = std::atoi(bytes.c_str() + 9);
  reply.body = bytes.substr(end + 4);
  std::istringstream lines(bytes.substr(0, end));
  for (std::string line; std::getline(lines, line);) {
    const size_t colon = line.find(": ");
    if (line.ends_with('\r')) line.pop_back();
    if (colon != std::string::npos)
      reply.headers[lower(line.substr(0, colon))] = line.substr(colon + 2);
  }
  return reply;
}

bool has(const std::vector<std::string>& headers, const std::string& name) {
  return std::any_of(headers.begin(), headers.end(),
                     [&](const std::string& header) { return header.starts_with(name + ":"); });
}

}  // namespace

std::string Reply::code() const {
  const nlohmann::json parsed = json();
  return parsed.is_object() && parsed.contains("code") ? parsed["code"].get<std::string>() : "";
}

StudioProcess::StudioProcess(const std::string& program, const std::vector<std::string>& arguments,
                             const std::map<std::string, std::string>& environment) {
  std::vector<std::string> words = {program, "--listen", "127.0.0.1:0"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  fs::create_directory(folder_.file("tmp"));
  std::map<std::string, std::string> variables = environment;
  variables["TMPDIR"] = folder_.file("tmp");
  process_.start({words, folder_.file("output"), variables});
  waitUntil(kStartSeconds, [this] {
    address_ = output().substr(0, output().find('\n'));
    return output().find('\n') != std::string::npos || process_.wait(0) != -1;
  });
  const size_t colon = address_.rfind(':');
  port_ = colon == std::string::npos ? 0 : std::atoi(address_.c_str() + colon + 1);
  EXPECT_NE(port_, 0) << output();
}

int StudioProcess::connect() const {
  const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in to = {};
  to.sin_family = AF_INET;
  to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  to.sin_port = htons(static_cast<uint16_t>(port_));
  if (::connect(connection, reinterpret_cast<sockaddr*>(&to), sizeof to) == 0) return connection;
  close(connection);
  return -1;
}

std::string StudioProcess::exchange(const std::string& bytes, double seconds) const {
  const int connection = connect();
  if (connection < 0) return "";
  std::string answer;
  size_t sent = 0;
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (std::chrono::steady_clock::now() < end) {
    pollfd watched = {connection,
                      static_cast<short>(sent < bytes.size() ? POLLIN | POLLOUT : POLLIN), 0};
    if (poll(&watched, 1, 100) <= 0) continue;
    char part[65536];
    if ((watched.revents & (POLLIN | POLLHUP | POLLERR)) != 0) {
      const ssize_t count = recv(connection, part, sizeof part, 0);
      if (count <= 0) break;
      answer.append(part, static_cast<size_t>(count));
    } else if ((watched.revents & POLLOUT) != 0) {
      const ssize_t count =
          send(connection, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
      if (count > 0) sent += static_cast<size_t>(count);
    }
  }
  close(connection);
  return answer;
}

Reply StudioProcess::request(const std::string& method, const std::string& target,
                             const std::string& body,
                             const std::vector<std::string>& headers) const {
  std::string text = method + " " + target + " HTTP/1.1\r\nConnection: close\r\n";
  if (!has(headers, "Host")) text += "Host: 127.0.0.1:" + std::to_string(port_) + "\r\n";
  if (!has(headers, "Content-Length") && !has(headers, "Transfer-Encoding")) {
    text += "Content-Length: " + std::to_string(body.size()) + "\r\n";
  }
  for (const std::string& header : headers) text += header + "\r\n";
  return parseReply(exchange(text + "\r\n" + body, kAnswerSeconds));
}

std::vector<std::string> StudioProcess::privateFiles() const {
  std::vector<std::string> names;
  addFiles(folder_.file("tmp"), &names);
  std::sort(names.begin(), names.end());
  return names;
}
