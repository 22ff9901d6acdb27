// Scaling is linear between the points of the picture, averaged over four points of each dot.
// SPDX-License-Identifier: Apache-2.0
#include "sheets/pictures.h"

#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace korvel {
namespace {

// A rectangle of pictures.png.
struct Part {
  size_t left, top;
  int width, height;
};

constexpr Part kScene = {0, 0, 720, 480};
constexpr Part kShades = {720, 0, 740, 740};      // of the flower: soft, so coarse points will do
constexpr Part kOutlines = {0, 740, 2220, 2220};  // of the flower, as fine as the largest sheet
constexpr size_t kFileWidth = 2220;
constexpr size_t kFileHeight = 2960;
constexpr int kFine = 2;  // sampled points per dot in each direction

// Grey levels row by row, 255 is white.
std::vector<uint8_t> readFile() {
  png_image file = {};
  file.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&file, KORVEL_PICTURES) == 0) {
    throw std::runtime_error("Cannot read " KORVEL_PICTURES ": " + std::string(file.message));
  }
  file.format = PNG_FORMAT_GRAY;
  std::vector<uint8_t> levels(kFileWidth * kFileHeight);
  if (file.width != kFileWidth || file.height != kFileHeight ||
      png_image_finish_read(&file, nullptr, levels.data(), 0, nullptr) == 0) {
    png_image_free(&file);
    throw std::runtime_error(KORVEL_PICTURES " is damaged or has another size.");
  }
  return levels;
}

// The level at a place between the points of a part, 0 to 255.
double levelAt(const Part& part, double x, double y) {
  static const std::vector<uint8_t> kLevels = readFile();
  const double left = std::clamp(x - 0.5, 0.0, part.width - 1.001);
  const double top = std::clamp(y - 0.5, 0.0, part.height - 1.001);
  const auto column = static_cast<size_t>(left);
  const auto row = static_cast<size_t>(top);
  const double right = left - static_cast<double>(column);
  const double below = top - static_cast<double>(row);
  const uint8_t* from = &kLevels[(part.top + row) * kFileWidth + part.left + column];
  const double upper = from[0] + right * (from[1] - from[0]);
  const double lower = from[kFileWidth] + right * (from[kFileWidth + 1] - from[kFileWidth]);
  return upper + below * (lower - upper);
}

// The mean level of the dot whose upper left corner is at (x, y); `scale` points per dot.
double levelOfDot(const Part& part, double x, double y, double scale) {
  double sum = 0;
  for (int i = 0; i < kFine; ++i) {
    for (int j = 0; j < kFine; ++j) {
      sum += levelAt(part, x + (j + 0.5) / kFine * scale, y + (i + 0.5) / kFine * scale);
    }
  }
  return sum / (kFine * kFine);
}

// 64 steps: more cannot be told apart in dots, and the sheets are half as large.
uint8_t sceneInk(double level) {
  return static_cast<uint8_t>(std::lround(63 * (1 - level / 255)) * 255 / 63);
}

}  // namespace

DotCanvas paintScene(int width, int height) {
  DotCanvas canvas(width, height);
  // As much of the scene as the canvas's shape can hold.
  const double scale = std::min(static_cast<double>(kScene.width) / width,
                                static_cast<double>(kScene.height) / height);
  const double left = (kScene.width - width * scale) / 2;
  const double top = (kScene.height - height * scale) / 2;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      canvas.set(x, y, sceneInk(levelOfDot(kScene, left + x * scale, top + y * scale, scale)));
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

void paintFlower(DotCanvas* canvas, Point centre, double radius) {
  const double shades = kShades.width / (2 * radius);
  const double outlines = kOutlines.width / (2 * radius);
  const auto left = static_cast<int>(centre.x - radius);
  const auto top = static_cast<int>(centre.y - radius);
  const auto side = static_cast<int>(2 * radius);
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      const double level = levelOfDot(kShades, x * shades, y * shades, shades) *
                           levelOfDot(kOutlines, x * outlines, y * outlines, outlines) / 255;
      canvas->set(left + x, top + y, static_cast<uint8_t>(std::lround(255 - level)));
    }
  }
}

}  // namespace korvel
