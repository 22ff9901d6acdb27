// Diagnostic files are opened only when they are certainly ours.
// Whatever somebody else put at the name keeps its content.
// SPDX-License-Identifier: Apache-2.0
#include "printer/own_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/temporary_folder.h"

namespace {

TEST(OwnFile, IsMadeForItsOwnerOnly) {
  const TemporaryFolder folder;
  FILE* file = pellamOpenOwnFile(folder.file("new").c_str());
  ASSERT_NE(file, nullptr);
  std::fputs("text", file);
  std::fclose(file);
  EXPECT_EQ(folder.read("new"), "text");
  struct stat found {};
  ASSERT_EQ(stat(folder.file("new").c_str(), &found), 0);
  EXPECT_EQ(found.st_mode & 07777, 0600u);
}

TEST(OwnFile, IsEmptiedWhenItStood) {
  const TemporaryFolder folder;
  FILE* file = pellamOpenOwnFile(folder.write("old", "a longer text").c_str());
  ASSERT_NE(file, nullptr);
  std::fputs("new", file);
  std::rewind(file);
  EXPECT_EQ(std::fgetc(file), 'n') << "the file can be read again";
  std::fclose(file);
  EXPECT_EQ(folder.read("old"), "new");
}

TEST(OwnFile, NeverFollowsASymbolicLink) {
  const TemporaryFolder folder;
  const std::string target = folder.write("target", "precious");
  ASSERT_EQ(symlink(target.c_str(), folder.file("link").c_str()), 0);
  EXPECT_EQ(pellamOpenOwnFile(folder.file("link").c_str()), nullptr);
  EXPECT_EQ(folder.read("target"), "precious");
  ASSERT_EQ(symlink(folder.file("nowhere").c_str(), folder.file("dangling").c_str()), 0);
  EXPECT_EQ(pellamOpenOwnFile(folder.file("dangling").c_str()), nullptr);
  EXPECT_NE(access(folder.file("nowhere").c_str(), F_OK), 0) << "the link's target was made";
}

TEST(OwnFile, NeverEmptiesAFileWithAnotherName) {
  const TemporaryFolder folder;
  const std::string target = folder.write("target", "precious");
  ASSERT_EQ(link(target.c_str(), folder.file("second").c_str()), 0);
  EXPECT_EQ(pellamOpenOwnFile(folder.file("second").c_str()), nullptr);
  EXPECT_EQ(folder.read("target"), "precious");
}

TEST(OwnFile, NeverWaitsForAPipe) {
  const TemporaryFolder folder;
  ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
  EXPECT_EQ(pellamOpenOwnFile(folder.file("pipe").c_str()), nullptr);
}

TEST(OwnFile, IsNullWhereNoFileCanBe) {
  const TemporaryFolder folder;
  EXPECT_EQ(pellamOpenOwnFile(folder.path().c_str()), nullptr) << "a folder";
  EXPECT_EQ(pellamOpenOwnFile(folder.file("no/such/folder").c_str()), nullptr);
  EXPECT_EQ(pellamOpenOwnFile("/dev/null"), nullptr) << "a device";
  EXPECT_EQ(pellamOpenOwnFile(""), nullptr);
}

}  // namespace
