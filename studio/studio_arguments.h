// The command line of korvel-studio.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_STUDIO_ARGUMENTS_H
#define KORVEL_STUDIO_STUDIO_ARGUMENTS_H

#include <string>
#include <vector>

#include "tools/common/arguments.h"

namespace korvel {

struct StudioArguments {
  std::string address = "127.0.0.1";  // IPv4 or IPv6, without brackets
  int port = 8631;                    // 0 picks a free one
  std::vector<std::string> queues;    // empty: all of this driver
  std::vector<std::string> names;     // under which browsers may reach the server
  std::string tokenFile;              // empty: a new token at every start
  std::string filter;                 // empty: the installed one
  std::string page;                   // folder; empty: the installed one
};

extern const Help kStudioHelp;

// Ends the program where --help, --version or a mistake does.
StudioArguments parseStudioArguments(Arguments* arguments);

// Splits "ADDRESS:PORT" or "[ADDRESS]:PORT". False when it is neither.
bool splitListen(const std::string& text, std::string* address, int* port);

bool isLoopback(const std::string& address);

}  // namespace korvel

#endif
