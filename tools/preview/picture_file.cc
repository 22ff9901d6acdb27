// The spooler's picture filter prints what there is of a JPEG or TIFF file and reports nothing, so
// the structure of the file has to tell. SPDX-License-Identifier: Apache-2.0
#include "tools/preview/picture_file.h"

#include <cstdint>
#include <string_view>
#include <vector>

#include "tools/common/file_content.h"

namespace korvel {
namespace {

constexpr PictureFile kEndsEarly = {{}, true};

enum class Order { kBigEndian, kLittleEndian };

// Zero beyond the end.
uint32_t numberAt(std::string_view bytes, size_t at, size_t count,
                  Order order = Order::kBigEndian) {
  uint32_t value = 0;
  if (at > bytes.size() || count > bytes.size() - at) return 0;
  for (size_t i = 0; i < count; ++i) {
    const size_t from = order == Order::kBigEndian ? at + i : at + count - 1 - i;
    value = value << 8 | static_cast<uint8_t>(bytes[from]);
  }
  return value;
}

DotSize sizeOf(uint32_t width, uint32_t height) {
  return {static_cast<int>(width), static_cast<int>(height)};
}

// The size is in the first chunk; the last one is IEND.
PictureFile pngFile(std::string_view bytes) {
  PictureFile picture = {sizeOf(numberAt(bytes, 16, 4), numberAt(bytes, 20, 4)), true};
  constexpr uint64_t kAroundData = 12;  // length, name, checksum
  for (uint64_t at = 8; at + kAroundData <= bytes.size();) {
    const uint64_t end = at + kAroundData + numberAt(bytes, at, 4);
    if (end > bytes.size()) break;
    if (bytes.substr(at + 4, 4) == "IEND") picture.endsEarly = false;
    at = end;
  }
  return picture;
}

// The size is in the frame header: a segment C0 to CF, except three that are tables. The pixels
// follow the segment DA and end with FF D9, which is nowhere among them.
PictureFile jpegFile(std::string_view bytes) {
  PictureFile picture;
  for (size_t at = 2; at + 4 <= bytes.size();) {
    if (bytes[at] != '\xFF') return picture;
    const uint32_t marker = numberAt(bytes, at + 1, 1);
    if (marker == 0xFF) {
      ++at;
      continue;
    }
    if (marker == 0xDA) {
      picture.endsEarly = bytes.find("\xFF\xD9", at) == std::string_view::npos;
      return picture;
    }
    const bool frame =
        marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
    if (frame) picture.size = sizeOf(numberAt(bytes, at + 7, 2), numberAt(bytes, at + 5, 2));
    at += 2 + numberAt(bytes, at + 2, 2);
  }
  picture.endsEarly = true;
  return picture;
}

// A TIFF's first directory: fields of 12 bytes, a tag, a type and a count, then the value or where
// the values are.
class TiffDirectory {
 public:
  explicit TiffDirectory(std::string_view bytes)
      : bytes_(bytes),
        order_(bytes.starts_with("II") ? Order::kLittleEndian : Order::kBigEndian),
        start_(number(4, 4)),
        fields_(number(start_, 2)) {}

  bool isWhole() const { return start_ > 0 && start_ + 2 + fields_ * kFieldBytes <= bytes_.size(); }

  std::vector<uint32_t> values(uint32_t tag) const {
    std::vector<uint32_t> all;
    for (size_t i = 0; i < fields_; ++i) {
      const size_t field = start_ + 2 + i * kFieldBytes;
      if (number(field, 2) != tag) continue;
      const size_t bytes = number(field + 2, 2) == kShort ? 2 : 4;
      const size_t count = number(field + 4, 4);
      const size_t from = count * bytes <= 4 ? field + 8 : number(field + 8, 4);
      for (size_t k = 0; k < count && from + k * bytes < bytes_.size(); ++k) {
        all.push_back(number(from + k * bytes, bytes));
      }
    }
    return all;
  }
  uint32_t value(uint32_t tag) const {
    const std::vector<uint32_t> all = values(tag);
    return all.empty() ? 0 : all[0];
  }
  // Whether the strips or tiles of these two tags, where they are and how long, are in the file.
  bool has(uint32_t offsetTag, uint32_t lengthTag) const {
    const std::vector<uint32_t> offsets = values(offsetTag);
    const std::vector<uint32_t> lengths = values(lengthTag);
    for (size_t i = 0; i < offsets.size() && i < lengths.size(); ++i) {
      if (uint64_t{offsets[i]} + lengths[i] > bytes_.size()) return false;
    }
    return true;
  }

 private:
  static constexpr size_t kFieldBytes = 12;
  static constexpr uint32_t kShort = 3;

  uint32_t number(size_t at, size_t count) const { return numberAt(bytes_, at, count, order_); }

  std::string_view bytes_;
  Order order_;
  size_t start_;
  size_t fields_;
};

PictureFile tiffFile(std::string_view bytes) {
  const TiffDirectory directory(bytes);
  if (!directory.isWhole()) return kEndsEarly;
  return {sizeOf(directory.value(256), directory.value(257)),
          !directory.has(273, 279) || !directory.has(324, 325)};
}

}  // namespace

PictureFile readPictureFile(const std::string& path) {
  const std::string bytes = contentOf(path);
  if (bytes.starts_with("\x89PNG")) return pngFile(bytes);
  if (bytes.starts_with("\xFF\xD8")) return jpegFile(bytes);
  if (bytes.starts_with(std::string("II*\0", 4)) || bytes.starts_with(std::string("MM\0*", 4))) {
    return tiffFile(bytes);
  }
  return {};
}

}  // namespace korvel
