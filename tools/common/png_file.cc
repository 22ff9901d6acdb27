// The one place that uses the PNG library for writing. The library reports errors by a long jump,
// so the encoder has no object with a destructor.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/png_file.h"

#include <png.h>

#include <cerrno>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <cstring>

#include "tools/common/translation.h"

namespace korvel {
namespace {

void describe(png_structp png, png_infop info, const PngPicture& picture) {
  const int colourType = picture.palette.empty() ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_PALETTE;
  png_set_user_limits(png, 0x7fffffff, 0x7fffffff);
  png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width),
               static_cast<png_uint_32>(picture.height), picture.bitsPerDot, colourType,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_color colours[4] = {};
  for (size_t i = 0; i < picture.palette.size(); ++i) {
    colours[i] = {picture.palette[i][0], picture.palette[i][1], picture.palette[i][2]};
  }
  if (!picture.palette.empty()) {
    png_set_PLTE(png, info, colours, static_cast<int>(picture.palette.size()));
  }
  if (picture.dpi == 0) return;
  const auto dotsPerMetre = static_cast<png_uint_32>(std::lround(picture.dpi / 0.0254));
  png_set_pHYs(png, info, dotsPerMetre, dotsPerMetre, PNG_RESOLUTION_METER);
}

bool encode(std::FILE* file, const PngPicture& picture, const uint8_t* rows) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  if (png == nullptr) return false;
  png_infop info = png_create_info_struct(png);
  if (info == nullptr || setjmp(png_jmpbuf(png)) != 0) {
    png_destroy_write_struct(&png, &info);
    return false;
  }
  png_init_io(png, file);
  describe(png, info, picture);
  png_write_info(png, info);
  if (picture.palette.empty()) png_set_invert_mono(png);
  for (size_t y = 0; y < picture.height; ++y) png_write_row(png, rows + y * picture.stride);
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return true;
}

}  // namespace

Failure cannotWrite(const std::string& path) {
  return Failure{filled("Cannot write %s: %s.", path.c_str(), std::strerror(errno))};
}

Result<void> writePngFile(const std::string& path, const PngPicture& picture, const uint8_t* rows) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return cannotWrite(path);
  const bool encoded = encode(file, picture, rows);
  const bool closed = std::fclose(file) == 0;
  if (!encoded) return Failure{filled("Cannot write %s as PNG.", path.c_str())};
  if (!closed) return cannotWrite(path);
  return {};
}

}  // namespace korvel
