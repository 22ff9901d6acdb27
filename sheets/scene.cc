// A small ray tracer after Whitted (1980): balls, a floor, one lamp of some width, mirrors once.
// SPDX-License-Identifier: Apache-2.0
#include "sheets/scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace korvel {
namespace {

struct Vector {
  double x = 0;
  double y = 0;
  double z = 0;
};

Vector operator+(Vector a, Vector b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
Vector operator-(Vector a, Vector b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Vector operator*(double f, Vector a) { return {f * a.x, f * a.y, f * a.z}; }
double dot(Vector a, Vector b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Vector unit(Vector a) { return 1 / std::sqrt(dot(a, a)) * a; }

struct Ball {
  Vector centre;
  double radius;
  double white;   // of its own colour
  double mirror;  // part of the light that it mirrors
};

constexpr std::array<Ball, 5> kBalls = {{{{-0.15, 0.95, 0.35}, 0.95, 0.95, 0.10},
                                         {{1.45, 0.6, -0.35}, 0.6, 0.30, 0.45},
                                         {{-1.45, 0.5, -0.55}, 0.5, 0.60, 0.20},
                                         {{0.55, 0.27, -1.2}, 0.27, 1.00, 0.05},
                                         {{2.9, 0.85, 1.6}, 0.85, 0.75, 0.10}}};

constexpr Vector kEye = {0.15, 1.35, -5.2};
constexpr Vector kLamp = {-3.5, 5.5, -4.5};
constexpr double kLampWidth = 0.9;
constexpr int kLampPoints = 3;  // in each direction
constexpr double kNear = 1e-6;
constexpr double kAmbient = 0.22;

struct Hit {
  double distance = std::numeric_limits<double>::infinity();
  Vector point;
  Vector normal;
  double white = 0;
  double mirror = 0;
};

// Along a ray of unit direction; infinity where it misses.
double distanceTo(const Ball& ball, Vector from, Vector direction) {
  const Vector offset = from - ball.centre;
  const double half = dot(offset, direction);
  const double root = half * half - dot(offset, offset) + ball.radius * ball.radius;
  if (root < 0) return std::numeric_limits<double>::infinity();
  const double near = -half - std::sqrt(root);
  return near > kNear ? near : std::numeric_limits<double>::infinity();
}

Hit trace(Vector from, Vector direction) {
  Hit hit;
  if (direction.y < 0) {
    hit.distance = -from.y / direction.y;
    hit.point = from + hit.distance * direction;
    hit.normal = {0, 1, 0};
    const auto tiles = static_cast<int64_t>(std::floor(hit.point.x) + std::floor(hit.point.z));
    hit.white = tiles % 2 == 0 ? 0.92 : 0.42;
    hit.mirror = 0.08;
  }
  for (const Ball& ball : kBalls) {
    const double distance = distanceTo(ball, from, direction);
    if (distance >= hit.distance) continue;
    hit.distance = distance;
    hit.point = from + distance * direction;
    hit.normal = 1 / ball.radius * (hit.point - ball.centre);
    hit.white = ball.white;
    hit.mirror = ball.mirror;
  }
  return hit;
}

bool isLit(Vector point, Vector lamp) {
  const Vector way = lamp - point;
  const double length = std::sqrt(dot(way, way));
  return std::none_of(kBalls.begin(), kBalls.end(), [&](const Ball& ball) {
    return distanceTo(ball, point, 1 / length * way) < length;
  });
}

// The part of the lamp that a point sees.
double lampSeen(Vector point) {
  int seen = 0;
  for (int i = 0; i < kLampPoints; ++i) {
    for (int j = 0; j < kLampPoints; ++j) {
      const double dx = (i + 0.5) / kLampPoints - 0.5;
      const double dz = (j + 0.5) / kLampPoints - 0.5;
      if (isLit(point, kLamp + Vector{dx * kLampWidth, 0, dz * kLampWidth})) ++seen;
    }
  }
  return static_cast<double>(seen) / (kLampPoints * kLampPoints);
}

double highlight(double cosine) {
  double power = std::max(0.0, cosine);
  for (int i = 0; i < 5; ++i) power *= power;  // to the 32nd
  return power;
}

double sky(Vector direction) { return 0.98 - 0.75 * std::clamp(direction.y * 1.6, 0.0, 1.0); }

// 0 is black, 1 white.
double light(Vector from, Vector direction, bool mirrored) {
  const Hit hit = trace(from, direction);
  if (std::isinf(hit.distance)) return sky(direction);
  const Vector above = hit.point + 1e-5 * hit.normal;
  const Vector toLamp = unit(kLamp - hit.point);
  const double seen = lampSeen(above);
  const double face = std::max(0.0, dot(hit.normal, toLamp));
  double level = hit.white * (kAmbient + (1 - kAmbient) * seen * face);
  const Vector turned = direction - 2 * dot(direction, hit.normal) * hit.normal;
  if (mirrored) level += hit.mirror * (light(above, turned, false) - level);
  level += 0.9 * seen * highlight(dot(turned, toLamp)) * (hit.normal.y < 1 ? 1 : 0);
  const double haze = std::clamp((hit.distance - 6) / 14, 0.0, 1.0);
  return level + haze * (sky({0, 0, 1}) - level);
}

// The whole view, painted once: levels of light from 0 to 1.
class View {
 public:
  static constexpr int kWidth = 720;
  static constexpr int kHeight = 480;

  View() : levels_(size_t{kWidth} * kHeight) {
    constexpr double kScale = 1.0 / kWidth;  // the view is as wide as it is far
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < kWidth; ++x) {
        double sum = 0;
        for (const double dx : {0.25, 0.75}) {
          for (const double dy : {0.25, 0.75}) {
            const Vector to = {(x + dx - kWidth / 2.0) * kScale,
                               (kHeight * 0.42 - y - dy) * kScale - 0.075, 1};
            sum += light(kEye, unit(to), true);
          }
        }
        levels_[static_cast<size_t>(y) * kWidth + static_cast<size_t>(x)] =
            std::clamp(sum / 4, 0.0, 1.0);
      }
    }
  }

  // Between the points of the view, linear both ways.
  double at(double x, double y) const {
    const double left = std::clamp(x - 0.5, 0.0, kWidth - 1.001);
    const double top = std::clamp(y - 0.5, 0.0, kHeight - 1.001);
    const auto column = static_cast<size_t>(left);
    const auto row = static_cast<size_t>(top);
    const double right = left - static_cast<double>(column);
    const double below = top - static_cast<double>(row);
    const double* from = &levels_[row * kWidth + column];
    const double upper = from[0] + right * (from[1] - from[0]);
    const double lower = from[kWidth] + right * (from[kWidth + 1] - from[kWidth]);
    return upper + below * (lower - upper);
  }

 private:
  std::vector<double> levels_;
};

// In 64 steps: as many as an eye tells apart in dots, and files of half the size.
uint8_t inkOf(double level) {
  return static_cast<uint8_t>(std::lround(63 * (1 - level)) * 255 / 63);
}

}  // namespace

DotCanvas paintScene(int width, int height) {
  static const View kView;
  constexpr int kFine = 2;  // points a dot in each direction
  DotCanvas canvas(width, height);
  // As much of the view as the picture's shape can hold.
  const double scale = std::min(static_cast<double>(View::kWidth) / width,
                                static_cast<double>(View::kHeight) / height);
  const double left = (View::kWidth - width * scale) / 2;
  const double top = (View::kHeight - height * scale) / 2;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      double sum = 0;
      for (int i = 0; i < kFine; ++i) {
        for (int j = 0; j < kFine; ++j) {
          sum += kView.at(left + (x + (j + 0.5) / kFine) * scale,
                          top + (y + (i + 0.5) / kFine) * scale);
        }
      }
      canvas.set(x, y, inkOf(sum / (kFine * kFine)));
    }
  }
  return canvas;
}

DotCanvas paintRamp(int width, int height) {
  DotCanvas canvas(width, height);
  for (int x = 0; x < width; ++x) {
    canvas.fill(x, 0, 1, height, static_cast<uint8_t>(255 - 255 * x / std::max(1, width - 1)));
  }
  return canvas;
}

DotCanvas paintSample(int width, int height) {
  const int ramp = std::max(1, height / 5);
  DotCanvas canvas(width, height);
  canvas.paste(paintScene(width, height - ramp), 0, 0);
  canvas.paste(paintRamp(width, ramp), 0, height - ramp);
  return canvas;
}

}  // namespace korvel
