// The one launcher of programs: arguments, descriptors, environment, the ban on new files, and
// that no child outlives its owner.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "tests/support/temporary_folder.h"
#include "tests/tools/result_text.h"

namespace korvel {
namespace {

Program shell(const std::string& script) {
  Program program;
  program.arguments = {"sh", "-c", script};
  return program;
}

TEST(Process, RunsAProgramWithItsSurroundings) {
  setenv("KORVEL_TEST_SET", "ours", 1);
  setenv("KORVEL_TEST_UNSET", "ours", 1);
  const struct {
    const char* sentence;
    const char* script;
    int status;
    const char* text;
  } kCases[] = {
      {"output and errors are one text", "echo out; echo error >&2", 0, "out\nerror\n"},
      {"the exit status", "exit 7", 7, ""},
      {"standard input is empty", "cat", 0, ""},
      {"a variable that is set", "echo $KORVEL_TEST_SET", 0, "theirs\n"},
      {"a variable that is removed", "echo ${KORVEL_TEST_UNSET-none}", 0, "none\n"},
  };
  for (const auto& c : kCases) {
    Program program = shell(c.script);
    program.environment = {{"KORVEL_TEST_SET", "theirs"}, {"KORVEL_TEST_UNSET", std::nullopt}};
    const Result<ProgramOutput> output = runProgram(program, kWithOutput);
    ASSERT_TRUE(output.ok()) << c.sentence << failureOf(output);
    EXPECT_EQ(c.status, WEXITSTATUS(output.value().waitStatus)) << c.sentence;
    EXPECT_EQ(c.text, output.value().text) << c.sentence;
  }
}

TEST(Process, LeavesOurDescriptorsToUs) {
  Descriptor readEnd, writeEnd;
  ASSERT_TRUE(openPipe(&readEnd, &writeEnd).ok());
  const std::string number = std::to_string(readEnd.get());
  const Result<ProgramOutput> output = runProgram(
      shell("ls -l /proc/self/fd | grep -c ' " + number + " -> pipe' || true"), kWithOutput);
  ASSERT_TRUE(output.ok()) << failureOf(output);
  EXPECT_EQ("0\n", output.value().text);
}

TEST(Process, ReportsAProgramThatCannotRun) {
  const TemporaryFolder folder;
  const struct {
    std::string program;
    std::string failure;
  } kCases[] = {
      {"/no/program", "Cannot run /no/program: No such file or directory."},
      {"no-such-program", "Cannot run no-such-program: No such file or directory."},
      {folder.path(), "Cannot run " + folder.path() + ": Permission denied."},
  };
  for (const auto& c : kCases) {
    Program program;
    program.arguments = {c.program};
    EXPECT_EQ(c.failure, failureOf(runProgram(program, kWithOutput)));
  }
}

TEST(Process, PlacesDescriptorsThatHaveEachOthersNumbers) {
  Descriptor readOne, writeOne, readTwo, writeTwo;
  ASSERT_TRUE(openPipe(&readOne, &writeOne).ok());
  ASSERT_TRUE(openPipe(&readTwo, &writeTwo).ok());
  const int low = 4;
  ASSERT_EQ(dup2(writeTwo.get(), low), low);
  const Descriptor lowOwner(low);
  Program program = shell("echo three >&3; echo four >&4");
  program.descriptors = {kNullDevice, 1, 2, low, writeOne.get()};
  Child child;
  ASSERT_EQ("", failureOf(child.start(program)));
  int status = 0;
  ASSERT_TRUE(child.wait(&status));
  EXPECT_EQ(0, status);
  char bytes[16];
  EXPECT_EQ(std::string("four\n"),
            std::string(bytes, static_cast<size_t>(read(readOne.get(), bytes, 5))));
  EXPECT_EQ(std::string("three\n"),
            std::string(bytes, static_cast<size_t>(read(readTwo.get(), bytes, 6))));
}

TEST(Process, ForbidsNewFilesOnly) {
  const TemporaryFolder folder;
  const std::string old = folder.write("old", "text");
  Program program = shell("cat " + old + "; echo new > " + folder.file("new") + " || echo refused");
  program.noNewFiles = true;
  const Result<ProgramOutput> output = runProgram(program, kWithOutput);
  ASSERT_TRUE(output.ok()) << failureOf(output);
  EXPECT_TRUE(output.value().text.starts_with("text")) << output.value().text;
  EXPECT_TRUE(output.value().text.ends_with("refused\n")) << output.value().text;
  EXPECT_FALSE(std::filesystem::exists(folder.file("new")));
}

TEST(Process, KillsAChildWithItsOwner) {
  Descriptor ours, theirs;
  ASSERT_TRUE(openPipe(&ours, &theirs).ok());
  {
    Program program = shell("exec sleep 600");
    program.descriptors = {kNullDevice, theirs.get()};
    Child child;
    ASSERT_EQ("", failureOf(child.start(program)));
    theirs.reset();
  }
  char byte = 0;
  EXPECT_EQ(0, read(ours.get(), &byte, 1)) << "the child holds the other end as long as it lives";
}

}  // namespace
}  // namespace korvel
