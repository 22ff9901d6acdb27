// What sharing changed on this computer, kept so that it can be taken back exactly.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_SHARING_STATE_H
#define KORVEL_TOOLS_SETUP_SHARING_STATE_H

#include <string>
#include <vector>

#include "tools/common/result.h"
#include "tools/setup/server_config.h"

namespace korvel {

// A queue as it was before it was shared, or before it was hidden.
struct QueueRecord {
  std::string name;
  bool wasShared = false;
  std::string info, location;
  std::vector<std::string> readySizes;  // that it added
  bool hidden = false;                  // not one that the user shared: kept from being shared too
  std::string uri = {};                 // of its device; empty: stays as it is
  bool operator==(const QueueRecord&) const = default;
};

struct SharingState {
  std::vector<QueueRecord> queues;
  std::vector<LineEdit> edits;         // of cupsd.conf
  std::vector<std::string> readyBase;  // ReadyPaperSizes without our queues
  bool startedAvahi = false;

  QueueRecord* find(const std::string& queue);  // null when there is none
  bool sharesAny() const;                       // besides hidden queues
  // Adds a change; one of a line that was changed before continues the older one.
  void add(const std::vector<LineEdit>& more);
};

// The file's text, one fact per line. Unknown lines are ignored.
std::string writeState(const SharingState& state);
SharingState readState(const std::string& text);

// In `folder`, which is made when it is missing. An empty state has no file.
SharingState loadState(const std::string& folder);
Result<void> saveState(const std::string& folder, const SharingState& state);

}  // namespace korvel

#endif
