// Preloaded under the filter by tests: the diagnostic files that it writes at fixed places of the
// machine land below the folder that KORVEL_SANDBOX names, so that tests run side by side.
// SPDX-License-Identifier: Apache-2.0
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

static const char kDumpFolder[] = "/var/spool/cups/tmp/";
static const char kPageNote[] = "/tmp/xxxxx.log";

enum { kRoom = 4096 };

// Returns the redirected path of `path` in the test's folder, or `path` itself.
static const char* mapped(const char* path, char* room) {
  const char* folder = getenv("KORVEL_SANDBOX");
  if (folder == NULL || path == NULL) return path;
  if (strcmp(path, kPageNote) == 0) {
    snprintf(room, kRoom, "%s/xxxxx.log", folder);
    return room;
  }
  const size_t length = sizeof kDumpFolder - 1;
  if (strncmp(path, kDumpFolder, length) != 0) return path;
  snprintf(room, kRoom, "%s/dumps/%s", folder, path + length);
  return room;
}

static int openMapped(int folder, const char* path, int flags, mode_t mode) {
  char room[kRoom];
  return (int)syscall(SYS_openat, folder, mapped(path, room), flags, mode);
}

#define MODE_OF(flags, mode)                    \
  mode_t mode = 0;                              \
  if (((flags) & (O_CREAT | O_TMPFILE)) != 0) { \
    va_list arguments;                          \
    va_start(arguments, flags);                 \
    mode = va_arg(arguments, mode_t);           \
    va_end(arguments);                          \
  }

int open(const char* path, int flags, ...) {
  MODE_OF(flags, mode)
  return openMapped(AT_FDCWD, path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  MODE_OF(flags, mode)
  return openMapped(AT_FDCWD, path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...) {
  MODE_OF(flags, mode)
  return openMapped(folder, path, flags, mode);
}

// Called by fortified code when it passes no mode.
int __open_2(const char* path, int flags);
int __open_2(const char* path, int flags) { return openMapped(AT_FDCWD, path, flags, 0); }
int __open64_2(const char* path, int flags);
int __open64_2(const char* path, int flags) { return openMapped(AT_FDCWD, path, flags, 0); }

static int flagsOf(const char* mode) {
  const int both = strchr(mode, '+') != NULL;
  if (mode[0] == 'r') return both ? O_RDWR : O_RDONLY;
  return (both ? O_RDWR : O_WRONLY) | O_CREAT | (mode[0] == 'w' ? O_TRUNC : O_APPEND);
}

FILE* fopen(const char* path, const char* mode) {
  const int descriptor = openMapped(AT_FDCWD, path, flagsOf(mode), 0666);
  return descriptor == -1 ? NULL : fdopen(descriptor, mode);
}

FILE* fopen64(const char* path, const char* mode) { return fopen(path, mode); }
