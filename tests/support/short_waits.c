// Preloaded into the spooler's programs by tests of many jobs: a second of waiting takes 20 ms.
// SPDX-License-Identifier: Apache-2.0
#include <time.h>

unsigned int sleep(unsigned int seconds) {
  const long nanoseconds = 20000000L * (long)seconds;
  const struct timespec wait = {nanoseconds / 1000000000L, nanoseconds % 1000000000L};
  nanosleep(&wait, NULL);
  return 0;
}
