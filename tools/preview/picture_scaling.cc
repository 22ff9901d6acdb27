// Without options the filter makes a picture as large as the printable area allows. A picture that
// is as large already, in one direction at least, keeps its pixels.
// SPDX-License-Identifier: Apache-2.0
#include "tools/preview/picture_scaling.h"

#include <algorithm>
#include <cstdlib>

namespace korvel {
namespace {

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
