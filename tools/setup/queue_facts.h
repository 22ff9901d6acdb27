// Gathers what the doctor looks at: from the print system, from this machine's folders, and from
// the printer itself when its line is free.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_QUEUE_FACTS_H
#define KORVEL_TOOLS_SETUP_QUEUE_FACTS_H

#include <string>

#include "tools/setup/queue_doctor.h"

namespace korvel {

// The folder of the spooler's programs: CUPS_SERVERBIN, or the one that the filter went to.
std::string filterPath();

// `queue` is there; the dumps are looked for in `dumpFolder`.
QueueFacts gatherFacts(const PrintSystem& system, const Queue& queue,
                       const std::string& dumpFolder);

// Asks a printer at socket://HOST[:PORT] or korvel://HOST[:PORT] for its state, and waits a little
// for the answer. Nothing is asked at other addresses.
PrinterAnswer askPrinter(const std::string& uri);

}  // namespace korvel

#endif
