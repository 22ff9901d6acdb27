// Moves the media of a queue's printer without printing: a job of commands that no filter changes.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_MEDIA_FEED_H
#define KORVEL_TOOLS_SETUP_MEDIA_FEED_H

#include "tools/setup/print_system.h"
#include "tools/stream/feed_commands.h"

namespace korvel {

// Sends the commands and waits until the print service has passed them on. Fails when the queue is
// not for media that can be fed or cut, and when the job does not start within ten seconds.
Result<void> feedMedia(const PrintSystem& system, const std::string& queue, Feed feed);

}  // namespace korvel

#endif
