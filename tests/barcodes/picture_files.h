// A black and white picture in the file formats that people print, one pixel per dot.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_BARCODES_PICTURE_FILES_H
#define KORVEL_TESTS_BARCODES_PICTURE_FILES_H

#include <string>
#include <vector>

struct PixelPicture {
  int width = 0;
  int height = 0;
  std::vector<bool> dark;  // row by row
  bool at(int x, int y) const {
    return dark[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
  }
};

// Bars and spaces of one to four pixels in all directions, the same for the same size. Its
// outermost rows and columns are not blank, so that nothing can be cut off unnoticed.
PixelPicture pattern(int width, int height);

struct PictureFormat {
  const char* name;
  const char* type;  // for CUPS
  std::string (*encode)(const PixelPicture& picture, unsigned dpi);
};

// PNG with and without a density, JPEG, TIFF, GIF, BMP, and a PDF that is one 1-bit picture.
const std::vector<PictureFormat>& pictureFormats();

#endif
