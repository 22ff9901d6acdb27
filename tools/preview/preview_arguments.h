// The command line of korvel-preview.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_PREVIEW_PREVIEW_ARGUMENTS_H
#define KORVEL_TOOLS_PREVIEW_PREVIEW_ARGUMENTS_H

#include <string>

#include "tools/common/arguments.h"

namespace korvel {

struct PreviewArguments {
  std::string file;
  std::string queue;        // empty: no queue
  std::string description;  // path or bare name of a PPD; empty: that of a label printer
  std::string options;      // as one text
  std::string copies = "1";
  std::string folder = "preview";
  std::string filter;  // empty: the installed one
  bool pages = false;
  bool halftones = false;
  bool stream = false;
};

extern const Help kPreviewHelp;

// Parses all arguments, and ends the program when they are wrong.
PreviewArguments parsePreviewArguments(Arguments* arguments);

}  // namespace korvel

#endif
