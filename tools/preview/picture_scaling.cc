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

bool hasArea(const DotSize& size) { return size.width > 0 && size.height > 0; }

double turnedFactor(const DotSize& picture, const DotSize& area) {
  return factor(picture, {area.height, area.width});
}

}  // namespace

DotSize sizeOnPage(const DotSize& picture, const DotSize& printable, const Options& options) {
  if (!hasArea(picture) || !hasArea(printable) || dependsOnDensity(options)) return picture;
  double scale = std::max(factor(picture, printable), turnedFactor(picture, printable));
  const std::string* percent = valueOf(options, "scaling");
  if (percent != nullptr) scale *= std::atof(percent->c_str()) / 100;
  constexpr double kRounding = 0.001;
  return {static_cast<int>(picture.width * scale + kRounding),
          static_cast<int>(picture.height * scale + kRounding)};
}

bool isTurnedOnPage(const DotSize& picture, const DotSize& printable, const Options& options) {
  if (!hasArea(picture) || !hasArea(printable) || dependsOnDensity(options)) return false;
  if (valueOf(options, "orientation-requested") != nullptr) return false;
  if (valueOf(options, "landscape") != nullptr) return false;
  return turnedFactor(picture, printable) > factor(picture, printable);
}

}  // namespace korvel
