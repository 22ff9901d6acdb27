// Preloaded under the filter by tests: the diagnostic files that it writes at fixed places of the
// machine land below the folder that KORVEL_SANDBOX names, so that tests run side by side.
// Disks look large and half empty, whatever the machine's are; KORVEL_SANDBOX_DISK sets another
// size as "FREE/TOTAL" in MiB, or "real" for the real one.
// SPDX-License-Identifier: Apache-2.0
#undef _FILE_OFFSET_BITS  // either would give functions other names than those written here
#undef _TIME_BITS
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
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

typedef int (*Lstat)(const char* path, void* found);

static int lstatMapped(const char* name, const char* path, void* found) {
  Lstat real = NULL;
  *(void**)&real = dlsym(RTLD_NEXT, name);
  char room[kRoom];
  return real(mapped(path, room), found);
}

int lstat(const char* path, struct stat* found) { return lstatMapped("lstat", path, found); }

int lstat64(const char* path, struct stat64* found) { return lstatMapped("lstat64", path, found); }

// Called where `long` has 32 bits and times have 64.
int __lstat64_time64(const char* path, void* found);
int __lstat64_time64(const char* path, void* found) {
  return lstatMapped("__lstat64_time64", path, found);
}

int unlink(const char* path) {
  char room[kRoom];
  return (int)syscall(SYS_unlinkat, AT_FDCWD, mapped(path, room), 0);
}

typedef int (*Fstatvfs)(int descriptor, struct statvfs64* found);

int fstatvfs64(int descriptor, struct statvfs64* found) {
  Fstatvfs real = NULL;
  *(void**)&real = dlsym(RTLD_NEXT, "fstatvfs64");
  const int result = real(descriptor, found);
  const char* disk = getenv("KORVEL_SANDBOX_DISK");
  if (result != 0 || (disk != NULL && strcmp(disk, "real") == 0)) return result;
  unsigned long long free = 128 << 10;  // MiB
  unsigned long long total = 256 << 10;
  if (disk != NULL && sscanf(disk, "%llu/%llu", &free, &total) != 2) abort();
  found->f_frsize = 1 << 20;
  found->f_bavail = free;
  found->f_bfree = free;
  found->f_blocks = total;
  return 0;
}
