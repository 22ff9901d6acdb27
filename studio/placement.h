// Where the document lies on the page: what the user chose, and the transformation that follows.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_PLACEMENT_H
#define KORVEL_STUDIO_PLACEMENT_H

#include <array>
#include <string>

namespace korvel {

enum class Fit { kFit, kFill, kTrueSize, kOwn };

struct Placement {
  Fit fit = Fit::kFit;
  double scale = 1;  // of the true size; kOwn only
  double right = 0;  // millimetres from the middle of the printable area to the document's middle
  double down = 0;
  double turn = 0;  // degrees, clockwise
};

// A sheet or label, in points; the margins cannot be printed.
struct PageGeometry {
  double width = 0;
  double height = 0;
  double left = 0;
  double right = 0;
  double top = 0;
  double bottom = 0;
  double dpi = 0;  // documents lie on whole dots; 0: anywhere

  double printableWidth() const { return width - left - right; }
  double printableHeight() const { return height - top - bottom; }
};

// The document's own size, in points.
struct TrueSize {
  double width = 0;
  double height = 0;
};

// x' = a x + c y + e, y' = b x + d y + f: from the document, origin at its lower left corner, to
// the page, origin at the lower left corner of the media.
using Matrix = std::array<double, 6>;

struct PlacedDocument {
  double scale = 1;  // of the true size
  Matrix matrix = {1, 0, 0, 1, 0, 0};
  // Of the upright box around it, in points from the printable area's upper left corner.
  double left = 0;
  double top = 0;
  double width = 0;
  double height = 0;
};

PlacedDocument place(const Placement& placement, const PageGeometry& page,
                     const TrueSize& document);

// From the pixels of a picture of `columns` by `rows` to the dots of the printable area, both
// counted from the upper left corner.
Matrix dotsOfPixels(const PlacedDocument& placed, const PageGeometry& page,
                    const TrueSize& document, double columns, double rows);

// Six numbers between blanks, with a point whatever the locale, as PDF writes them.
std::string matrixText(const Matrix& matrix);

}  // namespace korvel

#endif
