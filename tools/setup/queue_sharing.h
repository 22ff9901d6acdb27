// Shares a queue with tablets and phones of the local network, and takes that back. Every change is
// shown before it is made; what was there before is recorded.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_QUEUE_SHARING_H
#define KORVEL_TOOLS_SETUP_QUEUE_SHARING_H

#include <functional>
#include <string>
#include <vector>

#include "tools/common/result.h"
#include "tools/setup/print_system.h"

namespace korvel {

struct SharingRequest {
  std::string queue;
  std::string info, location;           // empty: keeps the queue's, or makes one up
  std::vector<std::string> readySizes;  // empty: what the driver's default says
  std::string stateFolder = "/var/lib/korvel";
  bool dryRun = false;  // shows what it would change
  // Asked after the changes were shown; null: they are made.
  std::function<bool()> agreed;
};

// Fails without having changed anything, or with a sentence on what does not work yet.
Result<void> shareQueue(const PrintSystem& system, const SharingRequest& request);
Result<void> unshareQueue(const PrintSystem& system, const SharingRequest& request);

// Whether the queue can be reached at a network address, and is announced there.
Result<void> proveSharing(const Queue& queue);

// Prints a test sheet of the queue's default size as Apple raster, over the network.
Result<int> printSharedTestSheet(const PrintSystem& system, const std::string& queue);

// Whether --share published the queue.
bool isSharedByUs(const std::string& stateFolder, const std::string& queue);

// The sizes that a phone should offer: of a label printer the queue's default, which is what it
// holds, of a stencil printer all sheets.
std::vector<std::string> sizesHeld(const std::string& description);

// "4x6,100x150mm" as a list.
std::vector<std::string> parseSizes(const std::string& text);

// cupsd.conf as the server keeps it; a failure when this user may not read it.
Result<std::string> readServerConfig(const PrintSystem& system);

}  // namespace korvel

#endif
