// Preloaded into the spooler's programs by tests of many jobs: a second of waiting takes 20 ms, and
// one in which more of a printer's answer may arrive takes 50 ms.
// SPDX-License-Identifier: Apache-2.0
#define _GNU_SOURCE
#include <dlfcn.h>
#include <sys/select.h>
#include <time.h>

unsigned int sleep(unsigned int seconds) {
  const long nanoseconds = 20000000L * (long)seconds;
  const struct timespec wait = {nanoseconds / 1000000000L, nanoseconds % 1000000000L};
  nanosleep(&wait, NULL);
  return 0;
}

// The back channel waits with it.
int select(int count, fd_set* in, fd_set* out, fd_set* other, struct timeval* wait) {
  typedef int (*Select)(int, fd_set*, fd_set*, fd_set*, struct timeval*);
  Select real = NULL;
  // The header gives the function this other name where `long` has 32 bits and times have 64.
  *(void**)&real = dlsym(RTLD_NEXT, sizeof(time_t) > sizeof(long) ? "__select64" : "select");
  struct timeval shorter = {0, 50000};
  const int second = wait != NULL && wait->tv_sec == 1 && wait->tv_usec == 0;
  return real(count, in, out, other, second ? &shorter : wait);
}
