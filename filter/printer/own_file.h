// The small diagnostic files that the filter leaves at names which others can guess.
// A leaf header.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_PRINTER_OWN_FILE_H
#define KORVEL_PRINTER_OWN_FILE_H

#include <sys/types.h>

#include <cstdio>

enum class OwnFileState {
  kOpen,
  kBusy,       // another process is writing it
  kDiskFull,   // its file system has less free than the reserve
  kNotOpened,  // any other reason: no such folder, a link, somebody else's file, ...
};

// How much of the file system has to be free before a file is written.
enum class DiskReserve {
  kNone,
  kLarge,  // 1 GiB or 5 %, whichever is more
};

// A diagnostic file while it is written. Nobody else writes to it meanwhile: it is locked until it
// is closed.
struct OwnFile {
  OwnFileState state = OwnFileState::kNotOpened;
  FILE* stream = nullptr;  // null unless the state is kOpen
  bool wasEmpty = false;   // new, or without content: nothing is lost when it is removed
  dev_t device = 0;        // these two identify the file
  ino_t inode = 0;
};

// False when the environment says KORVEL_DUMPS=off: then no diagnostic file is written.
bool pellamDumpsAreOn();

// Opens `path` for writing and reading from its start, made or emptied, mode 0600. Never follows
// a link, never blocks, and empties only a regular file of our own that has no other name, after
// it was locked. In every state but kOpen an existing file keeps its content, and no empty one of
// our own is left on a full disk.
OwnFile pellamOpenOwnFile(const char* path, DiskReserve reserve);

// Closes an open file. Returns whether everything has been written; otherwise a file that was
// empty before is removed.
bool pellamCloseOwnFile(OwnFile* file, const char* path);

#endif
