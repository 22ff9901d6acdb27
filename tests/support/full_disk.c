// Preloaded under the filter: every file that it opens for its own notes lies on a full disk.
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
