// What is wrong with sharing a queue, and with queues that share a printer. Looks at facts only,
// like the doctor of single queues. SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_SHARING_DOCTOR_H
#define KORVEL_TOOLS_SETUP_SHARING_DOCTOR_H

#include <string>
#include <vector>

#include "tools/setup/print_system.h"
#include "tools/setup/queue_doctor.h"
#include "tools/setup/server_config.h"

namespace korvel {

struct SharingFacts {
  Queue queue;
  std::vector<Queue> others;
  bool wanted = false;       // --share published the queue
  bool knowsConfig = false;  // this user may read it
  SharingConfig config;
  bool avahiRuns = true;
  std::string defaultSize;  // of the driver; a custom one is never offered
  std::string takenSize;    // that a client gets who asks for the default
  bool announced = false;
};

SharingFacts gatherSharingFacts(const PrintSystem& system, const Queue& queue,
                                const std::string& stateFolder);
std::vector<Finding> examineSharing(const SharingFacts& facts);

}  // namespace korvel

#endif
