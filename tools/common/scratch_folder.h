// A folder for a program's passing files, gone with its object or when a signal ends the program.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_SCRATCH_FOLDER_H
#define KORVEL_TOOLS_COMMON_SCRATCH_FOLDER_H

#include <string>

namespace korvel {

// At most one lives at a time: the signal handler knows its files.
class ScratchFolder {
 public:
  ScratchFolder() = default;
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder();

  // Makes the folder and catches SIGINT, SIGTERM and SIGHUP. Returns an empty text or one sentence.
  std::string open();
  // The path for a file in it; the name is remembered, and few are to be had.
  std::string file(const std::string& name);
};

}  // namespace korvel

#endif
