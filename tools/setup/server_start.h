// When the print server on this computer was started: what was printing before is printed again.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_SERVER_START_H
#define KORVEL_TOOLS_SETUP_SERVER_START_H

#include <cstdint>

#include "tools/setup/print_system.h"

namespace korvel {

// In seconds since 1970; 0 when it is not known.
int64_t printServerStart();

// The job that was printing when the server stopped: it was accepted before the server's start, and
// is the first one that was printed after it. 0 without one, and a day later. `jobs` are all jobs
// of a queue.
int interruptedJob(const std::vector<Job>& jobs, int64_t serverStart);

}  // namespace korvel

#endif
