// One function per finding, in the order in which a client meets them.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/sharing_doctor.h"

#include <strings.h>
#include <unistd.h>

#include <algorithm>

#include "tools/common/translation.h"
#include "tools/description/description_text.h"
#include "tools/description/size_order.h"
#include "tools/setup/network_proof.h"
#include "tools/setup/preset.h"
#include "tools/setup/queue_sharing.h"

namespace korvel {

namespace {

constexpr char kAvahiSocket[] = "/run/avahi-daemon/socket";
constexpr int kLookUpMilliseconds = 1000;

using Findings = std::vector<Finding>;

const char* nameOf(const SharingFacts& facts) { return facts.queue.name.c_str(); }

void lookAtDevice(const SharingFacts& facts, Findings* found) {
  const std::string& uri = facts.queue.uri;
  for (const Queue& other : facts.others) {
    if (uri.empty() || deviceOf(other.uri) != deviceOf(uri)) continue;
    if (uri.starts_with("usb:")) {
      found->push_back(
          {false, filled("Queues %s and %s use the same USB printer; a job waits while "
                         "the other queue prints.",
                         nameOf(facts), other.name.c_str())});
    } else if (uri.starts_with("socket:")) {
      found->push_back(
          {true, filled("Queues %s and %s send to the same printer without waiting for each other. "
                        "Let this one wait: lpadmin -p %s -v %s",
                        nameOf(facts), other.name.c_str(), nameOf(facts),
                        addressWithTurns(uri).c_str())});
    }
  }
}

void lookAtServer(const SharingFacts& facts, Findings* found) {
  if (!facts.knowsConfig) return;
  const SharingConfig& config = facts.config;
  if (!config.listens || !config.admitsNetwork || !config.browsing || !facts.queue.shared) {
    found->push_back({true, filled("Queue %s was shared, but the print server or the queue no "
                                   "longer lets the network print: korvel-setup --share %s",
                                   nameOf(facts), nameOf(facts))});
  }
  if (!config.adminIsLocal) {
    found->push_back({true, translated("The print server can be administered from the network; "
                                       "remove Allow from <Location /admin> in cupsd.conf.")});
  }
}

void lookAtSize(const SharingFacts& facts, Findings* found) {
  if (!facts.knowsConfig) return;
  const auto& ready = facts.config.readySizes;
  const auto same = [&facts](const std::string& one) {
    return strcasecmp(one.c_str(), facts.defaultSize.c_str()) == 0;
  };
  if (facts.takenSize != facts.defaultSize) {
    found->push_back({true, filled("Tablets and phones that ask for the size %s of queue %s get "
                                   "%s: korvel-setup --share %s",
                                   facts.defaultSize.c_str(), nameOf(facts),
                                   facts.takenSize.c_str(), nameOf(facts))});
  }
  if (std::any_of(ready.begin(), ready.end(), same)) return;
  found->push_back({true, filled("Tablets and phones are not offered the size %s of queue %s: "
                                 "korvel-setup --share %s",
                                 facts.defaultSize.c_str(), nameOf(facts), nameOf(facts))});
}

void lookAtAnnouncement(const SharingFacts& facts, Findings* found) {
  if (!facts.avahiRuns) {
    found->push_back({true, filled("Queue %s is shared, but not announced; install and start "
                                   "avahi-daemon.",
                                   nameOf(facts))});
  } else if (!facts.announced) {
    found->push_back({true, filled("Queue %s is shared, but not announced on the network; let the "
                                   "firewall pass TCP port 631 and UDP port 5353.",
                                   nameOf(facts))});
  }
}

void lookAtNames(const SharingFacts& facts, Findings* found) {
  for (const Queue& other : facts.others) {
    if (!other.shared || other.info != facts.queue.info) continue;
    found->push_back({true, filled("Queues %s and %s have the same name on tablets and phones; "
                                   "give this one another: lpadmin -p %s -D TEXT",
                                   nameOf(facts), other.name.c_str(), nameOf(facts))});
  }
}

}  // namespace

SharingFacts gatherSharingFacts(const PrintSystem& system, const Queue& queue,
                                const std::string& stateFolder) {
  SharingFacts facts;
  facts.queue = queue;
  for (const Queue& other : system.queues()) {
    if (other.name != queue.name) facts.others.push_back(other);
  }
  facts.wanted = isSharedByUs(stateFolder, queue.name);
  if (!facts.wanted || !system.isThisMachine()) return facts;
  const Result<std::string> config = readServerConfig(system);
  facts.knowsConfig = config.ok();
  if (config) facts.config = readSharingConfig(config.value());
  facts.avahiRuns = access(kAvahiSocket, F_OK) == 0;
  const std::string description = system.queueDescription(queue.name);
  facts.defaultSize = keyword(description, "DefaultPageSize");
  facts.takenSize = sizeTakenFor(description, facts.defaultSize);
  const std::vector<std::string> addresses = networkAddresses();
  if (addresses.empty()) return facts;
  const Result<SharedQueue> shared = askOverNetwork(addresses[0], queue.name);
  if (shared && !shared.value().announcedName.empty()) {
    facts.announced =
        !lookUpPrinter(shared.value().announcedName, kLookUpMilliseconds).name.empty();
  }
  return facts;
}

Findings examineSharing(const SharingFacts& facts) {
  Findings found;
  lookAtDevice(facts, &found);
  if (!facts.wanted) return found;
  lookAtServer(facts, &found);
  lookAtSize(facts, &found);
  lookAtAnnouncement(facts, &found);
  lookAtNames(facts, &found);
  return found;
}

}  // namespace korvel
