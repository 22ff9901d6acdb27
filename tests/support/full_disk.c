// Preloaded into the filter: every diagnostic file that it opens is on a full disk.
// SPDX-License-Identifier: Apache-2.0
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

typedef FILE* (*Fdopen)(int descriptor, const char* mode);

FILE* fdopen(int descriptor, const char* mode) {
  Fdopen real = NULL;
  *(void**)&real = dlsym(RTLD_NEXT, "fdopen");
  close(descriptor);
  return real(open("/dev/full", O_RDWR | O_CLOEXEC), mode);
}
