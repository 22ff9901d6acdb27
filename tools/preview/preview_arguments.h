// What korvel-preview is asked for.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_PREVIEW_PREVIEW_ARGUMENTS_H
#define KORVEL_TOOLS_PREVIEW_PREVIEW_ARGUMENTS_H

#include <string>

#include "tools/common/arguments.h"

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

const char* previewUsage();  // in the user's language

// Goes through all `words`, and ends the program where they do.
PreviewArguments parsePreviewArguments(Arguments* words);

}  // namespace korvel

#endif
