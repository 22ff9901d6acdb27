// Looks at a shared queue as a phone does: over the network's own address, and by its announcement.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_NETWORK_PROOF_H
#define KORVEL_TOOLS_SETUP_NETWORK_PROOF_H

#include <string>
#include <vector>

#include "tools/common/result.h"
#include "tools/setup/dnssd_message.h"

namespace korvel {

// The IPv4 addresses by which other computers reach this one, the loopback left out.
std::vector<std::string> networkAddresses();

// What the print server says about a queue to a client at a network address.
struct SharedQueue {
  bool accepting = false;
  bool takesAppleRaster = false;
  std::string defaultSize;  // "na_index-4x6_4x6in"
  std::vector<std::string> readySizes;
  std::string announcedName;  // "Labels @ shop"; empty when nothing is announced
};

Result<SharedQueue> askOverNetwork(const std::string& address, const std::string& queue);

// Prints a file over the network as a phone does. Returns the job's number.
Result<int> printOverNetwork(const std::string& address, const std::string& queue,
                             const std::string& file, const std::string& format,
                             const std::string& title);

// Sends the question by every address of this computer, and collects answers for so long.
std::vector<ServiceInstance> lookUpServices(const std::string& service, int milliseconds);

// The announcement of one IPP printer; its name is empty when nothing answered.
ServiceInstance lookUpPrinter(const std::string& name, int milliseconds);

}  // namespace korvel

#endif
