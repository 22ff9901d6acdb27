// Preloaded under the filter by the job tests: the clock stands still, so that file names are
// known.
// SPDX-License-Identifier: Apache-2.0
#include <stddef.h>
#include <time.h>

// 2024-05-07, 09:03:41 in Greenwich.
time_t time(time_t* out) {
  const time_t now = 1715072621;
  if (out != NULL) *out = now;
  return now;
}
