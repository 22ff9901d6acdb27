// A shape consists of the dots whose centres are inside it. Only the four basic operations are
// used, so that a picture is the same on every machine. SPDX-License-Identifier: Apache-2.0
#include "drawing/dot_canvas.h"

#include <algorithm>
#include <cmath>

#include "drawing/dot_font.h"

namespace korvel {
namespace {

constexpr int kCapRows = 7;
constexpr double kSmallestStroke = 2.5;  // dots per font row; letters below it are drawn as squares
constexpr double kRegularStroke = 0.9;   // of a font row

double squaredDistance(Point from, Point to, Point p) {
  const double dx = to.x - from.x;
  const double dy = to.y - from.y;
  const double length = dx * dx + dy * dy;
  double along = 0;
  if (length > 0)
    along = std::clamp(((p.x - from.x) * dx + (p.y - from.y) * dy) / length, 0.0, 1.0);
  const double ex = p.x - (from.x + along * dx);
  const double ey = p.y - (from.y + along * dy);
  return ex * ex + ey * ey;
}

int floorOf(double value) { return static_cast<int>(std::floor(value)); }

}  // namespace

void DotCanvas::set(int x, int y, uint8_t ink) {
  if (x >= 0 && y >= 0 && x < width_ && y < height_) dots_[index(x, y)] = ink;
}

void DotCanvas::fill(int left, int top, int width, int height, uint8_t ink) {
  const int right = std::min(left + width, width_);
  const int bottom = std::min(top + height, height_);
  for (int y = std::max(top, 0); y < bottom; ++y) {
    for (int x = std::max(left, 0); x < right; ++x) dots_[index(x, y)] = ink;
  }
}

void DotCanvas::frame(int left, int top, int width, int height, int thickness, uint8_t ink) {
  fill(left, top, width, thickness, ink);
  fill(left, top + height - thickness, width, thickness, ink);
  fill(left, top, thickness, height, ink);
  fill(left + width - thickness, top, thickness, height, ink);
}

void DotCanvas::paste(const DotCanvas& picture, int left, int top) {
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) set(left + x, top + y, picture.at(x, y));
  }
}

void DotCanvas::line(Point from, Point to, double thickness, uint8_t ink) {
  const double radius = thickness / 2;
  const int right = floorOf(std::max(from.x, to.x) + radius);
  const int bottom = floorOf(std::max(from.y, to.y) + radius);
  for (int y = floorOf(std::min(from.y, to.y) - radius); y <= bottom; ++y) {
    for (int x = floorOf(std::min(from.x, to.x) - radius); x <= right; ++x) {
      if (squaredDistance(from, to, {x + 0.5, y + 0.5}) <= radius * radius) set(x, y, ink);
    }
  }
}

void DotCanvas::ring(Point centre, double radius, double thickness, uint8_t ink) {
  const double outer = radius + thickness / 2;
  const double inner = std::max(0.0, radius - thickness / 2);
  for (int y = floorOf(centre.y - outer); y <= floorOf(centre.y + outer); ++y) {
    for (int x = floorOf(centre.x - outer); x <= floorOf(centre.x + outer); ++x) {
      const double distance = squaredDistance(centre, centre, {x + 0.5, y + 0.5});
      if (distance >= inner * inner && distance <= outer * outer) set(x, y, ink);
    }
  }
}

// ---- Text ----

namespace {

// The strokes between the dots of a glyph: between neighbours in a row or column, and between
// diagonal ones that no third dot connects already.
void drawGlyph(DotCanvas* canvas, Point topLeft, char letter, double unit, const TextStyle& style) {
  const double thickness = unit * kRegularStroke * style.weight;
  const auto centre = [&](int column, int row) {
    return Point{topLeft.x + (column + 0.5) * unit, topLeft.y + (row + 0.5) * unit};
  };
  for (int row = 0; row < kGlyphRows; ++row) {
    for (int column = 0; column < kGlyphColumns; ++column) {
      if (!glyphDot(letter, column, row)) continue;
      const Point here = centre(column, row);
      const bool right = glyphDot(letter, column + 1, row);
      const bool below = glyphDot(letter, column, row + 1);
      const bool left = glyphDot(letter, column - 1, row);
      canvas->line(here, here, thickness, style.ink);
      if (right) canvas->line(here, centre(column + 1, row), thickness, style.ink);
      if (below) canvas->line(here, centre(column, row + 1), thickness, style.ink);
      if (!right && !below && glyphDot(letter, column + 1, row + 1)) {
        canvas->line(here, centre(column + 1, row + 1), thickness, style.ink);
      }
      if (!left && !below && glyphDot(letter, column - 1, row + 1)) {
        canvas->line(here, centre(column - 1, row + 1), thickness, style.ink);
      }
    }
  }
}

void drawSmallGlyph(DotCanvas* canvas, Point topLeft, char letter, int unit, uint8_t ink) {
  for (int row = 0; row < kGlyphRows; ++row) {
    for (int column = 0; column < kGlyphColumns; ++column) {
      if (!glyphDot(letter, column, row)) continue;
      canvas->fill(floorOf(topLeft.x) + column * unit, floorOf(topLeft.y) + row * unit, unit, unit,
                   ink);
    }
  }
}

// Dots per font row: a whole number for small letters.
double unitOf(const TextStyle& style) {
  const double unit = style.capHeight / kCapRows;
  return unit < kSmallestStroke ? std::max(1.0, std::floor(unit + 0.5)) : unit;
}

}  // namespace

double textWidth(const std::string& text, const TextStyle& style) {
  if (text.empty()) return 0;
  return (static_cast<double>(text.size()) * kGlyphAdvance - 1) * unitOf(style);
}

void drawText(DotCanvas* canvas, Point topLeft, const std::string& text, const TextStyle& style) {
  const double unit = unitOf(style);
  Point at = topLeft;
  for (const char letter : text) {
    if (unit < kSmallestStroke) {
      drawSmallGlyph(canvas, at, letter, static_cast<int>(unit), style.ink);
    } else {
      drawGlyph(canvas, at, letter, unit, style);
    }
    at.x += kGlyphAdvance * unit;
  }
}

void drawTextCentred(DotCanvas* canvas, Point centre, const std::string& text,
                     const TextStyle& style) {
  const double height = unitOf(style) * kCapRows;
  drawText(canvas, {centre.x - textWidth(text, style) / 2, centre.y - height / 2}, text, style);
}

void drawTextRight(DotCanvas* canvas, Point topRight, const std::string& text,
                   const TextStyle& style) {
  drawText(canvas, {topRight.x - textWidth(text, style), topRight.y}, text, style);
}

}  // namespace korvel
