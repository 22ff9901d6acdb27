// Files that tools write: where they may be created, and which are recognised as pictures of ours.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/output_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/temporary_folder.h"
#include "tools/common/png_file.h"

namespace {

namespace fs = std::filesystem;

constexpr unsigned kOther = 12345;  // somebody else

// "written", or the sentence of the failure with the folder as DIR.
std::string write(const TemporaryFolder& folder, const std::string& name) {
  korvel::Result<korvel::OutputFile> file = korvel::createOutputFile(folder.file(name));
  if (file) {
    std::fputs("new", file.value().get());
    return "written";
  }
  std::string sentence = file.sentence();
  const size_t at = sentence.find(folder.path());
  if (at != std::string::npos) sentence.replace(at, folder.path().size(), "DIR");
  return sentence;
}

TEST(OutputFile, IsCreatedOrEmptied) {
  const TemporaryFolder folder;
  folder.write("old", "a longer text");
  EXPECT_EQ(write(folder, "new"), "written");
  EXPECT_EQ(write(folder, "old"), "written");
  EXPECT_EQ(folder.read("new"), "new");
  EXPECT_EQ(folder.read("old"), "new");
  EXPECT_EQ(write(folder, "none/x"), "Cannot write DIR/none/x: No such file or directory.");
}

TEST(OutputFile, IsNeverWhatALinkLeadsTo) {
  const TemporaryFolder folder;
  const std::string precious = folder.write("precious", "precious");
  fs::create_symlink(precious, folder.file("link"));
  fs::create_symlink(folder.file("nowhere"), folder.file("dangling"));
  fs::create_hard_link(precious, folder.file("second"));
  ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
  for (const std::string name : {"link", "dangling", "second", "pipe"}) {
    EXPECT_EQ(write(folder, name),
              "DIR/" + name + " is not a file of your own; choose another folder.");
  }
  EXPECT_EQ(folder.read("precious"), "precious");
  EXPECT_FALSE(fs::exists(folder.file("nowhere")));
}

TEST(OutputFile, IsNotCreatedInAFolderOfAnotherUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a folder away";
  const TemporaryFolder folder;
  fs::create_directory(folder.file("theirs"));
  fs::create_directory(folder.file("mine"));
  ASSERT_EQ(chown(folder.file("theirs").c_str(), kOther, kOther), 0);
  fs::create_directory_symlink(folder.file("mine"), folder.file("planted"));
  fs::create_directory_symlink(folder.file("mine"), folder.file("my-link"));
  ASSERT_EQ(lchown(folder.file("planted").c_str(), kOther, kOther), 0);
  folder.write("mine/given", "theirs");
  ASSERT_EQ(chown(folder.file("mine/given").c_str(), kOther, kOther), 0);
  EXPECT_EQ(write(folder, "theirs/x"),
            "The folder DIR/theirs/ belongs to another user; choose one of your own.");
  EXPECT_EQ(write(folder, "planted/x"),
            "The folder DIR/planted/ belongs to another user; choose one of your own.");
  EXPECT_EQ(write(folder, "mine/given"),
            "DIR/mine/given is not a file of your own; choose another folder.");
  EXPECT_EQ(folder.read("mine/given"), "theirs");
  EXPECT_FALSE(fs::exists(folder.file("mine/x")));
  EXPECT_EQ(write(folder, "my-link/x"), "written");
  EXPECT_EQ(folder.read("mine/x"), "new");
}

// Signature, header of one grey dot, and no mark.
const char kForeignPicture[] =
    "\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\1\0\0\0\1\x01\0\0\0\0\x37\x6e\xf9\x24";

TEST(OwnPicture, IsKnownByItsMark) {
  const TemporaryFolder folder;
  const uint8_t dots[] = {0x80};
  const korvel::PngPicture picture = {1, 1, 1, 1, 203, {}};
  ASSERT_TRUE(korvel::writePngFile(folder.file("ours.png"), picture, dots));
  EXPECT_TRUE(korvel::isOwnPicture(folder.file("ours.png")));

  folder.write("foreign.png", std::string(kForeignPicture, sizeof kForeignPicture - 1));
  folder.write("text.png", "tEXtSoftware korvel");
  folder.write("empty.png", "");
  fs::create_symlink(folder.file("ours.png"), folder.file("link.png"));
  fs::create_directory(folder.file("folder.png"));
  for (const char* name :
       {"foreign.png", "text.png", "empty.png", "link.png", "folder.png", "no"}) {
    EXPECT_FALSE(korvel::isOwnPicture(folder.file(name))) << name;
  }
}

}  // namespace
