// Host, Origin, Sec-Fetch-Site, token, in this order.
// SPDX-License-Identifier: Apache-2.0
#include "studio/gatekeeper.h"

#include <arpa/inet.h>
#include <sys/random.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <string_view>

namespace korvel {
namespace {

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// The name in a Host header, without port and brackets.
std::string bareHost(const std::string& header) {
  if (header.starts_with('[')) {
    const size_t end = header.find(']');
    return end == std::string::npos ? "" : header.substr(1, end - 1);
  }
  std::string host = lower(header.substr(0, header.find(':')));
  if (host.ends_with('.')) host.pop_back();
  return host;
}

bool isNumeric(const std::string& host) {
  in_addr four = {};
  in6_addr six = {};
  return inet_pton(AF_INET, host.c_str(), &four) == 1 ||
         inet_pton(AF_INET6, host.c_str(), &six) == 1;
}

// Takes as long for a wrong text as for the right one.
bool sameSecret(std::string_view one, std::string_view other) {
  unsigned difference = one.size() == other.size() ? 0 : 1;
  for (size_t i = 0; i < one.size() && i < other.size(); ++i) {
    difference |= static_cast<unsigned>(one[i] ^ other[i]);
  }
  return difference == 0;
}

std::string cookieValue(const std::string& cookies, const std::string& name) {
  for (size_t at = 0; at < cookies.size();) {
    const size_t end = std::min(cookies.find(';', at), cookies.size());
    std::string cookie = cookies.substr(at, end - at);
    cookie.erase(0, cookie.find_first_not_of(' '));
    if (cookie.starts_with(name + "=")) return cookie.substr(name.size() + 1);
    at = end + 1;
  }
  return "";
}

bool changesSomething(const std::string& method) { return method != "GET" && method != "HEAD"; }

}  // namespace

Gatekeeper::Gatekeeper(bool loopback, const std::set<std::string>& names, const std::string& token)
    : loopback_(loopback), token_(token) {
  for (const std::string& name : names) names_.insert(lower(name));
  names_.insert({"localhost", "127.0.0.1", "::1"});
}

const Sentence* Gatekeeper::refusal(const Visit& visit) const {
  if (!knowsHost(bareHost(visit.host))) return &kWrongHost;
  const bool isApi = visit.path.starts_with("/api");
  if ((isApi || changesSomething(visit.method)) && isFromOtherSite(visit)) return &kCrossSite;
  if (isApi && !hasToken(visit)) return &kNoToken;
  return nullptr;
}

// Numbers cannot be made to point elsewhere, so beyond this machine every number is good.
bool Gatekeeper::knowsHost(const std::string& host) const {
  return names_.contains(host) || (!loopback_ && isNumeric(host));
}

// Browsers state the origin of every request that changes something. A request with neither header
// comes from a program, which nobody else's page can start.
bool Gatekeeper::isFromOtherSite(const Visit& visit) const {
  if (!visit.origin.empty() && visit.origin != "http://" + visit.host &&
      visit.origin != "https://" + visit.host) {
    return true;
  }
  if (!visit.fetchSite.empty() && visit.fetchSite != "same-origin" && visit.fetchSite != "none") {
    return true;
  }
  const bool isBrowser = !visit.origin.empty() || !visit.fetchSite.empty();
  return isBrowser && changesSomething(visit.method) && !visit.hasOwnHeader;
}

bool Gatekeeper::hasToken(const Visit& visit) const {
  if (token_.empty()) return true;
  constexpr std::string_view kBearer = "Bearer ";
  if (visit.authorization.starts_with(kBearer) &&
      isToken(visit.authorization.substr(kBearer.size()))) {
    return true;
  }
  return isToken(cookieValue(visit.cookie, kTokenCookie));
}

bool Gatekeeper::isToken(const std::string& text) const {
  return !token_.empty() && sameSecret(text, token_);
}

std::string unguessableName() {
  std::array<unsigned char, 16> bytes = {};
  if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) std::abort();
  std::string name;
  for (const unsigned char byte : bytes) {
    name += "0123456789abcdef"[byte >> 4];
    name += "0123456789abcdef"[byte & 15];
  }
  return name;
}

}  // namespace korvel
