// The print system as the studio uses it: queues of this driver, their state, jobs. Nothing is kept
// here but printer descriptions that have not changed; the print system is asked every time.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_PRINT_QUEUES_H
#define KORVEL_STUDIO_PRINT_QUEUES_H

#include <ctime>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "studio/queue_options.h"
#include "tools/common/result.h"

namespace korvel {

struct QueueState {
  std::string name;
  std::string info;      // for people
  std::string location;  // for people
  std::string model;
  std::string state;                 // "idle", "printing", "stopped"
  std::vector<std::string> reasons;  // "media-empty-warning" and the like, without "none"
  std::string message;
  bool accepting = true;
};

struct JobState {
  int number = 0;
  std::string queue;
  std::string title;
  std::string user;
  std::string state;  // "waiting", "held", "printing", "stopped", "canceled", "aborted", "done"
  std::string message;
  int sheets = 0;  // that have been printed

  bool hasEnded() const { return state == "canceled" || state == "aborted" || state == "done"; }
};

// A queue's driver, and the copy of its description that previews use: of a model that is not asked
// for its status. Previews compare `version` to see whether the description has changed.
struct Queue {
  std::string name;
  std::shared_ptr<const QueueDriver> driver;
  std::string ppd;  // path
  std::string version;
};

struct PrintJob {
  std::string queue;
  std::string title;
  Choices choices;
  std::string raster;  // path; one page
  int copies = 1;
};

class PrintQueues {
 public:
  // `offered` limits the queues by name; empty offers all of this driver. Copies of descriptions go
  // to `folder`.
  PrintQueues(const std::vector<std::string>& offered, const std::string& folder);

  Result<std::vector<QueueState>> list();
  Result<QueueState> state(const std::string& name);
  Result<Queue> queue(const std::string& name);

  // Returns the job's number.
  Result<int> print(const PrintJob& job);
  // Sends commands that no filter changes; returns the job's number.
  Result<int> sendCommands(const std::string& queue, const std::string& title,
                           const std::string& commands);
  Result<JobState> job(int number);
  Result<void> cancel(int number);  // one of our own

 private:
  struct Known {
    time_t modified = 0;
    Queue queue;
  };
  Result<Queue> keep(const std::string& name, const std::string& path, time_t modified);

  std::vector<std::string> offered_;
  std::string folder_;
  std::mutex mutex_;
  std::map<std::string, Known> known_;
  int fileNumber_ = 0;
};

// The user in whose name jobs are sent.
std::string ownUser();

}  // namespace korvel

#endif
