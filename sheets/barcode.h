// Bars that a scanner reads: Code 128, character set B (ISO/IEC 15417).
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_SHEETS_BARCODE_H_
#define KORVEL_SHEETS_BARCODE_H_

#include <string>

namespace korvel {

// Modules from left to right, '#' a bar and '.' a space, without quiet zones. Characters from the
// blank to '~' only.
std::string code128(const std::string& text);

}  // namespace korvel

#endif
