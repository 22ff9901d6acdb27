// The relative paths from the programs to their data are configured; only the program's own folder
// is looked up.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/installation.h"

#include <sys/stat.h>

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace korvel {

namespace {

fs::path ownFolder() {
  std::error_code fault;
  return fs::read_symlink("/proc/self/exe", fault).parent_path();
}

// In a folder like /tmp anybody could place a filter for us.
bool isPublic(const fs::path& folder) {
  struct stat found;
  return stat(folder.c_str(), &found) != 0 || (found.st_mode & S_IWOTH) != 0;
}

}  // namespace

std::string programFolder() { return ownFolder(); }

std::string catalogueFolder() { return (ownFolder() / KORVEL_WAY_TO_LOCALE).lexically_normal(); }

std::string dataFolder() { return (ownFolder() / KORVEL_WAY_TO_DATA).lexically_normal(); }

std::string spoolerFolder(const std::string& path) {
  const fs::path below = fs::path(path).relative_path();
  for (fs::path tree = ownFolder(); tree.has_relative_path(); tree = tree.parent_path()) {
    std::error_code fault;
    if (!isPublic(tree) && fs::is_directory(tree / below, fault)) return tree / below;
  }
  return path;
}

}  // namespace korvel
