// Guards the diagnostic files: somebody may have put a link or a pipe in their place, another job
// may write the same name, and the disk may be full.
// The file is looked at and locked after it was opened and before it is emptied.
// SPDX-License-Identifier: Apache-2.0
#include "printer/own_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

constexpr uint64_t kReservedBytes = uint64_t{1} << 30;
constexpr uint64_t kReservedShare = 20;  // one part in so many

bool isOurs(int descriptor, struct stat* found) {
  return fstat(descriptor, found) == 0 && S_ISREG(found->st_mode) && found->st_nlink == 1 &&
         found->st_uid == geteuid();
}

// A file system that does not report its size counts as one with room.
bool hasReserve(int descriptor) {
  struct statvfs64 found;
  if (fstatvfs64(descriptor, &found) != 0) return true;
  const uint64_t block = found.f_frsize;
  const uint64_t share = found.f_blocks / kReservedShare * block;
  return found.f_bavail * block >= std::max(kReservedBytes, share);
}

// Locks the file. Its state afterwards decides: a file that its writer has removed has no name.
OwnFileState examine(int descriptor, DiskReserve reserve, OwnFile* file) {
  struct stat found;
  if (!isOurs(descriptor, &found)) return OwnFileState::kNotOpened;
  if (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    return errno == EWOULDBLOCK ? OwnFileState::kBusy : OwnFileState::kNotOpened;
  }
  if (!isOurs(descriptor, &found)) return OwnFileState::kNotOpened;
  file->wasEmpty = found.st_size == 0;
  file->device = found.st_dev;
  file->inode = found.st_ino;
  if (reserve == DiskReserve::kLarge && !hasReserve(descriptor)) return OwnFileState::kDiskFull;
  return OwnFileState::kOpen;
}

// Only while it is locked: nobody else has written to it, and whoever opens it now finds it gone.
void removeEmpty(const OwnFile& file, const char* path) {
  struct stat found;
  if (!file.wasEmpty || lstat(path, &found) != 0) return;
  if (found.st_dev == file.device && found.st_ino == file.inode) unlink(path);
}

}  // namespace

bool pellamDumpsAreOn() {
  const char* setting = std::getenv("KORVEL_DUMPS");
  return setting == nullptr || std::strcmp(setting, "off") != 0;
}

OwnFile pellamOpenOwnFile(const char* path, DiskReserve reserve) {
  OwnFile file;
  const int flags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const int descriptor = open(path, flags, S_IRUSR | S_IWUSR);
  if (descriptor == -1) return file;
  file.state = examine(descriptor, reserve, &file);
  if (file.state == OwnFileState::kOpen) {
    if (ftruncate(descriptor, 0) == 0) file.stream = fdopen(descriptor, "w+");
    if (file.stream == nullptr) file.state = OwnFileState::kNotOpened;
  }
  if (file.stream == nullptr) {
    removeEmpty(file, path);
    close(descriptor);
  }
  return file;
}

bool pellamCloseOwnFile(OwnFile* file, const char* path) {
  const bool complete = std::fflush(file->stream) == 0 && std::ferror(file->stream) == 0;
  if (!complete) removeEmpty(*file, path);
  const bool closed = std::fclose(file->stream) == 0;
  file->stream = nullptr;
  return complete && closed;
}
