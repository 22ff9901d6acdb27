// The palette image's palette: entries, the grey ramp, the nearest colour.
// The palette is between the block's header and its pixel rows.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>

#include "image/cximage.h"

namespace {

bool sameEntry(tagRGBQUAD a, tagRGBQUAD b) { return std::memcmp(&a, &b, sizeof a) == 0; }

int32_t squaredDistance(tagRGBQUAD a, tagRGBQUAD b) {
  const int32_t blue = a.rgbBlue - b.rgbBlue;
  const int32_t green = a.rgbGreen - b.rgbGreen;
  const int32_t red = a.rgbRed - b.rgbRed;
  return blue * blue + green * green + red * red;
}

constexpr int32_t kBeyondAnyDistance = 200000;  // the largest possible is 3 * 255 * 255

}  // namespace

tagRGBQUAD* CxImage::GetPalette() const {
  if (dib == nullptr || header.biClrUsed == 0) return nullptr;
  return reinterpret_cast<tagRGBQUAD*>(dib + sizeof(DibHeader));
}

void CxImage::SetPalette(const tagRGBQUAD* palette, uint32_t count) {
  tagRGBQUAD* own = GetPalette();
  if (palette == nullptr || own == nullptr) return;
  std::memcpy(own, palette, std::min(PaletteBytes(), 4 * count));
}

void CxImage::SetPaletteColor(uint8_t index, uint8_t red, uint8_t green, uint8_t blue,
                              uint8_t alpha) {
  tagRGBQUAD* own = GetPalette();
  if (own == nullptr || index >= header.biClrUsed) return;
  own[index] = {blue, green, red, alpha};
}

tagRGBQUAD CxImage::GetPaletteColor(uint8_t index) const {
  const tagRGBQUAD* own = GetPalette();
  if (own == nullptr || index >= header.biClrUsed) return {};
  return own[index];
}

void CxImage::SetGrayPalette() {
  tagRGBQUAD* own = GetPalette();
  if (own == nullptr) return;
  const uint32_t step = 255 / (header.biClrUsed - 1);
  for (uint32_t i = 0; i < header.biClrUsed; ++i) {
    const auto grey = static_cast<uint8_t>(i * step);
    own[i].rgbBlue = own[i].rgbGreen = own[i].rgbRed = grey;
  }
}

uint8_t CxImage::GetNearestIndex(tagRGBQUAD colour) {
  const tagRGBQUAD* own = GetPalette();
  if (own == nullptr) return 0;
  if (info.lastColorValid && sameEntry(info.lastColor, colour)) return info.lastColorIndex;
  info.lastColor = colour;
  info.lastColorValid = true;

  const uint32_t entries = header.biClrImportant != 0 ? header.biClrImportant : header.biClrUsed;
  uint8_t best = 0;
  int32_t bestDistance = kBeyondAnyDistance;
  for (uint32_t j = 0; j < entries && bestDistance != 0; ++j) {
    const int32_t distance = squaredDistance(own[j], colour);
    if (distance >= bestDistance) continue;
    best = static_cast<uint8_t>(j);
    bestDistance = distance;
  }
  info.lastColorIndex = best;
  return best;
}
