// Whether a picture will be printed pixel for dot: the size that CUPS' image filter gives it
// on a page.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_PREVIEW_PICTURE_SCALING_H
#define KORVEL_TOOLS_PREVIEW_PICTURE_SCALING_H

#include <string>

#include "tools/description/option_check.h"
#include "tools/description/printer_description.h"

namespace korvel {

// The picture in dots on a page with that printable area, turned if it fits better lying. Equal to
// `picture` when nothing is scaled, and where an option makes that depend on the file's density.
DotSize sizeOnPage(const DotSize& picture, const DotSize& printable, const Options& options);

// Whether it is turned because it fits better lying; false where an option decides.
bool isTurnedOnPage(const DotSize& picture, const DotSize& printable, const Options& options);

}  // namespace korvel

#endif
