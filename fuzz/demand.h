// Conditions that must hold for every input. A violation is reported on the process's own standard
// error and ends the fuzzer.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_FUZZ_DEMAND_H
#define KORVEL_FUZZ_DEMAND_H

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

inline void demand(bool holds, const std::string& sentence) {
  if (holds) return;
  dprintf(STDERR_FILENO, "does not hold: %s\n", sentence.c_str());
  std::abort();
}

inline void demandSame(const std::string& have, const std::string& want, const char* what) {
  if (have == want) return;
  dprintf(STDERR_FILENO, "%s differ\nhave %s\nwant %s\n", what, have.c_str(), want.c_str());
  std::abort();
}

#endif
