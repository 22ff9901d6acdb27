// Checks of the vector operations, compiled for every target.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_LANES_LANE_CHECKS_H
#define KORVEL_TESTS_LANES_LANE_CHECKS_H

// Name of an operation and whether every lane was right for every input tried.
struct LaneCheck {
  const char* operation;
  bool (*holds)();
};

struct LaneChecks {
  const LaneCheck* first;
  int count;
};

#endif
