// korvel-studio as a process of a test, and plain HTTP requests to it over loopback.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_STUDIO_STUDIO_PROCESS_H
#define KORVEL_TESTS_STUDIO_STUDIO_PROCESS_H

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/spooler/guarded_process.h"
#include "tests/support/temporary_folder.h"

struct Reply {
  int status = 0;                              // 0: the connection broke
  std::map<std::string, std::string> headers;  // names in lower case
  std::string body;

  nlohmann::json json() const { return nlohmann::json::parse(body, nullptr, false); }
  std::string code() const;  // of an error; else empty
};

class StudioProcess {
 public:
  // Starts `program` on a free port of 127.0.0.1 with more arguments; a failure is the test's.
  StudioProcess(const std::string& program, const std::vector<std::string>& arguments,
                const std::map<std::string, std::string>& environment);

  int port() const { return port_; }
  const std::string& address() const { return address_; }  // the line that it printed
  std::string output() const { return folder_.read("output"); }

  // Header lines are "Name: value"; Host and Content-Length are added unless they are given.
  Reply request(const std::string& method, const std::string& target, const std::string& body = "",
                const std::vector<std::string>& headers = {}) const;
  Reply get(const std::string& target) const { return request("GET", target); }
  Reply post(const std::string& target, const std::string& body) const {
    return request("POST", target, body);
  }
  // Sends bytes as they are and reads to the end, or until `seconds` are over.
  std::string exchange(const std::string& bytes, double seconds) const;
  int connect() const;  // a descriptor of the caller's

  // Files below the server's private folder, by name.
  std::vector<std::string> privateFiles() const;
  void stop() { process_.stop(); }

 private:
  TemporaryFolder folder_;
  GuardedProcess process_;
  std::string address_;
  int port_ = 0;
};

#endif
