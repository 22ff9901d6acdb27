// Diagnostic files are opened only when they are plainly ours.
// Whatever somebody else put at the name keeps its content.
// SPDX-License-Identifier: Apache-2.0
#include "printer/own_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/support/temporary_folder.h"

namespace {

OwnFile openFile(const std::string& path) {
  return pellamOpenOwnFile(path.c_str(), DiskReserve::kNone);
}

// The state after an opening that has to fail.
OwnFileState stateOf(const std::string& path) {
  const OwnFile file = openFile(path);
  EXPECT_EQ(file.stream, nullptr);
  return file.state;
}

TEST(OwnFile, IsMadeForItsOwnerOnly) {
  const TemporaryFolder folder;
  OwnFile file = openFile(folder.file("new"));
  ASSERT_EQ(file.state, OwnFileState::kOpen);
  std::fputs("text", file.stream);
  EXPECT_TRUE(pellamCloseOwnFile(&file, folder.file("new").c_str()));
  EXPECT_EQ(folder.read("new"), "text");
  struct stat found {};
  ASSERT_EQ(stat(folder.file("new").c_str(), &found), 0);
  EXPECT_EQ(found.st_mode & 07777, 0600u);
}

TEST(OwnFile, IsEmptiedWhenItExists) {
  const TemporaryFolder folder;
  const std::string path = folder.write("old", "a longer text");
  OwnFile file = openFile(path);
  ASSERT_EQ(file.state, OwnFileState::kOpen);
  std::fputs("new", file.stream);
  std::rewind(file.stream);
  EXPECT_EQ(std::fgetc(file.stream), 'n') << "the file can be read again";
  EXPECT_TRUE(pellamCloseOwnFile(&file, path.c_str()));
  EXPECT_EQ(folder.read("old"), "new");
}

TEST(OwnFile, IsLeftAloneWhileSomebodyElseWritesIt) {
  const TemporaryFolder folder;
  const std::string path = folder.write("shared", "");
  OwnFile first = openFile(path);
  ASSERT_EQ(first.state, OwnFileState::kOpen);
  std::fputs("the first one's", first.stream);
  std::fflush(first.stream);
  EXPECT_EQ(stateOf(path), OwnFileState::kBusy);
  EXPECT_EQ(folder.read("shared"), "the first one's");
  EXPECT_TRUE(pellamCloseOwnFile(&first, path.c_str()));
  OwnFile second = openFile(path);
  EXPECT_EQ(second.state, OwnFileState::kOpen) << "closing it ends the lock";
  EXPECT_TRUE(pellamCloseOwnFile(&second, path.c_str()));
}

// Closes a file whose stream has failed, and returns whether the file is still there.
bool staysAfterAFailedWrite(const std::string& path) {
  OwnFile file = openFile(path);
  EXPECT_EQ(file.state, OwnFileState::kOpen);
  std::fputs("text", file.stream);
  FILE* full = std::fopen("/dev/full", "w");
  dup2(fileno(full), fileno(file.stream));
  std::fclose(full);
  EXPECT_FALSE(pellamCloseOwnFile(&file, path.c_str()));
  return access(path.c_str(), F_OK) == 0;
}

TEST(OwnFile, IsRemovedAfterAFailedWriteIfItWasEmptyBefore) {
  const TemporaryFolder folder;
  EXPECT_FALSE(staysAfterAFailedWrite(folder.file("new")));
  EXPECT_FALSE(staysAfterAFailedWrite(folder.write("empty", "")));
  EXPECT_TRUE(staysAfterAFailedWrite(folder.write("old", "text")));
}

TEST(OwnFile, RemovesNothingButItself) {
  const TemporaryFolder folder;
  const std::string path = folder.file("moved");
  OwnFile file = openFile(path);
  ASSERT_EQ(file.state, OwnFileState::kOpen);
  std::fputs("text", file.stream);
  FILE* full = std::fopen("/dev/full", "w");
  dup2(fileno(full), fileno(file.stream));
  std::fclose(full);
  ASSERT_EQ(std::rename(path.c_str(), folder.file("elsewhere").c_str()), 0);
  folder.write("moved", "");
  EXPECT_FALSE(pellamCloseOwnFile(&file, path.c_str()));
  EXPECT_EQ(access(path.c_str(), F_OK), 0) << "another file has its name now";
}

TEST(DumpSwitch, OnlyOffTurnsTheFilesOff) {
  struct Case {
    const char* value;  // null: not set
    bool on;
  };
  const Case kCases[] = {
      {nullptr, true}, {"off", false}, {"on", true}, {"", true}, {"offline", true}};
  for (const Case& c : kCases) {
    c.value == nullptr ? unsetenv("KORVEL_DUMPS") : setenv("KORVEL_DUMPS", c.value, 1);
    EXPECT_EQ(pellamDumpsAreOn(), c.on) << (c.value == nullptr ? "not set" : c.value);
  }
  unsetenv("KORVEL_DUMPS");
}

TEST(OwnFile, NeverFollowsASymbolicLink) {
  const TemporaryFolder folder;
  const std::string target = folder.write("target", "precious");
  ASSERT_EQ(symlink(target.c_str(), folder.file("link").c_str()), 0);
  EXPECT_EQ(stateOf(folder.file("link")), OwnFileState::kNotOpened);
  EXPECT_EQ(folder.read("target"), "precious");
  ASSERT_EQ(symlink(folder.file("nowhere").c_str(), folder.file("dangling").c_str()), 0);
  EXPECT_EQ(stateOf(folder.file("dangling")), OwnFileState::kNotOpened);
  EXPECT_NE(access(folder.file("nowhere").c_str(), F_OK), 0) << "the link's target was made";
}

TEST(OwnFile, NeverEmptiesAFileWithAnotherName) {
  const TemporaryFolder folder;
  const std::string target = folder.write("target", "precious");
  ASSERT_EQ(link(target.c_str(), folder.file("second").c_str()), 0);
  EXPECT_EQ(stateOf(folder.file("second")), OwnFileState::kNotOpened);
  EXPECT_EQ(folder.read("target"), "precious");
}

TEST(OwnFile, NeverWaitsForAPipe) {
  const TemporaryFolder folder;
  ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
  EXPECT_EQ(stateOf(folder.file("pipe")), OwnFileState::kNotOpened);
}

TEST(OwnFile, IsNotOpenedWhereNoFileCanBe) {
  const TemporaryFolder folder;
  EXPECT_EQ(stateOf(folder.path()), OwnFileState::kNotOpened) << "a folder";
  EXPECT_EQ(stateOf(folder.file("no/such/folder")), OwnFileState::kNotOpened);
  EXPECT_EQ(stateOf("/dev/null"), OwnFileState::kNotOpened) << "a device";
  EXPECT_EQ(stateOf(""), OwnFileState::kNotOpened);
}

}  // namespace
