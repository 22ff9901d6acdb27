// The lines of cupsd.conf that decide whether the local network can print, changed line by line:
// everything else in the file, comments included, stays as it is.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_SERVER_CONFIG_H
#define KORVEL_TOOLS_SETUP_SERVER_CONFIG_H

#include <string>
#include <vector>

#include "tools/common/result.h"

namespace korvel {

// One changed line, without its newline. An empty `before` is a line that was added, an empty
// `after` one that was removed. `section` is the opening line around it, such as "<Location />".
struct LineEdit {
  std::string section, before, after;
  bool operator==(const LineEdit&) const = default;
};

struct ConfigChange {
  std::string text;  // of the whole file after the change
  std::vector<LineEdit> edits;
};

// What the file says about sharing; comments and case are ignored as cupsd does.
struct SharingConfig {
  bool listens = false;                 // on an address that other computers can reach
  bool admitsNetwork = false;           // <Location /> lets the local network in
  bool browsing = true;                 // publishes shared queues
  bool adminIsLocal = true;             // /admin and below are for this computer only
  bool handWritten = false;             // lines that only an administrator can have written
  std::vector<std::string> readySizes;  // of ReadyPaperSizes; none when there is no such line
  std::string dirtyCleanInterval;       // empty: not set
};
SharingConfig readSharingConfig(const std::string& text);

// The change that opens the server to printing from the local network, offers `readySizes` (all of
// them, in this order), and saves jobs at once. No edits when nothing has to change. Fails when the
// file was written by hand and would have to change in more than the last two.
Result<ConfigChange> planSharing(const std::string& text,
                                 const std::vector<std::string>& readySizes);

// Takes back those of `edits` whose lines are still in the file as they were left.
std::string takeBack(const std::string& text, const std::vector<LineEdit>& edits);

}  // namespace korvel

#endif
