// Rows from packets, and the two file formats. In both a set bit means a printed dot at the
// source; PBM prints set bits black as well, PNG's grey has it the other way round.
// SPDX-License-Identifier: Apache-2.0
#include "tools/page_picture.h"

#include <png.h>

#include <cerrno>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>

namespace korvel {
namespace {

constexpr size_t kRowsPerBlock = 4;

// The print widths of the family's heads: 203 dots per inch, and all others.
bool isFullWidth(const StreamItem& area) {
  return area.word(0) == 0 && (area.word(2) == 1728 || area.word(2) == 2592);
}

// The one row length that a single block of a full-width image can have, or 0.
size_t rowOfSingleBlock(size_t block, size_t shortest) {
  size_t found = 0;
  for (size_t rows = 1; rows <= kRowsPerBlock; ++rows) {
    if (block % rows != 0 || block / rows < shortest) continue;
    if (found != 0) return 0;
    found = block / rows;
  }
  return found;
}

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

std::string cannotWrite(const std::string& path) {
  return "cannot write " + path + ": " + std::strerror(errno);
}

std::string closeWritten(File file, const std::string& path) {
  return std::fclose(file.release()) == 0 ? std::string() : cannotWrite(path);
}

struct PngShape {
  png_uint_32 width;
  png_uint_32 height;
  size_t rowBytes;
  png_uint_32 dotsPerMetre;  // 0: not told
};

// The library leaves by a long jump: nothing with a destructor may live in here.
bool encodePng(std::FILE* file, const PngShape& shape, const uint8_t* dots) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  if (png == nullptr) return false;
  png_infop info = png_create_info_struct(png);
  if (info == nullptr || setjmp(png_jmpbuf(png)) != 0) {
    png_destroy_write_struct(&png, &info);
    return false;
  }
  png_init_io(png, file);
  png_set_user_limits(png, 0x7fffffff, 0x7fffffff);
  png_set_IHDR(png, info, shape.width, shape.height, 1, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (shape.dotsPerMetre != 0) {
    png_set_pHYs(png, info, shape.dotsPerMetre, shape.dotsPerMetre, PNG_RESOLUTION_METER);
  }
  png_write_info(png, info);
  png_set_invert_mono(png);
  for (size_t y = 0; y < shape.height; ++y) png_write_row(png, dots + y * shape.rowBytes);
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return true;
}

}  // namespace

size_t bytesPerRow(const StreamItem& area, const std::vector<size_t>& blocks, bool complete) {
  const size_t areaBytes = area.word(2) / 8;
  if (!isFullWidth(area)) return areaBytes;
  if (blocks.empty()) return 0;
  if (blocks.size() > 1) {
    // A row shorter than the area means that a block's length has wrapped at 16 bits.
    const size_t row = blocks[0] / kRowsPerBlock;
    return blocks[0] % kRowsPerBlock == 0 && row >= areaBytes ? row : 0;
  }
  return complete ? rowOfSingleBlock(blocks[0], areaBytes) : 0;
}

void PagePicture::begin(const StreamItem& area) {
  area_ = area;
  blocks_.clear();
  dots_.clear();
}

void PagePicture::add(const StreamItem& image) {
  blocks_.push_back(image.data.size());
  dots_.insert(dots_.end(), image.data.begin(), image.data.end());
}

size_t PagePicture::height() const {
  const size_t row = rowBytes();
  return row == 0 ? 0 : dots_.size() / row;
}

std::string PagePicture::checkShape() const {
  if (rowBytes() == 0) return "the packets leave the row length open, so there is no picture";
  if (height() == 0 || dots_.size() % rowBytes() != 0) {
    return "the image of " + std::to_string(dots_.size()) + " bytes is not whole rows of " +
           std::to_string(rowBytes()) + " bytes";
  }
  return std::string();
}

std::string PagePicture::writePng(const std::string& path, unsigned dpi) const {
  std::string fault = checkShape();
  if (!fault.empty()) return fault;
  File file(std::fopen(path.c_str(), "wb"));
  if (!file) return cannotWrite(path);
  const PngShape shape = {static_cast<png_uint_32>(width()), static_cast<png_uint_32>(height()),
                          rowBytes(), static_cast<png_uint_32>(std::lround(dpi / 0.0254))};
  if (!encodePng(file.get(), shape, dots_.data())) return "cannot write " + path + " as PNG";
  return closeWritten(std::move(file), path);
}

std::string PagePicture::writePbm(const std::string& path) const {
  std::string fault = checkShape();
  if (!fault.empty()) return fault;
  File file(std::fopen(path.c_str(), "wb"));
  if (!file) return cannotWrite(path);
  std::fprintf(file.get(), "P4\n%zu %zu\n", width(), height());
  if (std::fwrite(dots_.data(), 1, dots_.size(), file.get()) != dots_.size()) {
    return cannotWrite(path);
  }
  return closeWritten(std::move(file), path);
}

}  // namespace korvel
