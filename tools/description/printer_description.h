// A printer description (PPD) as a preview needs it: a copy of our own, the choices checked, and
// what they say about the printer.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_DESCRIPTION_PRINTER_DESCRIPTION_H
#define KORVEL_TOOLS_DESCRIPTION_PRINTER_DESCRIPTION_H

#include <cups/ppd.h>

#include <memory>
#include <string>

#include "tools/stream/printer_body.h"

namespace korvel {

// The queue's description, copied to `target`, and those of its defaults that the description
// knows, as an option text. Returns an empty text, or one sentence.
std::string fetchQueue(const std::string& queue, const std::string& target, std::string* defaults);

// Copies a description to `target`. With `oneWay` the model becomes its one-way twin, which prints
// the same dots and is not asked for its state. Returns an empty text, or one sentence.
std::string copyDescription(const std::string& path, const std::string& target, bool oneWay);

class PrinterDescription {
 public:
  // Returns an empty text, or one sentence. `shownAs` names the file in it.
  std::string open(const std::string& path, const std::string& shownAs);

  // Marks the job's options. Returns an empty text, or one sentence on the first that the printer
  // does not offer and no filter of the spooler knows.
  std::string mark(const std::string& options);

  // After mark().
  std::string name() const;  // of the printer, without the version
  unsigned dpi() const;      // 0 when it is not told
  Media media() const;
  std::string choice(const std::string& option) const;  // empty without such an option

 private:
  struct Closer {
    void operator()(ppd_file_t* ppd) const { ppdClose(ppd); }
  };
  std::string check(const std::string& name, const std::string& value) const;

  std::unique_ptr<ppd_file_t, Closer> ppd_;
};

}  // namespace korvel

#endif
