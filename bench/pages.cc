// Paints the benchmark pages in horizontal quarters, each with another kind of picture.
// SPDX-License-Identifier: Apache-2.0
#include "bench/pages.h"

#include <algorithm>

namespace {

constexpr int kLetterHeight = 24;  // rows per line of letters, half of them white

uint32_t nextNoise(uint32_t& state) {
  state = state * 1664525u + 1013904223u;
  return state >> 16;
}

// Black strokes of changing length on white, and grey edges as a rasteriser smooths them.
uint8_t letterLevel(int x, int y, uint32_t noise) {
  if (y % kLetterHeight >= kLetterHeight / 2) return 0;
  const int stroke = (x / 5 + y / kLetterHeight * 7) % 11;
  if (stroke < 4) return 255;
  return stroke == 4 ? static_cast<uint8_t>(noise % 256) : uint8_t{0};
}

uint8_t photographLevel(int x, int y, int width, uint32_t noise) {
  const int shade = (x * 160 / width + y / 3) % 256;
  return static_cast<uint8_t>(std::clamp(shade + static_cast<int>(noise % 41) - 20, 0, 255));
}

}  // namespace

GreyPage mixedPage(int width, int height) {
  GreyPage page{width, height, {}};
  page.pixels.resize(static_cast<size_t>(width) * static_cast<size_t>(height));
  uint32_t state = 1;
  uint8_t* pixel = page.pixels.data();
  for (int y = 0; y < height; ++y) {
    const int quarter = y * 4 / height;
    for (int x = 0; x < width; ++x) {
      const uint32_t noise = nextNoise(state);
      if (quarter == 0) *pixel = letterLevel(x, y, noise);
      if (quarter == 1) *pixel = static_cast<uint8_t>(x * 255 / width);
      if (quarter == 2) *pixel = photographLevel(x, y, width, noise);
      ++pixel;  // the last quarter stays white
    }
  }
  return page;
}

const GreyPage& a4Page() {
  static const GreyPage page = mixedPage(2480, 3508);
  return page;
}

const GreyPage& labelPage() {
  static const GreyPage page = mixedPage(812, 1218);
  return page;
}
