// On libmicrohttpd. A connection that does not get on is closed by a watchdog: the library's own
// time limit starts again with every byte. SPDX-License-Identifier: Apache-2.0
#include "studio/http_server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>

#include "studio/upload_limit.h"
#include "tools/common/process.h"
#include "tools/common/translation.h"

namespace korvel {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

constexpr unsigned kMostConnections = 512;
constexpr size_t kMostUploads = 16;
constexpr unsigned kIdleSeconds = 15;
constexpr size_t kHeaderBytes = 32768;
constexpr size_t kThreadStack = size_t{1} << 20;
constexpr seconds kForHeaders(20);
constexpr seconds kForRequest(240);

constexpr std::pair<const char*, const char*> kEveryAnswer[] = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob:; "
     "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Permissions-Policy", "geolocation=(), microphone=(), usb=()"},
};

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// Closes connections whose time is over.
class Watchdog {
 public:
  Watchdog() : thread_([this] { watch(); }) {}
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;
  ~Watchdog() {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      ended_ = true;
    }
    wake_.notify_all();
    thread_.join();
  }

  void allow(MHD_Connection* connection, seconds time) {
    const MHD_ConnectionInfo* info =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    if (info == nullptr) return;
    const std::lock_guard<std::mutex> lock(mutex_);
    watched_[connection] = {info->connect_fd, Clock::now() + time};
  }
  // Does nothing to a connection that has gone already.
  void close(const void* connection) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = watched_.find(connection);
    if (found != watched_.end()) found->second.end = Clock::now();
    wake_.notify_all();
  }
  void forget(MHD_Connection* connection) {
    const std::lock_guard<std::mutex> lock(mutex_);
    watched_.erase(connection);
  }

 private:
  struct Watched {
    int descriptor;
    Clock::time_point end;
  };

  void watch() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!ended_) {
      wake_.wait_for(lock, seconds(1));
      for (const auto& [connection, watched] : watched_) {
        if (Clock::now() >= watched.end) shutdown(watched.descriptor, SHUT_RDWR);
      }
    }
  }

  std::mutex mutex_;
  std::condition_variable wake_;
  std::map<const void*, Watched> watched_;  // by connection
  bool ended_ = false;
  std::thread thread_;
};

// One request on its way.
struct Exchange {
  HttpRequest request;
  Descriptor file;
  bool failed = false;
};

std::string addressOf(MHD_Connection* connection) {
  const MHD_ConnectionInfo* info =
      MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
  char text[INET6_ADDRSTRLEN] = "";
  if (info == nullptr || info->client_addr == nullptr) return text;
  const sockaddr* client = info->client_addr;
  const bool isSix = client->sa_family == AF_INET6;
  inet_ntop(
      client->sa_family,
      isSix ? static_cast<const void*>(&reinterpret_cast<const sockaddr_in6*>(client)->sin6_addr)
            : &reinterpret_cast<const sockaddr_in*>(client)->sin_addr,
      text, sizeof text);
  return text;
}

MHD_Result takeHeader(void* request, MHD_ValueKind, const char* name, const char* value) {
  static_cast<HttpRequest*>(request)->headers[lower(name)] = value == nullptr ? "" : value;
  return MHD_YES;
}

MHD_Result takeQuery(void* request, MHD_ValueKind, const char* name, const char* value) {
  static_cast<HttpRequest*>(request)->query[name] = value == nullptr ? "" : value;
  return MHD_YES;
}

constexpr size_t kWorthPacking = 1024;

