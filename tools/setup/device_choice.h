// Chooses the drivers for a device: by what the device says about itself, and by whether its
// connection returns replies.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_DEVICE_CHOICE_H
#define KORVEL_TOOLS_SETUP_DEVICE_CHOICE_H

#include <string>
#include <vector>

#include "tools/setup/print_system.h"

namespace korvel {

enum class Link {
  kTwoWay,   // the spooler's backend returns replies
  kOneWay,   // it does not
  kUnknown,  // not a backend of the spooler itself
};
Link linkOf(const std::string& uri);

// Whether a bare name is that of a one-way driver, and the name of the one-way variant.
bool isOneWay(const std::string& bareName);
std::string oneWayTwin(const std::string& bareName);

// The drivers for the device, those of the reported resolution first: all of them when the device
// is ours but reports no known model, none when it is not ours. On a one-way connection, one-way
// drivers replace those that wait for the printer's status.
std::vector<Description> fitting(const Device& device, const std::vector<Description>& all);

// The driver with a name as in lpinfo -m, a bare name, or a bare name without "korvel-"; null when
// there is none. Points into `all`.
const Description* meant(const std::string& name, const std::vector<Description>& all);

// A queue name for a driver: its model in lower-case letters and digits.
std::string proposedQueueName(const std::string& bareName);

}  // namespace korvel

#endif
