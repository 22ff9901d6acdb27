// Runs one step of a preview as a child process that can be stopped from another thread.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_WORKER_PROCESS_H
#define KORVEL_STUDIO_WORKER_PROCESS_H

#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tools/common/process.h"
#include "tools/common/result.h"

namespace korvel {

// One rendering, which a newer one may stop at any time, from any thread.
class Ticket {
 public:
  void cancel();
  bool isCancelled() const;

 private:
  friend class RunningWorker;
  mutable std::mutex mutex_;
  bool cancelled_ = false;
  Child worker_;  // leads the group of the processes at work
};

// Starts `program` with the step's arguments and waits. Returns its answer, or its sentence;
// kSuperseded when the ticket was cancelled, kTooSlow when the time is over. No process of it
// outlives the call.
Result<nlohmann::json> runWorker(const std::string& program,
                                 const std::vector<std::string>& arguments, Ticket* ticket);

}  // namespace korvel

#endif
