// Creates the files that a tool writes for its user, also where others could have put a link.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_OUTPUT_FILE_H
#define KORVEL_TOOLS_COMMON_OUTPUT_FILE_H

#include <cstdio>
#include <memory>
#include <string>

#include "tools/common/result.h"

namespace korvel {

struct OutputFileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using OutputFile = std::unique_ptr<std::FILE, OutputFileCloser>;

// Creates or empties the file `path` and opens it for writing. Fails unless its folder belongs to
// the user or to root, and when something else than a regular file of the user's with no other
// name is there; never follows a link to the file. Links on the way to the folder are followed if
// they belong to the user or to root.
Result<OutputFile> createOutputFile(const std::string& path);

// "Cannot write PATH: REASON." according to errno.
Failure cannotWrite(const std::string& path);

}  // namespace korvel

#endif
