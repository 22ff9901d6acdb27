// A folder for temporary files, removed with its object or when a signal ends the program.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_SCRATCH_FOLDER_H
#define KORVEL_TOOLS_COMMON_SCRATCH_FOLDER_H

#include <string>

#include "tools/common/result.h"

namespace korvel {

// At most one exists at a time, because the signal handler removes its files.
class ScratchFolder {
 public:
  ScratchFolder() = default;
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder();

  // Creates the folder and catches SIGINT, SIGTERM and SIGHUP.
  Result<void> open();
  // The path of a file in the open folder, which will be removed: at most eight different names of
  // at most 63 letters.
  std::string file(const std::string& name);
};

}  // namespace korvel

#endif
