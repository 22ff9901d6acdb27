// The vector operations of every target that this machine runs, and the choice of a target.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstring>

#include "lanes/target.h"
#include "tests/filter/lanes/lane_checks.h"

#define KORVEL_DECLARE(enumerator, name) \
  namespace name {                       \
  extern const LaneChecks kLaneChecks;   \
  }
KORVEL_EACH_TARGET(KORVEL_DECLARE)
#undef KORVEL_DECLARE

namespace {

const LaneChecks& checksOf(Target target) {
  switch (target) {
#define KORVEL_FIND(enumerator, name) \
  case Target::enumerator:            \
    return name::kLaneChecks;
    KORVEL_EACH_TARGET(KORVEL_FIND)
#undef KORVEL_FIND
    default:
      return portable::kLaneChecks;
  }
}

TEST(Lanes, EveryOperationIsRightInEveryLaneOnEveryTarget) {
  for (const Target target : availableTargets()) {
    const LaneChecks& checks = checksOf(target);
    for (int i = 0; i < checks.count; ++i) {
      EXPECT_TRUE(checks.first[i].holds()) << nameOf(target) << ": " << checks.first[i].operation;
    }
  }
}

TEST(Lanes, ThePortableTargetIsThereOnEveryMachine) {
  ASSERT_FALSE(availableTargets().empty());
  EXPECT_EQ(availableTargets().front(), Target::kPortable);
}

TEST(Lanes, TargetsHaveTheNamesThatTheEnvironmentUses) {
  EXPECT_STREQ(nameOf(Target::kPortable), "portable");
  EXPECT_STREQ(nameOf(Target::kSse2), "sse2");
  EXPECT_STREQ(nameOf(Target::kNeon), "neon");
  EXPECT_STREQ(nameOf(Target::kAvx2), "avx2");
}

}  // namespace
