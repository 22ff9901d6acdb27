// The web server: limits on connections, sizes and time, and the headers that every answer carries.
// One thread serves one connection.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_HTTP_SERVER_H
#define KORVEL_STUDIO_HTTP_SERVER_H

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/common/result.h"

namespace korvel {

struct HttpRequest {
  std::string method;
  std::string path;                            // decoded, without the query
  std::map<std::string, std::string> query;    // decoded
  std::map<std::string, std::string> headers;  // names in lower case

  // Where the body goes, set by Handler::admit: into memory, or into a file when one is named.
  size_t mostBody = 0;
  std::string bodyFile;
  std::string body;
  size_t bodySize = 0;
  std::shared_ptr<void> kept;  // of the handler's, from admit to answer

  std::string header(const std::string& name) const;
  std::string parameter(const std::string& name) const;
};

struct HttpResponse {
  int status = 200;
  std::string type = "application/json";
  std::string body;
  std::vector<std::pair<std::string, std::string>> headers;
};

class HttpHandler {
 public:
  virtual ~HttpHandler() = default;
  // Sees the headers only. A response ends the request before its body is read.
  virtual std::optional<HttpResponse> admit(HttpRequest* request) = 0;
  virtual HttpResponse answer(HttpRequest* request) = 0;
  virtual HttpResponse tooLarge() = 0;
};

class HttpServer {
 public:
  // `handler` is borrowed and called from many threads.
  explicit HttpServer(HttpHandler* handler);
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;
  ~HttpServer();  // closes every connection

  Result<void> listen(const std::string& address, int port);
  int port() const;  // after listen()

 private:
  class Daemon;
  std::unique_ptr<Daemon> daemon_;
};

}  // namespace korvel

#endif
