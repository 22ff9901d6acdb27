// Rows from packets, and the two file formats. A set bit is a printed dot, black in both.
// SPDX-License-Identifier: Apache-2.0
#include "tools/stream/page_picture.h"

#include <cstdio>
#include <memory>

#include "tools/common/png_file.h"

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

Result<void> closeWritten(File file, const std::string& path) {
  if (std::fclose(file.release()) != 0) return cannotWrite(path);
  return {};
}

}  // namespace

size_t bytesPerRow(const StreamItem& area, const std::vector<size_t>& blocks, bool complete) {
  const size_t areaBytes = area.word(2) / 8;
  if (!isFullWidth(area)) return areaBytes;
  if (blocks.empty()) return 0;
  if (blocks.size() > 1) {
    // A row shorter than the area means that the length of a block has wrapped at 16 bits.
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

Result<void> PagePicture::checkShape() const {
  if (rowBytes() == 0) {
    return Failure{"The packets do not determine the row length, so there is no picture."};
  }
  if (height() == 0 || dots_.size() % rowBytes() != 0) {
    return Failure{"The image of " + std::to_string(dots_.size()) +
                   " bytes does not consist of whole rows of " + std::to_string(rowBytes()) +
                   " bytes."};
  }
  return {};
}

Result<void> PagePicture::writePng(const std::string& path, unsigned dpi) const {
  const Result<void> shaped = checkShape();
  if (!shaped) return shaped;
  const PngPicture picture = {width(), height(), rowBytes(), 1, dpi, {}};
  return writePngFile(path, picture, dots_.data());
}

Result<void> PagePicture::writePbm(const std::string& path) const {
  const Result<void> shaped = checkShape();
  if (!shaped) return shaped;
  File file(std::fopen(path.c_str(), "wb"));
  if (!file) return cannotWrite(path);
  std::fprintf(file.get(), "P4\n%zu %zu\n", width(), height());
  if (std::fwrite(dots_.data(), 1, dots_.size(), file.get()) != dots_.size()) {
    return cannotWrite(path);
  }
  return closeWritten(std::move(file), path);
}

}  // namespace korvel
