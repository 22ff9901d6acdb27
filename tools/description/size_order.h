// The order of a PPD's sizes. A client asks for a size by its measures, and the print server takes
// the first one of the PPD whose sides are less than 5 points (1.76 mm) off, so that 100 x 100 mm
// becomes 4 x 4 in when that size comes first.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_DESCRIPTION_SIZE_ORDER_H
#define KORVEL_TOOLS_DESCRIPTION_SIZE_ORDER_H

#include <string>
#include <vector>

namespace korvel {

// The names of the sizes in the order of the PPD.
std::vector<std::string> sizeNames(const std::string& description);

// The size that a client gets who asks for the measures of `size`; `size` itself when the PPD does
// not have it.
std::string sizeTakenFor(const std::string& description, const std::string& size);

// The same PPD with the sizes in `order` first; the others follow in the order that they have.
std::string withSizesFirst(const std::string& description, const std::vector<std::string>& order);

}  // namespace korvel

#endif
