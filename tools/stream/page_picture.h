// The picture of one page's image packets, one bit per dot. No packet contains the length of a row,
// so it is derived from their lengths. Written as PNG or PBM, with black dots.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_STREAM_PAGE_PICTURE_H
#define KORVEL_TOOLS_STREAM_PAGE_PICTURE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/common/result.h"
#include "tools/stream/stream_decoder.h"

namespace korvel {

// Bytes of a row of the image that follows an area packet; 0 when they cannot be determined.
// `blocks` are the data lengths of the image packets known so far; `complete` says that no more
// follow. A narrow area is as wide as its image. A full-width area says nothing about the image's
// width, but every packet except the last has four rows, and no row is shorter than the area.
size_t bytesPerRow(const StreamItem& area, const std::vector<size_t>& blocks, bool complete);

class PagePicture {
 public:
  // Starts a new page with its area packet.
  void begin(const StreamItem& area);
  void add(const StreamItem& image);

  bool empty() const { return dots_.empty(); }
  const StreamItem& area() const { return area_; }
  size_t rowBytes() const { return bytesPerRow(area_, blocks_, true); }  // 0: unknown
  size_t width() const { return rowBytes() * 8; }                        // dots
  size_t height() const;
  const std::vector<uint8_t>& dots() const { return dots_; }  // leftmost in the top bit, 1 prints

  // Whether the packets make a picture of whole rows; the failure is always in English.
  Result<void> checkShape() const;
  Result<void> writePng(const std::string& path, unsigned dpi) const;  // `dpi` 0: no resolution
  Result<void> writePbm(const std::string& path) const;

 private:
  StreamItem area_;
  std::vector<size_t> blocks_;
  std::vector<uint8_t> dots_;
};

}  // namespace korvel

#endif
