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

const Help kStudioHelp = {
    later("Usage: korvel-studio [OPTION]..."),
    later("Shows every dot of a stencil or label in the browser, and prints it."),
    {later("--listen ADDRESS:PORT\tWhere to listen (127.0.0.1:8631). Other addresses than this "
           "computer's own require a token."),
     later("--queue QUEUE\tOffer only this queue; may be repeated."),
     later("--name HOST\tAlso answer under this host name; may be repeated."),
     later("--token-file FILE\tRead the token from this file."),
     later("--filter PATH\tUse this filter instead of the installed one."),
     later("--page DIR\tServe the page from this folder instead of the installed one.")},
    nullptr,
    {},
    later("Exit status: 0 after a signal ended it, 1 it cannot be started, 2 wrong usage.")};

StudioArguments parseStudioArguments(Arguments* arguments) {
  StudioArguments parsed;
  while (arguments->next()) {
    if (arguments->is("--listen")) {
      if (!splitListen(arguments->nonEmptyValue(), &parsed.address, &parsed.port)) {
        arguments->wrong(translated("--listen needs an address and a port, such as 0.0.0.0:8631"));
      }
    } else if (arguments->is("--queue")) {
      parsed.queues.push_back(arguments->nonEmptyValue());
    } else if (arguments->is("--name")) {
      parsed.names.push_back(arguments->nonEmptyValue());
    } else if (arguments->is("--token-file")) {
      parsed.tokenFile = arguments->nonEmptyValue();
    } else if (arguments->is("--filter")) {
      parsed.filter = arguments->nonEmptyValue();
    } else if (arguments->is("--page")) {
      parsed.page = arguments->nonEmptyValue();
    } else {
      arguments->unknown();
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
