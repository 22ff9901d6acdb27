// The picture that one page's image packets make: one bit a dot, and how its rows are found again,
// for no packet says how long a row is. Written out as PNG or PBM, printed dots black.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_STREAM_PAGE_PICTURE_H
#define KORVEL_TOOLS_STREAM_PAGE_PICTURE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/stream/stream_decoder.h"

namespace korvel {

// Bytes of a row of the image that follows an area packet; 0 when the packets leave it open.
// `blocks` are the data lengths of the image packets known so far; pass `complete` when no more
// follow. A narrow area is as wide as its image. A full one hides the image's width, but every
// packet save the last carries four rows, and no row is shorter than the area.
size_t bytesPerRow(const StreamItem& area, const std::vector<size_t>& blocks, bool complete);

class PagePicture {
 public:
  // Starts a page over with its area packet.
  void begin(const StreamItem& area);
  void add(const StreamItem& image);

  bool empty() const { return dots_.empty(); }
  const StreamItem& area() const { return area_; }
  size_t rowBytes() const { return bytesPerRow(area_, blocks_, true); }  // 0: cannot be known
  size_t width() const { return rowBytes() * 8; }                        // dots
  size_t height() const;
  const std::vector<uint8_t>& dots() const { return dots_; }  // leftmost in the top bit, 1 prints

  // Both return an empty text, or one sentence on what went wrong. `dpi` 0 writes no resolution.
  // Empty when the packets make a picture, or what is wrong with them, always in English.
  std::string checkShape() const;
  std::string writePng(const std::string& path, unsigned dpi) const;
  std::string writePbm(const std::string& path) const;

 private:
  StreamItem area_;
  std::vector<size_t> blocks_;
  std::vector<uint8_t> dots_;
};

}  // namespace korvel

#endif
