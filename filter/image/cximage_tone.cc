// Tone of the palette image: negative, brightness and contrast, look-up tables.
// Tone changes indices; on the grey palette an index is a grey level.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "image/cximage.h"
#include "image/image_kernels.h"

void CxImage::Negative() {
  if (dib == nullptr) return;
  imageKernels().complement(info.bits, header.biSizeImage);
}

bool CxImage::Light(int32_t brightness, int32_t contrast) {
  if (dib == nullptr) return false;
  const float factor = static_cast<float>(contrast + 100) / 100.0f;
  const int32_t offset = brightness + 128;
  uint8_t table[256];
  for (int32_t i = 0; i < 256; ++i) {
    const float value = static_cast<float>(i - 128) * factor + static_cast<float>(offset) + 0.5f;
    const auto level = static_cast<int32_t>(value);  // truncates toward zero
    table[i] = static_cast<uint8_t>(std::clamp(level, 0, 255));
  }
  return Lut(table);
}

bool CxImage::Lut(const uint8_t* table) {
  if (dib == nullptr || table == nullptr) return false;
  for (int64_t y = 0; y < Height(); ++y) {
    if (header.biBitCount == 8) {
      imageKernels().lookUp(PixelRow(y), GetWidth(), table);
      continue;
    }
    for (int64_t x = 0; x < Width(); ++x) {
      BlindSetPixelIndex(x, y, table[BlindGetPixelIndex(x, y)]);
    }
  }
  return true;
}
