// Everything is checked on open descriptors, so that nothing can be exchanged between the check and
// the use.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "tools/common/process.h"
#include "tools/common/translation.h"

namespace korvel {
namespace {

// "DIR/" and NAME.
std::pair<std::string, std::string> divided(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return {"./", path};
  return {path.substr(0, slash + 1), path.substr(slash + 1)};
}

bool isTrusted(const struct stat& found) { return found.st_uid == geteuid() || found.st_uid == 0; }

Failure foreignFolder(const std::string& folder) {
  return {filled("The folder %s belongs to another user; choose one of your own.", folder.c_str())};
}

// A link to the folder is followed only if nobody else can have put it there.
bool isForeignLink(const std::string& folder) {
  struct stat found = {};
  const std::string link = folder.substr(0, folder.find_last_not_of('/') + 1);
  return lstat(link.c_str(), &found) == 0 && S_ISLNK(found.st_mode) && !isTrusted(found);
}

Result<Descriptor> openFolder(const std::string& folder, const std::string& path) {
  if (isForeignLink(folder)) return foreignFolder(folder);
  Descriptor opened(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  struct stat found = {};
  if (!opened.isOpen() || fstat(opened.get(), &found) != 0) return cannotWrite(path);
  if (!isTrusted(found)) return foreignFolder(folder);
  return opened;
}

bool isOwnFile(int descriptor) {
  struct stat found = {};
  return fstat(descriptor, &found) == 0 && S_ISREG(found.st_mode) && found.st_nlink == 1 &&
         found.st_uid == geteuid();
}

}  // namespace

Result<OutputFile> createOutputFile(const std::string& path) {
  const auto [folder, name] = divided(path);
  const Result<Descriptor> opened = openFolder(folder, path);
  if (!opened) return opened.failure();
  constexpr int kFlags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  Descriptor file(openat(opened.value().get(), name.c_str(), kFlags, 0666));
  if (!file.isOpen() && errno != ELOOP && errno != ENXIO) return cannotWrite(path);
  if (!file.isOpen() || !isOwnFile(file.get())) {
    return Failure{filled("%s is not a file of your own; choose another folder.", path.c_str())};
  }
  if (ftruncate(file.get(), 0) != 0) return cannotWrite(path);
  OutputFile stream(fdopen(file.get(), "wb"));
  if (!stream) return cannotWrite(path);
  file.release();
  return stream;
}

Failure cannotWrite(const std::string& path) {
  return Failure{filled("Cannot write %s: %s.", path.c_str(), std::strerror(errno))};
}

}  // namespace korvel
