// What korvel-preview is asked for.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_PREVIEW_ARGUMENTS_H_
#define KORVEL_TOOLS_PREVIEW_ARGUMENTS_H_

#include <string>

namespace korvel {

struct PreviewArguments {
  std::string file;
  std::string queue;        // empty: no queue
  std::string description;  // path or bare name; empty: the plain label printer's
  std::string options;      // as one text
  std::string copies = "1";
  std::string folder = "preview";
  std::string filter;  // empty: the installed one
  bool pages = false;
  bool halftones = false;
  bool stream = false;
};

// Ends the program after --help and --version with 0, after wrong usage with 2 and one sentence.
PreviewArguments parsePreviewArguments(int argc, char** argv);

[[noreturn]] void previewUsageError(const std::string& what);

}  // namespace korvel

#endif
