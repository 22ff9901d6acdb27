// Which printer description fits a device: by what the device tells of itself, and by whether its
// line brings anything back.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_DEVICE_CHOICE_H
#define KORVEL_TOOLS_SETUP_DEVICE_CHOICE_H

#include <string>
#include <vector>

#include "tools/setup/print_system.h"

namespace korvel {

enum class Link {
  kTwoWay,   // the spooler's backend passes answers on
  kOneWay,   // it never does
  kUnknown,  // a backend that is not the spooler's own
};
Link linkOf(const std::string& uri);

// Whether a description's bare name is that of a one-way twin, and the twin's name.
bool isOneWay(const std::string& bareName);
std::string oneWayTwin(const std::string& bareName);

// Those of `all` that fit the device, the resolution that it tells first; all of them when the
// device is one of ours but tells no model we know, none when it is not ours. Where the line
// brings nothing back, one-way twins take the place of models that report their state.
std::vector<Description> fitting(const Device& device, const std::vector<Description>& all);

// The description that a user means by a name of lpinfo -m, a bare name, or a bare name without
// its "korvel-"; null when there is none. Points into `all`.
const Description* meant(const std::string& name, const std::vector<Description>& all);

// A queue's name for a device or a description: small letters and digits of its model.
std::string proposedQueueName(const std::string& bareName);

}  // namespace korvel

#endif
