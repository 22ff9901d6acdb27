// Draws a picture on a blank raster page of the rasteriser's. Moving, scaling and turning a picture
// starts no other program, and every turn is resampled with smooth edges.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_WORKER_PICTURE_PLACER_H
#define KORVEL_STUDIO_WORKER_PICTURE_PLACER_H

#include <string>
#include <vector>

#include "studio/placement.h"
#include "studio/worker/picture_reader.h"
#include "tools/common/result.h"

namespace korvel {

// The ink of a page, 0 is paper: rows of `stride` bytes, of which `width` are dots.
struct InkPage {
  size_t width = 0;
  size_t height = 0;
  size_t stride = 0;
  unsigned char* ink = nullptr;
};

// `onto` leads from pixels to dots, both counted from the upper left corner. A reduced picture's
// dots are the mean of the pixels below them. An enlarged one is interpolated; with two tones, as
// of a barcode, its edges stay hard. Dots beside the picture stay as they are.
void placePicture(GreyPicture picture, const Matrix& onto, const InkPage& page);

// Writes a copy of the raster page `blank` with the picture on it to `target`.
Result<void> drawPicture(GreyPicture picture, const Matrix& onto, const std::string& blank,
                         const std::string& target);

// Writes the raster page `source` to `target`, moved by whole dots; what was outside is paper.
Result<void> movePage(const std::string& source, long right, long down, const std::string& target);

}  // namespace korvel

#endif
