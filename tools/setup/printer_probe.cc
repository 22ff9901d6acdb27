// The silence of a connection that another program owns is read from the kernel, by the interface
// that ss uses (sock_diag), because a busy printer does not accept a second connection.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/printer_probe.h"

#include <fcntl.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <linux/tcp.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <memory>

#include "tools/common/process.h"
#include "tools/stream/printer_model.h"

namespace korvel {

namespace {

using Clock = std::chrono::steady_clock;

// A status request. A reply is 64 FF, three ignored bytes, then the status word, low byte first.
constexpr unsigned char kRequest[] = {0x64, 0x10, 0x40, 0, 0, 0, 0, 0, 0, 0x9B};
constexpr unsigned char kReplyStart[] = {0x64, 0xFF};
constexpr size_t kWordOffset = 5;
constexpr size_t kReplyBytes = kWordOffset + 4;

struct Address {
  std::string host, port;
};

Address addressOf(const std::string& uri) {
  const size_t start = uri.find("//") + 2;
  Address address = {uri.substr(start, uri.find_first_of("/?", start) - start), "9100"};
  const size_t colon = address.host.rfind(':');
  if (colon != std::string::npos && address.host.find(']', colon) == std::string::npos) {
    address.port = address.host.substr(colon + 1);
    address.host.resize(colon);
  }
  if (address.host.starts_with("[") && address.host.ends_with("]")) {
    address.host = address.host.substr(1, address.host.size() - 2);
  }
  return address;
}

struct AddressFreer {
  void operator()(addrinfo* addresses) const { freeaddrinfo(addresses); }
};
using Addresses = std::unique_ptr<addrinfo, AddressFreer>;

Addresses resolve(const Address& address) {
  addrinfo wanted = {};
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(address.host.c_str(), address.port.c_str(), &wanted, &found) != 0) return {};
  return Addresses(found);
}

// False when `fd` does not become ready for `events` in time.
bool ready(int fd, short events, Clock::time_point end) {
  pollfd watched = {fd, events, 0};
  return poll(&watched, 1, millisecondsUntil(end)) == 1;
}

// Returns a closed descriptor when there is no connection.
Descriptor connectTo(const addrinfo& address, Clock::time_point end) {
  Descriptor socket(::socket(address.ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const int fd = socket.get();
  int fault = 0;
  socklen_t size = sizeof fault;
  const bool begun = connect(fd, address.ai_addr, address.ai_addrlen) == 0 || errno == EINPROGRESS;
  if (begun && ready(fd, POLLOUT, end) &&
      getsockopt(fd, SOL_SOCKET, SO_ERROR, &fault, &size) == 0 && fault == 0) {
    return socket;
  }
  return Descriptor();
}

PrinterReply answerOn(int fd, Clock::time_point end) {
  PrinterReply silent;
  silent.answer = PrinterAnswer::kSilent;
  if (send(fd, kRequest, sizeof kRequest, MSG_NOSIGNAL) != sizeof kRequest) return silent;
  unsigned char reply[64];
  size_t count = 0;
  while (count < kReplyBytes && ready(fd, POLLIN, end)) {
    const ssize_t more = read(fd, reply + count, sizeof reply - count);
    if (more <= 0) break;
    count += static_cast<size_t>(more);
  }
  return parseReply(reply, count);
}

// ---- Silence of a connection of another program ----

bool isTo(const inet_diag_msg& connection, const addrinfo& address) {
  if (connection.idiag_family != address.ai_family) return false;
  if (address.ai_family == AF_INET) {
    const auto* peer = reinterpret_cast<const sockaddr_in*>(address.ai_addr);
    return connection.id.idiag_dport == peer->sin_port &&
           connection.id.idiag_dst[0] == peer->sin_addr.s_addr;
  }
  const auto* peer = reinterpret_cast<const sockaddr_in6*>(address.ai_addr);
  return connection.id.idiag_dport == peer->sin6_port &&
         std::memcmp(connection.id.idiag_dst, &peer->sin6_addr, sizeof peer->sin6_addr) == 0;
}

// The seconds since data came in, from the attributes that follow the record of a connection.
std::optional<int> silenceIn(const nlmsghdr* message) {
  const char* at =
      reinterpret_cast<const char*>(message) + NLMSG_HDRLEN + NLMSG_ALIGN(sizeof(inet_diag_msg));
  const char* end = reinterpret_cast<const char*>(message) + message->nlmsg_len;
  while (end - at >= static_cast<ptrdiff_t>(sizeof(nlattr))) {
    nlattr attribute;
    std::memcpy(&attribute, at, sizeof attribute);
    if (attribute.nla_len < sizeof attribute || attribute.nla_len > end - at) return {};
    if (attribute.nla_type == INET_DIAG_INFO) {
      tcp_info info = {};
      std::memcpy(&info, at + sizeof attribute,
                  std::min(sizeof info, attribute.nla_len - sizeof attribute));
      return static_cast<int>(info.tcpi_last_data_recv / 1000);
    }
    at += NLA_ALIGN(attribute.nla_len);
  }
  return {};
}

bool requestConnections(int fd, int family) {
  struct {
    nlmsghdr header;
    inet_diag_req_v2 body;
  } request = {};
  request.header.nlmsg_len = sizeof request;
  request.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
  request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  request.body.sdiag_family = static_cast<uint8_t>(family);
  request.body.sdiag_protocol = IPPROTO_TCP;
  request.body.idiag_ext = 1u << (INET_DIAG_INFO - 1);
  request.body.idiag_states = 1u << 1;  // established
  return send(fd, &request, sizeof request, 0) == sizeof request;
}

// The longest silence of the connections to `address`.
std::optional<int> silenceTo(const addrinfo& address) {
  const Descriptor diagnosis(
      socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_SOCK_DIAG));
  if (!diagnosis.isOpen() || !requestConnections(diagnosis.get(), address.ai_family)) return {};
  const Clock::time_point end = Clock::now() + std::chrono::seconds(1);
  std::optional<int> longest;
  alignas(nlmsghdr) char buffer[32768];
  while (ready(diagnosis.get(), POLLIN, end)) {
    const ssize_t count = recv(diagnosis.get(), buffer, sizeof buffer, 0);
    if (count <= 0) return longest;
    const char* at = buffer;
    const char* last = buffer + count;
    while (last - at >= static_cast<ptrdiff_t>(sizeof(nlmsghdr))) {
      const auto* message = reinterpret_cast<const nlmsghdr*>(at);
      if (message->nlmsg_len < sizeof(nlmsghdr) || message->nlmsg_len > last - at) return longest;
      if (message->nlmsg_type == NLMSG_DONE || message->nlmsg_type == NLMSG_ERROR) return longest;
      const auto* connection = reinterpret_cast<const inet_diag_msg*>(at + NLMSG_HDRLEN);
      const bool whole = message->nlmsg_len >= NLMSG_HDRLEN + sizeof(inet_diag_msg);
      if (whole && isTo(*connection, address)) longest = std::max(longest, silenceIn(message));
      at += NLMSG_ALIGN(message->nlmsg_len);
    }
  }
  return longest;
}

}  // namespace

bool canBeAsked(const std::string& uri) {
  return uri.starts_with("socket://") || uri.starts_with("korvel://");
}

PrinterReply parseReply(const unsigned char* bytes, size_t count) {
  PrinterReply reply;
  reply.answer = PrinterAnswer::kSilent;
  if (count < kReplyBytes || std::memcmp(bytes, kReplyStart, sizeof kReplyStart) != 0) return reply;
  uint32_t word = 0;
  for (size_t i = 0; i < 4; ++i) word |= static_cast<uint32_t>(bytes[kWordOffset + i]) << (8 * i);
  reply.answer = PrinterAnswer::kAnswers;
  reply.coverOpen = (word & kStatusCoverOpen) != 0;
  reply.noPaper = (word & kStatusPaperOut) != 0;
  return reply;
}

PrinterReply askPrinter(const std::string& uri) {
  PrinterReply reply;
  if (!canBeAsked(uri)) return reply;
  reply.answer = PrinterAnswer::kNotReached;
  const Addresses addresses = resolve(addressOf(uri));
  const Clock::time_point end = Clock::now() + std::chrono::seconds(kProbeSeconds);
  for (const addrinfo* at = addresses.get(); at != nullptr; at = at->ai_next) {
    const Descriptor connection = connectTo(*at, end);
    if (connection.isOpen()) return answerOn(connection.get(), end);
  }
  return reply;
}

std::optional<int> secondsOfSilence(const std::string& uri) {
  if (!canBeAsked(uri)) return {};
  const Addresses addresses = resolve(addressOf(uri));
  std::optional<int> longest;
  for (const addrinfo* at = addresses.get(); at != nullptr; at = at->ai_next) {
    longest = std::max(longest, silenceTo(*at));
  }
  return longest;
}

}  // namespace korvel
