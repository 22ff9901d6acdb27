// Preloaded into the filter: every file that it opens to write, which are the diagnostic ones, is
// on a full disk. Libraries may read files, for example about the processor.
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
  if (mode[0] == 'r') return real(descriptor, mode);
  close(descriptor);
  return real(open("/dev/full", O_RDWR | O_CLOEXEC), mode);
}
