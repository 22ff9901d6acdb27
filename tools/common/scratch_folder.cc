// Paths are in plain arrays, which a signal handler can read.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/scratch_folder.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "tools/common/translation.h"

namespace korvel {
namespace {

constexpr size_t kMostFiles = 8;
constexpr size_t kLongestPath = 4096;
constexpr size_t kLongestName = 64;  // with the slash

char gFolder[kLongestPath];
char gFiles[kMostFiles][kLongestPath];
volatile std::sig_atomic_t gCount = 0;

void removeAll() {
  for (int i = 0; i < gCount; ++i) unlink(gFiles[i]);
  gCount = 0;
  if (gFolder[0] != '\0') rmdir(gFolder);
  gFolder[0] = '\0';
}

// Children end too, by the parent death signal.
void endBySignal(int number) {
  removeAll();
  signal(number, SIG_DFL);
  raise(number);
}

}  // namespace

ScratchFolder::~ScratchFolder() { removeAll(); }

Result<void> ScratchFolder::open() {
  std::error_code reason;
  const std::string pattern =
      (std::filesystem::temp_directory_path(reason) / "korvel-XXXXXX").string();
  if (reason || pattern.size() + kLongestName >= kLongestPath) {
    return Failure{translated("There is no folder for temporary files; set TMPDIR to one.")};
  }
  std::memcpy(gFolder, pattern.c_str(), pattern.size() + 1);
  if (mkdtemp(gFolder) == nullptr) {
    return Failure{
        filled("Cannot create the folder %s: %s.", pattern.c_str(), std::strerror(errno))};
  }
  std::atexit(removeAll);  // for an end without destructors
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) signal(number, endBySignal);
  return {};
}

std::string ScratchFolder::file(const std::string& name) {
  std::string path = std::string(gFolder) + "/" + name;
  for (int i = 0; i < gCount; ++i) {
    if (path == gFiles[i]) return path;
  }
  if (gCount == kMostFiles || name.size() >= kLongestName) std::abort();  // see the header
  std::memcpy(gFiles[gCount], path.c_str(), path.size() + 1);
  gCount = gCount + 1;
  return path;
}

}  // namespace korvel
