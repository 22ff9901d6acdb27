// Every finding about sharing, and the facts that are fine.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/sharing_doctor.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using korvel::SharingFacts;

SharingFacts wellShared() {
  SharingFacts facts;
  facts.queue.name = "labels";
  facts.queue.uri = "korvel://192.0.2.7";
  facts.queue.info = "Labels";
  facts.queue.shared = true;
  facts.others.resize(1);
  facts.others[0].name = "mirrored";
  facts.others[0].uri = "korvel://192.0.2.7:9100";
  facts.others[0].info = "Mirrored";
  facts.others[0].shared = true;
  facts.wanted = facts.knowsConfig = facts.announced = true;
  facts.config = {true, true, true, true, false, {"A4", "4x6"}, "0"};
  facts.defaultSize = facts.takenSize = "4x6";
  return facts;
}

struct Case {
  const char* description;
  std::function<void(SharingFacts*)> change;
  bool fault;
  const char* begins;  // of the only finding; null: there is none
};

const Case kCases[] = {
    {"all well", [](SharingFacts*) {}, false, nullptr},
    {"not shared: nothing of the server matters",
     [](SharingFacts* facts) {
       facts->wanted = facts->queue.shared = false;
       facts->config = {};
       facts->avahiRuns = facts->announced = false;
     },
     false, nullptr},
    {"the server is closed", [](SharingFacts* facts) { facts->config.listens = false; }, true,
     "Queue labels was shared, but the print server or the queue no longer lets"},
    {"the network is kept out", [](SharingFacts* facts) { facts->config.admitsNetwork = false; },
     true, "Queue labels was shared, but the print server or the queue no longer lets"},
    {"the queue is not published", [](SharingFacts* facts) { facts->queue.shared = false; }, true,
     "Queue labels was shared, but the print server or the queue no longer lets"},
    {"administration from the network",
     [](SharingFacts* facts) { facts->config.adminIsLocal = false; }, true,
     "The print server can be administered from the network"},
    {"another size", [](SharingFacts* facts) { facts->defaultSize = facts->takenSize = "2x2"; },
     true, "Tablets and phones are not offered the size 2x2 of queue labels"},
    {"a size that becomes another one", [](SharingFacts* facts) { facts->takenSize = "100x150mm"; },
     true, "Tablets and phones that ask for the size 4x6 of queue labels get 100x150mm"},
    {"no responder", [](SharingFacts* facts) { facts->avahiRuns = false; }, true,
     "Queue labels is shared, but not announced; install and start avahi-daemon."},
    {"not announced", [](SharingFacts* facts) { facts->announced = false; }, true,
     "Queue labels is shared, but not announced on the network"},
    {"two of one name", [](SharingFacts* facts) { facts->others[0].info = "Labels"; }, true,
     "Queues labels and mirrored have the same name"},
    {"no turns", [](SharingFacts* facts) { facts->queue.uri = "socket://192.0.2.7"; }, true,
     "Queues labels and mirrored send to the same printer without waiting"},
    {"one USB printer",
     [](SharingFacts* facts) {
       facts->queue.uri = facts->others[0].uri = "usb://Korvel/M6?serial=1";
     },
     false, "Queues labels and mirrored use the same USB printer"},
};

TEST(SharingDoctor, FindsOneThingAtATime) {
  for (const Case& one : kCases) {
    SCOPED_TRACE(one.description);
    SharingFacts facts = wellShared();
    one.change(&facts);
    const auto found = korvel::examineSharing(facts);
    ASSERT_EQ(found.size(), one.begins == nullptr ? 0u : 1u);
    if (one.begins == nullptr) continue;
    EXPECT_EQ(found[0].fault, one.fault);
    EXPECT_EQ(found[0].text.find(one.begins), 0u) << found[0].text;
  }
}

}  // namespace
