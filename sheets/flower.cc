// Petals are painted from the outermost ring inwards, each over what lies behind it.
// SPDX-License-Identifier: Apache-2.0
#include "sheets/flower.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace korvel {
namespace {

constexpr double kTurn = 2 * std::numbers::pi;
constexpr double kGoldenTurn = 2.399963229728653;  // of seeds, Vogel (1979)

struct Petal {
  Point root;
  double angle;
  double length;
  double halfWidth;
  double stroke;
  double shade;  // ink at the root
};

// Half the width at a part of the length, 0 at both ends: round below, pointed above.
double outlineAt(double along) {
  if (along <= 0 || along >= 1) return 0;
  return 1.9 * std::sqrt(along) * (1 - along) * (1 + 0.35 * along);
}

// Along and across a petal, as parts of its length and half width; 0 outside.
uint8_t inkAt(const Petal& petal, double along, double across, bool* inside) {
  const double half = outlineAt(along) * petal.halfWidth;
  const double edge = half - std::abs(across);
  *inside = edge > 0;
  if (edge < petal.stroke || (1 - along) * petal.length < petal.stroke * 2) return 255;
  if (std::abs(across) < petal.stroke * 0.3 && along > 0.2 && along < 0.72) return 255;
  const double fade = std::clamp(1 - along / 0.95, 0.0, 1.0);
  const double hollow = 1 - 0.6 * std::abs(across) / half;
  const double rim = 0.16 * std::clamp(1 - edge / (petal.halfWidth * 0.3), 0.0, 1.0);
  return static_cast<uint8_t>(255 * std::clamp(petal.shade * fade * hollow + rim, 0.0, 0.9));
}

void paintPetal(DotCanvas* canvas, const Petal& petal) {
  const double cosine = std::cos(petal.angle);
  const double sine = std::sin(petal.angle);
  const int reach = static_cast<int>(petal.length + petal.halfWidth) + 2;
  const int left = static_cast<int>(petal.root.x);
  const int top = static_cast<int>(petal.root.y);
  for (int y = top - reach; y <= top + reach; ++y) {
    for (int x = left - reach; x <= left + reach; ++x) {
      const double dx = x + 0.5 - petal.root.x;
      const double dy = y + 0.5 - petal.root.y;
      const double along = (dx * cosine + dy * sine) / petal.length;
      if (along <= 0 || along >= 1) continue;
      bool inside = false;
      const uint8_t ink = inkAt(petal, along, dy * cosine - dx * sine, &inside);
      if (inside) canvas->set(x, y, ink);
    }
  }
}

void paintRing(DotCanvas* canvas, Point centre, int count, double turn, Petal petal) {
  for (int i = 0; i < count; ++i) {
    petal.root = centre;
    petal.angle = kTurn * (i + turn) / count;
    paintPetal(canvas, petal);
  }
}

void paintSeeds(DotCanvas* canvas, Point centre, double radius, double stroke) {
  canvas->ring(centre, radius / 2, radius, 0);
  canvas->ring(centre, radius, stroke);
  const int count = 90;
  for (int i = 2; i < count; ++i) {
    const double way = radius * 0.9 * std::sqrt(static_cast<double>(i) / count);
    const Point at = {centre.x + way * std::cos(i * kGoldenTurn),
                      centre.y + way * std::sin(i * kGoldenTurn)};
    const double size = std::max(stroke, radius * (0.05 + 0.05 * i / count));
    canvas->line(at, at, size);
  }
}

}  // namespace

void paintFlower(DotCanvas* canvas, Point centre, double radius, double stroke) {
  struct Ring {
    int count;
    double turn, length, halfWidth, shade;  // lengths as parts of the radius
  };
  constexpr Ring kRings[] = {{16, 0.0, 1.00, 0.165, 0.75},
                             {16, 0.5, 0.86, 0.150, 0.85},
                             {14, 0.25, 0.70, 0.135, 0.85},
                             {12, 0.0, 0.55, 0.120, 0.90},
                             {10, 0.5, 0.40, 0.100, 0.95}};
  for (const Ring& ring : kRings) {
    paintRing(canvas, centre, ring.count, ring.turn,
              {centre, 0, radius * ring.length, radius * ring.halfWidth, stroke, ring.shade});
  }
  paintSeeds(canvas, centre, radius * 0.17, stroke);
}

}  // namespace korvel
