// The names of our drivers: "korvel-k220-203" is the bare name of a PPD, "k220-203" what users
// type. SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_DESCRIPTION_DRIVER_NAMES_H
#define KORVEL_TOOLS_DESCRIPTION_DRIVER_NAMES_H

#include <string>
#include <vector>

namespace korvel {

// How the make and model of each of our drivers begins.
inline constexpr char kMake[] = "Korvel ";

// Without "korvel-".
std::string shortDriverName(const std::string& bareName);

// Whether a user who typed that name, with "korvel-" or without, means this driver.
bool meansDriver(const std::string& typed, const std::string& bareName);

// Short names of those drivers that a mistyped name may have been meant to be, as in
// nearestNames().
std::vector<std::string> nearestDrivers(const std::string& typed,
                                        const std::vector<std::string>& bareNames);

}  // namespace korvel

#endif
