// Guards the diagnostic files: somebody may have put a link or a pipe in their place.
// The file is looked at after it was opened and before it is emptied.
// SPDX-License-Identifier: Apache-2.0
#include "printer/own_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool isOurs(int descriptor) {
  struct stat found;
  return fstat(descriptor, &found) == 0 && S_ISREG(found.st_mode) && found.st_nlink == 1 &&
         found.st_uid == geteuid();
}

}  // namespace

FILE* pellamOpenOwnFile(const char* path) {
  const int flags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const int descriptor = open(path, flags, S_IRUSR | S_IWUSR);
  if (descriptor == -1) return nullptr;
  FILE* file = nullptr;
  if (isOurs(descriptor) && ftruncate(descriptor, 0) == 0) file = fdopen(descriptor, "w+");
  if (file == nullptr) close(descriptor);
  return file;
}
