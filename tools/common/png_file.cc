// The one place that uses the PNG library for writing. The library reports errors by a long jump,
// so the encoder has no object with a destructor.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/png_file.h"

#include <fcntl.h>
#include <png.h>
#include <unistd.h>

#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <string_view>

#include "tools/common/process.h"
#include "tools/common/translation.h"

namespace korvel {
namespace {

constexpr size_t kHeadBytes = 4096;  // the mark is before the pixels

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

void mark(png_structp png, png_infop info) {
  char keyword[] = "Software";
  char text[] = "korvel";
  png_text software = {};
  software.compression = PNG_TEXT_COMPRESSION_NONE;
  software.key = keyword;
  software.text = text;
  software.text_length = sizeof text - 1;
  png_set_text(png, info, &software, 1);
}

bool encode(std::FILE* file, const PngPicture& picture, const PngRow& row) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  if (png == nullptr) return false;
  png_infop info = png_create_info_struct(png);
  if (info == nullptr || setjmp(png_jmpbuf(png)) != 0) {
    png_destroy_write_struct(&png, &info);
    return false;
  }
  png_init_io(png, file);
  describe(png, info, picture);
  if (picture.quick) png_set_compression_level(png, 1);
  mark(png, info);
  png_write_info(png, info);
  if (picture.palette.empty()) png_set_invert_mono(png);
  for (size_t y = 0; y < picture.height; ++y) png_write_row(png, row(y));
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return true;
}

}  // namespace

Result<void> writePngFile(const std::string& path, const PngPicture& picture, const PngRow& row) {
  Result<OutputFile> file = createOutputFile(path);
  if (!file) return file.failure();
  const bool encoded = encode(file.value().get(), picture, row);
  const bool closed = std::fclose(file.value().release()) == 0;
  if (!encoded) return Failure{filled("Cannot write %s as PNG.", path.c_str())};
  if (!closed) return cannotWrite(path);
  return {};
}

Result<void> writePngFile(const std::string& path, const PngPicture& picture, const uint8_t* rows) {
  return writePngFile(path, picture, [&](size_t y) { return rows + y * picture.stride; });
}

bool isOwnPicture(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  char head[kHeadBytes];
  const ssize_t count = read(file.get(), head, sizeof head);
  if (count <= 0) return false;
  const std::string_view text(head, static_cast<size_t>(count));
  // Text chunk of 15 bytes: the keyword, a NUL, the text.
  constexpr std::string_view kMark("\0\0\0\x0ftEXtSoftware\0korvel", 23);
  return text.starts_with("\x89PNG\r\n\x1a\n") && text.find(kMark) != std::string_view::npos;
}

}  // namespace korvel
