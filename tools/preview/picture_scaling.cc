// Without options the filter makes a picture as large as the printable area allows. A picture that
// is as large already, in one direction at least, keeps its pixels. SPDX-License-Identifier:
// Apache-2.0
#include "tools/preview/picture_scaling.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string_view>

namespace korvel {
namespace {

// Big-endian; zero beyond the end.
int numberAt(std::string_view bytes, size_t at, size_t count) {
  uint32_t value = 0;
  if (at + count > bytes.size()) return 0;
  for (size_t i = 0; i < count; ++i) value = value << 8 | static_cast<uint8_t>(bytes[at + i]);
  return static_cast<int>(value);
}

// The size is in the frame header: a segment C0 to CF, except three that are tables.
DotSize jpegSize(std::string_view bytes) {
  for (size_t at = 2; at + 9 < bytes.size() && bytes[at] == '\xFF';) {
    const int marker = numberAt(bytes, at + 1, 1);
    const bool frame =
        marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
    if (frame) return {numberAt(bytes, at + 7, 2), numberAt(bytes, at + 5, 2)};
    at += 2 + static_cast<size_t>(numberAt(bytes, at + 2, 2));
  }
  return {};
}

double factor(const DotSize& picture, const DotSize& area) {
  return std::min(static_cast<double>(area.width) / picture.width,
                  static_cast<double>(area.height) / picture.height);
}

const std::string* valueOf(const Options& options, const char* name) {
  for (const auto& [option, value] : options) {
    if (option == name) return &value;
  }
  return nullptr;
}

bool dependsOnDensity(const Options& options) {
  const std::string* printScaling = valueOf(options, "print-scaling");
  return valueOf(options, "natural-scaling") != nullptr || valueOf(options, "ppi") != nullptr ||
         (printScaling != nullptr && *printScaling == "none");
}

}  // namespace

DotSize pictureSize(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  if (bytes.starts_with("\x89PNG")) return {numberAt(bytes, 16, 4), numberAt(bytes, 20, 4)};
  return bytes.starts_with("\xFF\xD8") ? jpegSize(bytes) : DotSize{};
}

DotSize sizeOnPage(const DotSize& picture, const DotSize& printable, const Options& options) {
  if (picture.width <= 0 || picture.height <= 0) return picture;
  if (printable.width <= 0 || printable.height <= 0 || dependsOnDensity(options)) return picture;
  double scale =
      std::max(factor(picture, printable), factor(picture, {printable.height, printable.width}));
  const std::string* percent = valueOf(options, "scaling");
  if (percent != nullptr) scale *= std::atof(percent->c_str()) / 100;
  constexpr double kRounding = 0.001;
  return {static_cast<int>(picture.width * scale + kRounding),
          static_cast<int>(picture.height * scale + kRounding)};
}

}  // namespace korvel
