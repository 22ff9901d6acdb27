// The classic halftones, pixel by pixel.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "image/cximage_reference.h"
#include "image/dither_tables.h"

namespace reference {

namespace {

constexpr int kThreshold = 128;  // above it a pixel is white

const DiffusionKernel& diffusionKernel(DitherMethod method) {
  switch (method) {
    case 2:
      return kBurkes;
    case 3:
      return kStucki;
    case 4:
      return kJarvisJudiceNinke;
    case 5:
      return kSierra;
    case 6:
      return kStevensonArce;
    default:
      return kFloydSteinberg;
  }
}

// Interleaves the bits of column and row into a threshold (B. E. Bayer, 1973).
uint8_t bayerThreshold(int column, int row, int order) {
  int value = 0;
  for (int bit = 0; bit < order; ++bit) {
    value = (value << 1) | ((row & 1) ^ (column & 1));
    value = (value << 1) | (column & 1);
    row >>= 1;
    column >>= 1;
  }
  return static_cast<uint8_t>(value);  // low 8 bits
}

void thresholdInto(const CxImage& image, CxImage& target) {
  for (int64_t y = 0; y < image.GetHeight(); ++y) {
    for (int64_t x = 0; x < image.GetWidth(); ++x) {
      const bool white = image.BlindGetPixelIndex(x, y) > kThreshold;
      target.SetPixelIndex(x, y, white ? 255 : 0);  // one bit keeps a 1 of the 255
    }
  }
}

void orderedInto(const CxImage& image, CxImage& target) {
  for (int64_t y = 0; y < image.GetHeight(); ++y) {
    for (int64_t x = 0; x < image.GetWidth(); ++x) {
      const int level = (image.BlindGetPixelIndex(x, y) * 16) / 255;  // 0..16, truncates
      const int fraction = level % 16;
      const int whole = level / 16;
      const int index = whole + (kOrderedMatrix[y % 4][x % 4] < fraction ? 1 : 0);
      target.BlindSetPixelIndex(x, y, static_cast<uint8_t>(index));
    }
  }
}

// The order is also the modulus: only 4 x 4 of the 16 x 16 thresholds that order 4 defines are
// used, so they are multiples of 16 (BayerThresholds).
void bayerInto(const CxImage& image, CxImage& target) {
  constexpr int kOrder = 4;
  uint8_t thresholds[1 << (2 * kOrder)];
  for (int i = 0; i < 1 << (2 * kOrder); ++i) {
    thresholds[i] = bayerThreshold(i % kOrder, i / kOrder, kOrder);
  }
  for (int64_t y = 0; y < image.GetHeight(); ++y) {
    for (int64_t x = 0; x < image.GetWidth(); ++x) {
      const uint8_t threshold = thresholds[(x % kOrder) + kOrder * (y % kOrder)];
      target.SetPixelIndex(x, y, image.BlindGetPixelIndex(x, y) > threshold ? 1 : 0);
    }
  }
}

// The image is its own error store: each neighbour is updated in place and clamped after every
// addition, so shares are lost at black and white, and so are those outside the page.
void diffuseInto(CxImage& image, CxImage& target, const DiffusionKernel& kernel) {
  for (int64_t y = 0; y < image.GetHeight(); ++y) {
    for (int64_t x = 0; x < image.GetWidth(); ++x) {
      const int value = image.BlindGetPixelIndex(x, y);
      const bool white = value > kThreshold;
      target.SetPixelIndex(x, y, white ? 1 : 0);
      const int error = white ? value - 255 : value;
      for (const DiffusionTap& tap : kernel.taps) {
        const int old = image.GetPixelIndex(x + tap.dx, y + tap.dy);
        const int updated = old + (error * tap.weight) / kernel.divisor;  // truncates toward zero
        image.SetPixelIndex(x + tap.dx, y + tap.dy,
                            static_cast<uint8_t>(std::clamp(updated, 0, 255)));
      }
    }
  }
}

}  // namespace

bool Dither(CxImage& image, DitherMethod method) {
  if (!image.IsValid()) return false;
  if (depthOf(image) == 1) return true;
  CxImage target;
  if (!createLike(target, image, 1)) return false;

  switch (method) {
    case 0:
      thresholdInto(image, target);
      break;
    case 1:
      orderedInto(image, target);
      break;
    case 7:
      bayerInto(image, target);
      break;
    default:
      diffuseInto(image, target, diffusionKernel(method));
      break;
  }
  target.SetPaletteColor(0, 0, 0, 0, 0);
  target.SetPaletteColor(1, 255, 255, 255, 0);
  return image.Transfer(target);
}

}  // namespace reference
