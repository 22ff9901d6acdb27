// The script builds what it needs: one of several tests at a time.
// SPDX-License-Identifier: Apache-2.0
#include "tests/spooler/reference_print.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <filesystem>

#include "tests/spooler/guarded_process.h"
#include "tests/support/temporary_folder.h"
#include "tools/common/process.h"

namespace {

constexpr double kBuildSeconds = 600;  // the first time, on a slow machine

// Held by one process at a time, until the descriptor is closed.
korvel::Descriptor buildLock() {
  korvel::Descriptor lock(
      open(KORVEL_BUILD_DIR "/reference_print.lock", O_RDWR | O_CREAT | O_CLOEXEC, 0666));
  flock(lock.get(), LOCK_EX);
  return lock;
}

}  // namespace

std::vector<Picture> referencePages(const std::string& document, const std::string& description,
                                    const std::vector<std::string>& options, int copies) {
  const TemporaryFolder folder;
  std::vector<std::string> words = {KORVEL_SOURCE_DIR "/dev",
                                    "print",
                                    document,
                                    "--ppd",
                                    description,
                                    "--out",
                                    folder.file("out"),
                                    "-n",
                                    std::to_string(copies)};
  for (const std::string& option : options) words.insert(words.end(), {"-o", option});
  CommandResult result;
  {
    const korvel::Descriptor lock = buildLock();
    result = run(words, kBuildSeconds,
                 {{"LD_PRELOAD", KORVEL_DIVERTED_FILES}, {"KORVEL_SANDBOX", folder.path()}});
  }
  EXPECT_EQ(result.status, 0) << result.output;
  std::vector<Picture> pages;
  for (int number = 1;; ++number) {
    const std::string path = folder.file("out/page-" + std::to_string(number) + ".png");
    if (!std::filesystem::exists(path)) return pages;
    pages.push_back(readPicture(path));
  }
}
