// Which job was printing when the print server stopped.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/server_start.h"

#include <cups/ipp.h>
#include <gtest/gtest.h>

namespace {

constexpr int kDone = IPP_JSTATE_COMPLETED;

// The server was started at 1000 and is asked at 2000.
korvel::Job job(int number, int state, int created, int begun, int now = 2000) {
  korvel::Job made;
  made.number = number;
  made.state = state;
  made.created = created;
  made.begun = begun;
  made.now = now;
  return made;
}

struct Case {
  const char* description;
  std::vector<korvel::Job> jobs;
  int want;
};

const Case kCases[] = {
    {"no job", {}, 0},
    {"printed before", {job(1, kDone, 900, 910)}, 0},
    {"accepted after", {job(1, kDone, 1000, 1001)}, 0},
    {"printed again", {job(1, kDone, 990, 1000)}, 1},
    {"is being printed again", {job(1, IPP_JSTATE_PROCESSING, 990, 1003)}, 1},
    {"those behind it waited",
     {job(1, kDone, 990, 1001), job(2, kDone, 991, 1003), job(3, kDone, 992, 1005)},
     1},
    {"cancelled", {job(1, IPP_JSTATE_CANCELED, 990, 1001)}, 0},
    {"held, and released later", {job(1, kDone, 990, 1500)}, 0},
    {"two days ago", {job(1, kDone, 990, 1001, 174000)}, 0},
};

TEST(ServerStart, TellsTheJobThatWasInterrupted) {
  for (const Case& one : kCases) {
    EXPECT_EQ(korvel::interruptedJob(one.jobs, 1000), one.want) << one.description;
  }
  EXPECT_EQ(korvel::interruptedJob({job(1, kDone, 990, 1001)}, 0), 0);  // nothing is known
}

}  // namespace
