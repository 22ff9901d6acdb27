// Turned about its middle, scaled, and moved to its place.
// SPDX-License-Identifier: Apache-2.0
#include "studio/placement.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "tools/common/units.h"

namespace korvel {
namespace {

constexpr double kDegree = 3.14159265358979323846 / 180;

// Quarter turns are exact, so that edges stay edges.
void cosineAndSine(double degrees, double* cosine, double* sine) {
  const double quarters = degrees / 90;
  if (quarters == std::floor(quarters)) {
    const int quarter = ((static_cast<int>(std::fmod(quarters, 4)) % 4) + 4) % 4;
    *cosine = quarter == 0 ? 1 : quarter == 2 ? -1 : 0;
    *sine = quarter == 1 ? 1 : quarter == 3 ? -1 : 0;
    return;
  }
  *cosine = std::cos(degrees * kDegree);
  *sine = std::sin(degrees * kDegree);
}

double scaleOf(const Placement& placement, const PageGeometry& page, double width, double height) {
  const double across = page.printableWidth() / width;
  const double along = page.printableHeight() / height;
  switch (placement.fit) {
    case Fit::kFit:
      return std::min(across, along);
    case Fit::kFill:
      return std::max(across, along);
    case Fit::kTrueSize:
      return 1;
    case Fit::kOwn:
      return placement.scale;
  }
  return 1;
}

// A corner in points, moved by millimetres. A document that is moved keeps its dots.
double onWholeDot(double corner, double byMm, double dpi) {
  if (dpi == 0) return corner + byMm * kPointsPerMm;
  const double pointsPerDot = kPointsPerInch / dpi;
  return (std::round(corner / pointsPerDot) + std::round(byMm * kPointsPerMm / pointsPerDot)) *
         pointsPerDot;
}

// In thousandths of a thousandth, with all its digits before the point.
std::string decimal(double value) {
  const long long millionths = std::llround(value * 1e6);
  const unsigned long long size = static_cast<unsigned long long>(std::llabs(millionths));
  std::string digits = std::to_string(size);
  if (digits.size() < 7) digits.insert(0, 7 - digits.size(), '0');
  digits.insert(digits.size() - 6, ".");
  return (millionths < 0 ? "-" : "") + digits;
}

}  // namespace

PlacedDocument place(const Placement& placement, const PageGeometry& page,
                     const TrueSize& document) {
  double cosine = 1;
  double sine = 0;
  cosineAndSine(placement.turn, &cosine, &sine);
  const double width =
      std::fabs(document.width * cosine) + std::fabs(document.height * sine);  // of the turned one
  const double height = std::fabs(document.width * sine) + std::fabs(document.height * cosine);
  PlacedDocument placed;
  placed.scale = scaleOf(placement, page, width, height);
  const double a = placed.scale * cosine;
  const double b = -placed.scale * sine;  // clockwise on a page whose y axis points up
  placed.width = width * placed.scale;
  placed.height = height * placed.scale;
  placed.left = onWholeDot((page.printableWidth() - placed.width) / 2, placement.right, page.dpi);
  placed.top = onWholeDot((page.printableHeight() - placed.height) / 2, placement.down, page.dpi);
  const double middleX = page.left + placed.left + placed.width / 2;
  const double middleY = page.height - page.top - placed.top - placed.height / 2;
  const double halfX = document.width / 2;
  const double halfY = document.height / 2;
  placed.matrix = {a, b, -b, a, middleX - a * halfX + b * halfY, middleY - b * halfX - a * halfY};
  return placed;
}

Matrix dotsOfPixels(const PlacedDocument& placed, const PageGeometry& page,
                    const TrueSize& document, double columns, double rows) {
  const auto& [a, b, c, d, e, f] = placed.matrix;
  const double dotsPerPoint = page.dpi / kPointsPerInch;
  const double across = dotsPerPoint * document.width / columns;
  const double down = dotsPerPoint * document.height / rows;
  return {a * across,
          -b * across,
          -c * down,
          d * down,
          dotsPerPoint * (c * document.height + e - page.left),
          dotsPerPoint * (page.height - page.top - d * document.height - f)};
}

std::string matrixText(const Matrix& matrix) {
  std::string text;
  for (const double value : matrix) text += (text.empty() ? "" : " ") + decimal(value);
  return text;
}

}  // namespace korvel
