// The result of --check for one queue, and all results as JSON.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_EXAMINATION_H
#define KORVEL_TOOLS_SETUP_EXAMINATION_H

#include <string>
#include <vector>

#include "tools/setup/queue_doctor.h"

namespace korvel {

struct Examination {
  std::string queue;
  std::string makeAndModel;
  std::vector<Finding> findings;
};

// Without problems; there may be advice.
bool isWell(const Examination& examination);

// {"queues": [{"queue": "labels", "driver": "Korvel K220 203 dpi, 1.0", "good": false,
//   "findings": [{"kind": "problem", "text": "..."}]}]}, where a kind is "problem" or "advice".
std::string asJson(const std::vector<Examination>& examinations);

}  // namespace korvel

#endif
