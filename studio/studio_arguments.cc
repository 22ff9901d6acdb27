// Options and their meaning.
// SPDX-License-Identifier: Apache-2.0
#include "studio/studio_arguments.h"

#include <arpa/inet.h>

#include <cstdlib>

#include "tools/common/translation.h"

namespace korvel {
namespace {

constexpr int kHighestPort = 65535;

bool isDigits(const std::string& text) {
  return !text.empty() && text.size() <= 5 &&
         text.find_first_not_of("0123456789") == std::string::npos;
}

bool isAddress(const std::string& text) {
  in6_addr six = {};
  in_addr four = {};
  return inet_pton(AF_INET, text.c_str(), &four) == 1 ||
         inet_pton(AF_INET6, text.c_str(), &six) == 1;
}

}  // namespace

const char* studioUsage() {
  return translated(
      "Usage: korvel-studio [OPTION]...\n"
      "Shows in the browser every dot of a stencil or label, and prints it.\n"
      "\n"
      "  --listen ADDRESS:PORT  where to listen, 127.0.0.1:8631 by default; other\n"
      "                         addresses than this machine's own need a token\n"
      "  --queue NAME           offer this queue only; may be repeated\n"
      "  --name HOST            answer under this host name too; may be repeated\n"
      "  --token-file FILE      read the token from FILE instead of making a new one\n"
      "  --filter FILE          use this rastertokorvel\n"
      "  --help, --version      show this help or the version and exit\n");
}

StudioArguments parseStudioArguments(Arguments* words) {
  StudioArguments parsed;
  while (words->next()) {
    if (words->is("--listen")) {
      if (!splitListen(words->text(), &parsed.address, &parsed.port)) {
        words->wrong(translated("--listen needs an address and a port, such as 0.0.0.0:8631"));
      }
    } else if (words->is("--queue")) {
      parsed.queues.push_back(words->text());
    } else if (words->is("--name")) {
      parsed.names.push_back(words->text());
    } else if (words->is("--token-file")) {
      parsed.tokenFile = words->text();
    } else if (words->is("--filter")) {
      parsed.filter = words->text();
    } else if (words->is("--page")) {
      parsed.page = words->text();
    } else if (words->is("--worker")) {
      parsed.worker = words->text();
    } else {
      words->unknown();
    }
  }
  return parsed;
}

bool splitListen(const std::string& text, std::string* address, int* port) {
  const size_t colon = text.rfind(':');
  if (colon == std::string::npos || !isDigits(text.substr(colon + 1))) return false;
  std::string host = text.substr(0, colon);
  if (host.starts_with('[') && host.ends_with(']')) host = host.substr(1, host.size() - 2);
  if (host == "localhost") host = "127.0.0.1";
  const int number = std::atoi(text.c_str() + colon + 1);
  if (!isAddress(host) || number > kHighestPort) return false;
  *address = host;
  *port = number;
  return true;
}

bool isLoopback(const std::string& address) {
  return address.starts_with("127.") || address == "::1";
}

}  // namespace korvel
