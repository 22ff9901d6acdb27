// One line per item; packets have the names that the printer's commands have.
// SPDX-License-Identifier: Apache-2.0
#include "tools/stream/stream_listing.h"

#include <cstdio>

#include "tools/stream/page_picture.h"

namespace korvel {
namespace {

std::string imageText(const StreamItem& item, size_t rowBytes) {
  const size_t length = item.data.size();
  if (rowBytes != 0 && length != 0 && length % rowBytes == 0) {
    return "image " + std::to_string(length / rowBytes) + " rows x " + std::to_string(rowBytes) +
           " bytes";
  }
  return "image " + std::to_string(length) + " bytes, rows unknown";
}

std::string number(unsigned value) { return std::to_string(value); }

}  // namespace

std::string itemText(const StreamItem& item, size_t rowBytes) {
  switch (item.kind) {
    case ItemKind::kPageStart:
      return "page start 64 nul";
    case ItemKind::kControl:
      return "control " + number(item.data[0]);
    case ItemKind::kDensity:
      return "density " + number(item.data[0]);
    case ItemKind::kFeed:
      return "feed mode " + number(item.data[0]) + " lines " + number(item.word(1));
    case ItemKind::kCut:
      return "cut";
    case ItemKind::kArea:
      return "area offset " + number(item.word(0)) + " width " + number(item.word(2));
    case ItemKind::kImage:
      return imageText(item, rowBytes);
    case ItemKind::kStatusRequest:
      return "status request";
  }
  return std::string();
}

void StreamListing::add(const StreamItem& item) {
  const bool isImage = item.kind == ItemKind::kImage;
  if (isImage) blocks_.push_back(item.data.size());
  if (waiting_) write(held_, !isImage);
  waiting_ = false;
  if (item.kind == ItemKind::kArea || item.kind == ItemKind::kPageStart) {
    blocks_.clear();
    haveArea_ = item.kind == ItemKind::kArea;
    area_ = item;
  }
  if (isImage && haveArea_ && bytesPerRow(area_, blocks_, false) == 0 && blocks_.size() == 1) {
    held_ = item;
    waiting_ = true;
  } else {
    write(item, false);
  }
}

void StreamListing::finish() {
  if (waiting_) write(held_, true);
  waiting_ = false;
}

void StreamListing::write(const StreamItem& item, bool complete) {
  const bool inRows = item.kind == ItemKind::kImage && haveArea_;
  const size_t row = inRows ? bytesPerRow(area_, blocks_, complete) : 0;
  char offset[24];
  std::snprintf(offset, sizeof offset, "%06llu ", static_cast<unsigned long long>(item.offset));
  line_(offset + itemText(item, row));
}

}  // namespace korvel
