// Reads an uploaded picture into grey values. Runs in the worker only: a decoder that meets a
// broken file may end the whole process with one sentence. SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_WORKER_PICTURE_READER_H
#define KORVEL_STUDIO_WORKER_PICTURE_READER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/common/result.h"

namespace korvel {

// Upright, transparent parts on white paper. Rows follow each other without padding.
struct GreyPicture {
  size_t width = 0;   // pixels
  size_t height = 0;  // rows
  double dpi = 0;     // 0: the file does not say
  std::vector<uint8_t> grey;

  bool isTwoTone() const;  // only black and white
};

// Formats by the file's first bytes: PNG, JPEG, TIFF, WebP. Empty for all others.
std::string pictureType(const std::string& head);

// Refuses pictures of more than 64 million pixels before it reserves memory for them.
Result<GreyPicture> readPicture(const std::string& path, const std::string& type);

// Halves width and height until at most 16 million pixels are left: more than a printer's head
// shows.
void reduceToPrintable(GreyPicture* picture);

// Brings a picture with this Exif orientation, 1 to 8, upright.
GreyPicture upright(GreyPicture picture, unsigned orientation);

// As PGM with a comment for the resolution, which loadGrey reads back.
Result<void> saveGrey(const GreyPicture& picture, const std::string& path);
Result<GreyPicture> loadGrey(const std::string& path);

}  // namespace korvel

#endif
