// A PPD as a preview needs it: a copy of our own, with checked choices, and what it says about the
// printer.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_DESCRIPTION_PRINTER_DESCRIPTION_H
#define KORVEL_TOOLS_DESCRIPTION_PRINTER_DESCRIPTION_H

#include <string>

#include "tools/common/result.h"
#include "tools/description/description_text.h"
#include "tools/stream/printer_model.h"

namespace korvel {

// Copies the PPD of a queue to `target`. Returns the queue's defaults for the PPD's options, as an
// option text.
Result<std::string> fetchQueue(const std::string& queue, const std::string& target);

// Copies a PPD to `target`. With `oneWay` the model becomes its one-way variant, which prints the
// same dots but is not asked for its status.
Result<void> copyDescription(const std::string& path, const std::string& target, bool oneWay);

struct DotSize {
  int width = 0;
  int height = 0;
  bool operator==(const DotSize&) const = default;
};

class PrinterDescription {
 public:
  // The failure calls the file `shownAs`.
  Result<void> open(const std::string& path, const std::string& shownAs);

  // Marks the job's options; fails when one of them is not valid.
  Result<void> mark(const std::string& options);

  // After mark().
  std::string name() const;  // of the printer, without the version
  unsigned dpi() const;      // 0: unknown
  Media media() const;
  DotSize printableDots() const;  // of the marked page size, fractions cut off
  // Of the marked page size: the label, all of which is printable, or the whole stencil sheet.
  DotSize paperDots() const;
  std::string choice(const std::string& option) const;  // empty without such an option

 private:
  Ppd ppd_;
};

}  // namespace korvel

#endif
