// Preloaded into the filter: the allocation with the number KORVEL_FAILING_ALLOCATION, counted from
// the first one, fails; with KORVEL_FAILING_ON, all later ones fail as well. KORVEL_ALLOCATIONS is
// the path of a file that gets one line per request, with the object that made it.
// SPDX-License-Identifier: Apache-2.0
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

void* __libc_malloc(size_t bytes);
void* __libc_calloc(size_t count, size_t bytes);
void* __libc_realloc(void* old, size_t bytes);

static long requests;
static long refusedNumber = -1;
static int notes = -1;
static int ready;

static void prepare(void) {
  ready = 1;
  const char* number = getenv("KORVEL_FAILING_ALLOCATION");
  if (number != NULL) refusedNumber = atol(number);
  const char* path = getenv("KORVEL_ALLOCATIONS");
  if (path != NULL) notes = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
}

// Looking up the name of an object allocates no memory.
static void note(const void* caller) {
  Dl_info found;
  const char* name = "unknown";
  if (dladdr(caller, &found) != 0 && found.dli_fname != NULL) name = found.dli_fname;
  const char* slash = strrchr(name, '/');
  if (slash != NULL) name = slash + 1;
  char line[256];
  size_t length = strlen(name);
  if (length > sizeof line - 1) length = sizeof line - 1;
  memcpy(line, name, length);
  line[length] = '\n';
  if (write(notes, line, length + 1) == -1) notes = -1;
}

static int refused(const void* caller) {
  if (!ready) prepare();
  ++requests;
  if (notes != -1) note(caller);
  if (requests != refusedNumber) return 0;
  errno = ENOMEM;
  return 1;
}

void* malloc(size_t bytes) {
  return refused(__builtin_return_address(0)) ? NULL : __libc_malloc(bytes);
}

void* calloc(size_t count, size_t bytes) {
  return refused(__builtin_return_address(0)) ? NULL : __libc_calloc(count, bytes);
}

void* realloc(void* old, size_t bytes) {
  return refused(__builtin_return_address(0)) ? NULL : __libc_realloc(old, bytes);
}