// Texts are packed for clients that say that they can unpack. Empty when that is not worth it.
std::string packed(const std::string& text) {
  z_stream stream = {};
  constexpr int kGzip = 15 + 16;
  if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kGzip, 8, Z_DEFAULT_STRATEGY) !=
      Z_OK) {
    return "";
  }
  std::string output(deflateBound(&stream, text.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(output.data());
  stream.avail_out = static_cast<uInt>(output.size());
  const bool done = deflate(&stream, Z_FINISH) == Z_STREAM_END;
  output.resize(stream.total_out);
  deflateEnd(&stream);
  return done ? output : "";
}

bool takesPacked(MHD_Connection* connection) {
  const char* accepted =
      MHD_lookup_connection_value(connection, MHD_HEADER_KIND, "Accept-Encoding");
  return accepted != nullptr && std::strstr(accepted, "gzip") != nullptr;
}

MHD_Result send(MHD_Connection* connection, const HttpResponse& response) {
  const bool isText = response.type != "image/png" && response.body.size() > kWorthPacking;
  const std::string small = isText && takesPacked(connection) ? packed(response.body) : "";
  const std::string& body = small.empty() ? response.body : small;
  MHD_Response* made = MHD_create_response_from_buffer(body.size(), const_cast<char*>(body.data()),
                                                       MHD_RESPMEM_MUST_COPY);
  if (made == nullptr) return MHD_NO;
  if (!small.empty()) MHD_add_response_header(made, "Content-Encoding", "gzip");
  if (isText) MHD_add_response_header(made, "Vary", "Accept-Encoding");
  bool cached = false;
  for (const auto& [name, value] : kEveryAnswer) MHD_add_response_header(made, name, value);
  for (const auto& [name, value] : response.headers) {
    MHD_add_response_header(made, name.c_str(), value.c_str());
    cached = cached || name == "Cache-Control";
  }
  if (!cached) MHD_add_response_header(made, "Cache-Control", "no-store");
  MHD_add_response_header(made, "Content-Type", response.type.c_str());
  const MHD_Result result =
      MHD_queue_response(connection, static_cast<unsigned>(response.status), made);
  MHD_destroy_response(made);
  return result;
}

}  // namespace

std::string HttpRequest::header(const std::string& name) const {
  const auto found = headers.find(name);
  return found == headers.end() ? "" : found->second;
}

std::string HttpRequest::parameter(const std::string& name) const {
  const auto found = query.find(name);
  return found == query.end() ? "" : found->second;
}

class HttpServer::Daemon {
 public:
  explicit Daemon(HttpHandler* handler) : handler_(handler) {}
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;
  ~Daemon() {
    if (daemon_ != nullptr) MHD_stop_daemon(daemon_);
  }

  Result<void> listen(const std::string& address, int port);
  int port() const;

 private:
  static MHD_Result access(void* self, MHD_Connection* connection, const char* url,
                           const char* method, const char* version, const char* upload,
                           size_t* uploadSize, void** state);
  static void completed(void* self, MHD_Connection* connection, void** state,
                        MHD_RequestTerminationCode);
  static void connected(void* self, MHD_Connection* connection, void**,
                        MHD_ConnectionNotificationCode code);

  MHD_Result begin(MHD_Connection* connection, const char* url, const char* method, void** state);
  void takeBody(Exchange* exchange, const char* bytes, size_t count);

  HttpHandler* handler_;
  Watchdog watchdog_;
  UploadLimit uploads_{kMostUploads};
  MHD_Daemon* daemon_ = nullptr;
};

