// A PNG, JPEG or TIFF file without its pixels: the size of the picture, and whether all of it is
// there. SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_PREVIEW_PICTURE_FILE_H
#define KORVEL_TOOLS_PREVIEW_PICTURE_FILE_H

#include <string>

#include "tools/description/printer_description.h"

namespace korvel {

struct PictureFile {
  DotSize size;            // zero for other files, and when the file ends before its size
  bool endsEarly = false;  // a part of the picture is missing
};

// Other files, and those that cannot be read, have no size and do not end early.
PictureFile readPictureFile(const std::string& path);

}  // namespace korvel

#endif
