// A client on the network: what a tablet or a phone asks a print server, and what it may not do.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SHARING_PHONE_H
#define KORVEL_TESTS_SHARING_PHONE_H

#include <cups/cups.h>

#include <string>
#include <vector>

class Phone {
 public:
  // `address` is the server's in the network, or the path of its socket.
  explicit Phone(const std::string& address);
  Phone(const Phone&) = delete;
  Phone& operator=(const Phone&) = delete;
  ~Phone() { httpClose(connection_); }

  bool connected() const { return connection_ != nullptr; }

  // Prints a file of a format such as "image/urf"; `options` are job attributes, "media=..." for
  // one. Returns the job's number, or 0.
  int print(const std::string& queue, const std::string& file, const std::string& format,
            const std::vector<std::string>& options = {});
  std::vector<std::string> ask(const std::string& queue, const char* attribute);
  // The names of the jobs, which are the paths of their files; "all" or "not-completed".
  std::vector<std::string> jobs(const std::string& queue, const char* which);
  // The HTTP status of reading the server's configuration.
  int readConfiguration();
  // The IPP status of an administrator's operation.
  int administer(ipp_op_t operation, const std::string& queue);

 private:
  ipp_t* request(ipp_op_t operation, const std::string& queue) const;

  std::string address_;
  http_t* connection_;
};

#endif
