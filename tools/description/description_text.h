// A PPD as text: single keywords, comparison, and reading it with the spooler's library, which
// accepts files only.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_DESCRIPTION_DESCRIPTION_TEXT_H
#define KORVEL_TOOLS_DESCRIPTION_DESCRIPTION_TEXT_H

#include <cups/ppd.h>

#include <memory>
#include <string>

namespace korvel {

// The value of a keyword, without its quotes; empty when it is missing.
std::string keyword(const std::string& description, const std::string& name);

// Whether two PPDs differ in nothing but the queue's own defaults.
bool sameDescription(const std::string& one, const std::string& other);

// Whether a PPD is for a printer with a cutter.
bool hasCutter(const std::string& description);

// Whether a PPD is for a stencil printer, which takes single sheets. The others have none.
bool takesSingleSheets(const std::string& description);

struct PpdCloser {
  void operator()(ppd_file_t* ppd) const { ppdClose(ppd); }
};
using Ppd = std::unique_ptr<ppd_file_t, PpdCloser>;

// Null when the text is not a PPD.
Ppd openDescription(const std::string& description);

}  // namespace korvel

#endif
