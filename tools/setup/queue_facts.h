// Gathers what the check of a queue needs: from the print service, from the file system, and from
// the printer itself when it is idle.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_QUEUE_FACTS_H
#define KORVEL_TOOLS_SETUP_QUEUE_FACTS_H

#include <string>

#include "tools/setup/queue_doctor.h"

namespace korvel {

// The installed filter, below CUPS_SERVERBIN or the configured folder.
std::string filterPath();

// `queue` exists; `dumpFolder` is where the filter writes its image dumps.
QueueFacts gatherFacts(const PrintSystem& system, const Queue& queue,
                       const std::string& dumpFolder);

}  // namespace korvel

#endif
