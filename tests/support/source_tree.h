// Lists the sources of the repository for tests that check all of them.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SUPPORT_SOURCE_TREE_H
#define KORVEL_TESTS_SUPPORT_SOURCE_TREE_H

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

// Whether a folder of the root holds no sources: tests, build folders, hidden folders.
inline bool isLeftOut(const std::filesystem::path& folder) {
  const std::string name = folder.filename();
  return name == "tests" || name == "out" || name.starts_with("build") ||
         name.starts_with("obj-") || name.starts_with(".");
}

// Every .cc and .h below `root` outside tests/, as a path relative to it, in alphabetical order.
inline std::vector<std::string> sources(const std::filesystem::path& root) {
  namespace fs = std::filesystem;
  std::vector<std::string> files;
  for (auto entry = fs::recursive_directory_iterator(root); entry != fs::end(entry); ++entry) {
    if (entry.depth() == 0 && entry->is_directory() && isLeftOut(entry->path())) {
      entry.disable_recursion_pending();
    }
    const std::string extension = entry->path().extension();
    if (extension != ".h" && extension != ".cc") continue;
    files.push_back(entry->path().lexically_relative(root));
  }
  std::sort(files.begin(), files.end());
  return files;
}

#endif