namespace {

int openSocket(const std::string& address, int port) {
  sockaddr_in6 six = {};
  sockaddr_in four = {};
  const bool isSix = address.find(':') != std::string::npos;
  const int fd = socket(isSix ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  const int on = 1;
  setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  six.sin6_family = AF_INET6;
  six.sin6_port = four.sin_port = htons(static_cast<uint16_t>(port));
  four.sin_family = AF_INET;
  inet_pton(isSix ? AF_INET6 : AF_INET, address.c_str(),
            isSix ? static_cast<void*>(&six.sin6_addr) : &four.sin_addr);
  const sockaddr* to =
      isSix ? reinterpret_cast<sockaddr*>(&six) : reinterpret_cast<sockaddr*>(&four);
  const socklen_t size = isSix ? sizeof six : sizeof four;
  if (bind(fd, to, size) == 0 && ::listen(fd, 128) == 0) return fd;
  const int reason = errno;
  close(fd);
  errno = reason;
  return -1;
}

}  // namespace

Result<void> HttpServer::Daemon::listen(const std::string& address, int port) {
  const int fd = openSocket(address, port);
  if (fd < 0) {
    return Failure{
        filled("Cannot listen on %s, port %d: %s.", address.c_str(), port, std::strerror(errno))};
  }
  daemon_ = MHD_start_daemon(
      MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_THREAD_PER_CONNECTION, 0, nullptr, nullptr, &access,
      this, MHD_OPTION_LISTEN_SOCKET, fd, MHD_OPTION_CONNECTION_LIMIT, kMostConnections,
      MHD_OPTION_CONNECTION_TIMEOUT, kIdleSeconds, MHD_OPTION_CONNECTION_MEMORY_LIMIT, kHeaderBytes,
      MHD_OPTION_THREAD_STACK_SIZE, kThreadStack, MHD_OPTION_NOTIFY_COMPLETED, &completed, this,
      MHD_OPTION_NOTIFY_CONNECTION, &connected, this, MHD_OPTION_END);
  if (daemon_ == nullptr) {
    close(fd);
    return Failure{translated("Cannot start the web server: no thread or memory is left.")};
  }
  return {};
}

int HttpServer::Daemon::port() const {
  const MHD_DaemonInfo* info = MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_LISTEN_FD);
  sockaddr_storage address = {};
  socklen_t size = sizeof address;
  if (info == nullptr ||
      getsockname(info->listen_fd, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    return 0;
  }
  return ntohs(address.ss_family == AF_INET6 ? reinterpret_cast<sockaddr_in6*>(&address)->sin6_port
                                             : reinterpret_cast<sockaddr_in*>(&address)->sin_port);
}

MHD_Result HttpServer::Daemon::access(void* self, MHD_Connection* connection, const char* url,
                                      const char* method, const char* /*version*/,
                                      const char* upload, size_t* uploadSize, void** state) {
  auto* daemon = static_cast<Daemon*>(self);
  if (*state == nullptr) return daemon->begin(connection, url, method, state);
  auto* exchange = static_cast<Exchange*>(*state);
  if (*uploadSize > 0) {
    daemon->takeBody(exchange, upload, *uploadSize);
    *uploadSize = 0;
    return exchange->request.bodySize > 2 * exchange->request.mostBody + kHeaderBytes ? MHD_NO
                                                                                      : MHD_YES;
  }
  exchange->file.reset();
  daemon->uploads_.end(connection);
  return send(connection, exchange->failed ? daemon->handler_->tooLarge()
                                           : daemon->handler_->answer(&exchange->request));
}

MHD_Result HttpServer::Daemon::begin(MHD_Connection* connection, const char* url,
                                     const char* method, void** state) {
  watchdog_.allow(connection, kForRequest);
  auto exchange = std::make_unique<Exchange>();
  HttpRequest& request = exchange->request;
  request.method = method;
  request.path = url;
  MHD_get_connection_values(connection, MHD_HEADER_KIND, &takeHeader, &request);
  MHD_get_connection_values(connection, MHD_GET_ARGUMENT_KIND, &takeQuery, &request);
  std::optional<HttpResponse> refused = handler_->admit(&request);
  const std::string length = request.header("content-length");
  if (!refused && !length.empty() &&
      (length.size() > 15 || std::stoull(length) > request.mostBody)) {
    refused = handler_->tooLarge();
  }
  if (!refused && !request.bodyFile.empty()) {
    exchange->file.reset(
        open(request.bodyFile.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    exchange->failed = !exchange->file.isOpen();
    const void* ended = uploads_.begin(connection, addressOf(connection));
    if (ended != nullptr) watchdog_.close(ended);
  }
  *state = exchange.release();
  return refused ? send(connection, *refused) : MHD_YES;
}

void HttpServer::Daemon::takeBody(Exchange* exchange, const char* bytes, size_t count) {
  HttpRequest& request = exchange->request;
  request.bodySize += count;
  if (request.bodySize > request.mostBody) exchange->failed = true;
  if (exchange->failed) return;
  if (!exchange->file.isOpen()) {
    request.body.append(bytes, count);
    return;
  }
  for (size_t done = 0; done < count;) {
    const ssize_t written = write(exchange->file.get(), bytes + done, count - done);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) {
      exchange->failed = true;
      return;
    }
    done += static_cast<size_t>(written);
  }
}

void HttpServer::Daemon::completed(void* self, MHD_Connection* connection, void** state,
                                   MHD_RequestTerminationCode) {
  delete static_cast<Exchange*>(*state);
  *state = nullptr;
  auto* daemon = static_cast<Daemon*>(self);
  daemon->uploads_.end(connection);
  daemon->watchdog_.allow(connection, kForHeaders);
}

void HttpServer::Daemon::connected(void* self, MHD_Connection* connection, void**,
                                   MHD_ConnectionNotificationCode code) {
  auto* daemon = static_cast<Daemon*>(self);
  if (code == MHD_CONNECTION_NOTIFY_STARTED) {
    daemon->watchdog_.allow(connection, kForHeaders);
  } else {
    daemon->watchdog_.forget(connection);
  }
}

HttpServer::HttpServer(HttpHandler* handler) : daemon_(std::make_unique<Daemon>(handler)) {}
HttpServer::~HttpServer() = default;
Result<void> HttpServer::listen(const std::string& address, int port) {
  return daemon_->listen(address, port);
}
int HttpServer::port() const { return daemon_->port(); }

}  // namespace korvel
