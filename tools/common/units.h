// Lengths of a page. SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_UNITS_H
#define KORVEL_TOOLS_COMMON_UNITS_H

namespace korvel {

inline constexpr double kPointsPerInch = 72;
inline constexpr double kMmPerInch = 25.4;
inline constexpr double kPointsPerMm = kPointsPerInch / kMmPerInch;

}  // namespace korvel

#endif
