// Questions go out from a port of our own, which a responder answers directly; such a question
// needs no multicast membership and disturbs no responder on this computer.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/network_proof.h"

#include <arpa/inet.h>
#include <cups/cups.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>

#include "tools/common/process.h"
#include "tools/common/translation.h"
#include "tools/setup/print_system.h"

namespace korvel {

namespace {

constexpr int kConnectMilliseconds = 5000;
constexpr int kPort = 631;

HttpConnection connectTo(const std::string& address) {
  return HttpConnection(httpConnect2(address.c_str(), kPort, nullptr, AF_UNSPEC,
                                     HTTP_ENCRYPTION_IF_REQUESTED, 1, kConnectMilliseconds,
                                     nullptr));
}

ipp_t* newRequest(ipp_op_t operation, const std::string& address, const std::string& queue) {
  char uri[HTTP_MAX_URI];
  httpAssembleURIf(HTTP_URI_CODING_ALL, uri, sizeof uri, "ipp", nullptr, address.c_str(), kPort,
                   "/printers/%s", queue.c_str());
  ipp_t* request = ippNewRequest(operation);
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr, uri);
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr,
               cupsUser());
  return request;
}

std::vector<std::string> texts(ipp_t* answer, const char* name) {
  std::vector<std::string> all;
  ipp_attribute_t* found = ippFindAttribute(answer, name, IPP_TAG_ZERO);
  for (int i = 0; i < ippGetCount(found); ++i) {
    const char* value = ippGetString(found, i, nullptr);
    if (value != nullptr) all.emplace_back(value);
  }
  return all;
}

std::string firstText(ipp_t* answer, const char* name) {
  const std::vector<std::string> all = texts(answer, name);
  return all.empty() ? "" : all[0];
}

SharedQueue queueIn(ipp_t* answer) {
  SharedQueue queue;
  queue.accepting =
      ippGetBoolean(ippFindAttribute(answer, "printer-is-accepting-jobs", IPP_TAG_BOOLEAN), 0) != 0;
  const std::vector<std::string> formats = texts(answer, "document-format-supported");
  queue.takesAppleRaster =
      std::find(formats.begin(), formats.end(), "image/urf") != formats.end() &&
      !texts(answer, "urf-supported").empty();
  queue.readySizes = texts(answer, "media-ready");
  queue.defaultSize = firstText(answer, "media-default");
  queue.announcedName = firstText(answer, "printer-dns-sd-name");
  return queue;
}

Failure refused(const std::string& address, const std::string& queue) {
  return Failure{filled("Queue %s cannot be reached at %s from the network: %s", queue.c_str(),
                        address.c_str(), cupsLastErrorString())};
}

// Sends the question by one address. The socket is closed when nothing could be sent.
void askFrom(const std::string& address, const std::string& question, Descriptor* socketEnd) {
  sockaddr_in own = {};
  own.sin_family = AF_INET;
  inet_pton(AF_INET, address.c_str(), &own.sin_addr);
  sockaddr_in group = {};
  group.sin_family = AF_INET;
  group.sin_port = htons(5353);
  inet_pton(AF_INET, "224.0.0.251", &group.sin_addr);
  socketEnd->reset(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  const int fd = socketEnd->get();
  setsockopt(fd, IPPROTO_IP, IP_MULTICAST_IF, &own.sin_addr, sizeof own.sin_addr);
  const bool sent = bind(fd, reinterpret_cast<sockaddr*>(&own), sizeof own) == 0 &&
                    sendto(fd, question.data(), question.size(), 0,
                           reinterpret_cast<sockaddr*>(&group), sizeof group) != -1;
  if (!sent) socketEnd->reset();
}

}  // namespace

std::vector<std::string> networkAddresses() {
  std::vector<std::string> found;
  ifaddrs* all = nullptr;
  if (getifaddrs(&all) != 0) return found;
  for (const ifaddrs* at = all; at != nullptr; at = at->ifa_next) {
    if (at->ifa_addr == nullptr || at->ifa_addr->sa_family != AF_INET) continue;
    if ((at->ifa_flags & IFF_LOOPBACK) != 0 || (at->ifa_flags & IFF_UP) == 0) continue;
    char text[INET_ADDRSTRLEN];
    const auto* address = reinterpret_cast<const sockaddr_in*>(at->ifa_addr);
    if (inet_ntop(AF_INET, &address->sin_addr, text, sizeof text) != nullptr) {
      found.emplace_back(text);
    }
  }
  freeifaddrs(all);
  return found;
}

Result<SharedQueue> askOverNetwork(const std::string& address, const std::string& queue) {
  const HttpConnection connection = connectTo(address);
  if (connection.get() == nullptr) return refused(address, queue);
  ipp_t* request = newRequest(IPP_OP_GET_PRINTER_ATTRIBUTES, address, queue);
  ipp_t* answer = cupsDoRequest(connection.get(), request, "/");
  const bool good =
      answer != nullptr && ippGetStatusCode(answer) < IPP_STATUS_REDIRECTION_OTHER_SITE;
  const SharedQueue found = good ? queueIn(answer) : SharedQueue();
  ippDelete(answer);
  if (!good) return refused(address, queue);
  return found;
}

Result<int> printOverNetwork(const std::string& address, const std::string& queue,
                             const std::string& file, const std::string& format,
                             const std::string& title) {
  const HttpConnection connection = connectTo(address);
  if (connection.get() == nullptr) return refused(address, queue);
  ipp_t* request = newRequest(IPP_OP_PRINT_JOB, address, queue);
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_NAME, "job-name", nullptr, title.c_str());
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_MIMETYPE, "document-format", nullptr,
               format.c_str());
  const std::string resource = "/printers/" + queue;
  ipp_t* answer = cupsDoFileRequest(connection.get(), request, resource.c_str(), file.c_str());
  const int job = ippGetInteger(ippFindAttribute(answer, "job-id", IPP_TAG_INTEGER), 0);
  ippDelete(answer);
  if (job == 0) return refused(address, queue);
  return job;
}

namespace {

// Asks by every address, and hands each answer to `take` until it returns true.
template <typename Take>
void collect(const std::string& question, int milliseconds, Take take) {
  const std::vector<std::string> addresses = networkAddresses();
  std::vector<Descriptor> sockets(addresses.size());
  std::vector<pollfd> watched;
  for (size_t i = 0; i < addresses.size(); ++i) {
    askFrom(addresses[i], question, &sockets[i]);
    if (sockets[i].isOpen()) watched.push_back({sockets[i].get(), POLLIN, 0});
  }
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (!watched.empty() && poll(watched.data(), watched.size(), millisecondsUntil(end)) > 0) {
    for (const pollfd& one : watched) {
      if (one.revents == 0) continue;
      char bytes[9000];
      const ssize_t count = recv(one.fd, bytes, sizeof bytes, 0);
      if (count > 0 && take(std::string_view(bytes, static_cast<size_t>(count)))) return;
    }
  }
}

}  // namespace

std::vector<ServiceInstance> lookUpServices(const std::string& service, int milliseconds) {
  std::vector<ServiceInstance> found;
  collect(dnssdQuestion(service), milliseconds, [&](std::string_view answer) {
    for (ServiceInstance& one : dnssdInstances(answer, service)) found.push_back(std::move(one));
    return false;
  });
  return found;
}

ServiceInstance lookUpPrinter(const std::string& name, int milliseconds) {
  ServiceInstance found;
  collect(dnssdPrinterQuestion(name), milliseconds, [&](std::string_view answer) {
    found = dnssdPrinter(answer, name);
    return !found.name.empty();
  });
  return found;
}

}  // namespace korvel
