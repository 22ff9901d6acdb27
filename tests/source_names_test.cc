// No two sources of the repository share a base name, so that a name in a message or in a
// conversation means one file. A source and its own header in the same folder count as one.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/support/source_tree.h"

namespace {

namespace fs = std::filesystem;

// The folders that contain sources of each base name that occurs in more than one.
std::map<std::string, std::set<std::string>> sharedNames(const std::vector<std::string>& files) {
  std::map<std::string, std::set<std::string>> folders;
  for (const std::string& file : files) {
    folders[fs::path(file).stem()].insert(fs::path(file).parent_path());
  }
  std::erase_if(folders, [](const auto& entry) { return entry.second.size() < 2; });
  return folders;
}

using Shared = std::map<std::string, std::set<std::string>>;

TEST(SourceNames, AreUnique) {
  const std::vector<std::string> files = sources(KORVEL_SOURCE_DIR);
  ASSERT_LT(150U, files.size());
  for (const auto& [name, folders] : sharedNames(files)) {
    std::string text = name + " is in";
    for (const std::string& folder : folders) text += " " + folder;
    ADD_FAILURE() << text;
  }
}

TEST(SourceNames, OfASourceAndItsHeaderAreOne) {
  struct Case {
    const char* sentence;
    std::vector<std::string> files;
    Shared shared;
  };
  const Case cases[] = {
      {"a pair in one folder", {"a/rows.cc", "a/rows.h"}, {}},
      {"different names", {"a/rows.h", "b/rows_test.h"}, {}},
      {"two headers", {"a/rows.h", "b/rows.h"}, {{"rows", {"a", "b"}}}},
      {"a header apart from its source", {"a/rows.h", "a/b/rows.cc"}, {{"rows", {"a", "a/b"}}}},
  };
  for (const Case& c : cases) EXPECT_EQ(sharedNames(c.files), c.shared) << c.sentence;
}

}  // namespace
