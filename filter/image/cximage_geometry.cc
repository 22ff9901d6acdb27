// Geometry of the palette image: turn, mirror, centre, widen, draw a line.
// Whatever changes the size is built in a temporary and moved into place.
// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <cstring>

#include "image/cximage.h"
#include "image/image_kernels.h"

bool CxImage::Rotate180(CxImage* destination) {
  if (dib == nullptr) return false;
  CxImage turned;
  if (turned.CreateLike(*this, GetWidth(), GetHeight(), 8)) {
    turned.SetPalette(GetPalette(), header.biClrUsed);
    uint8_t scratch[kRunPixels];
    for (int64_t y = 0; y < Height(); ++y) {
      uint8_t* to = turned.PixelRow(Height() - 1 - y) + Width();
      for (int64_t x = 0; x < Width();) {
        const IndexRun run = RunAt(x, y, scratch);
        to -= run.count;
        imageKernels().reverse(run.indices, run.count, to);
        x += static_cast<int64_t>(run.count);
      }
    }
  }
  CxImage& receiver = destination != nullptr ? *destination : *this;
  return receiver.Transfer(turned);  // without memory for it the receiver has no image any more
}

void CxImage::Mirror() {
  if (dib == nullptr || header.biBitCount != 8) return;
  CxImage mirrored;
  if (mirrored.CreateLike(*this, GetWidth(), GetHeight(), 8)) {
    mirrored.SetPalette(GetPalette(), header.biClrUsed);
    for (int64_t y = 0; y < Height(); ++y) {
      imageKernels().reverse(PixelRow(y), GetWidth(), mirrored.PixelRow(y));
    }
  }
  Transfer(mirrored);  // without memory for it the page has no image any more
}

void CxImage::MakeCenter(int32_t newWidth) {
  if (dib == nullptr || header.biWidth >= newWidth) return;
  CxImage centred;
  centred.CopyInfo(*this);
  centred.Create(static_cast<uint32_t>(newWidth), GetHeight(), 8, info.imageType);
  centred.SetPalette(GetPalette(), header.biClrUsed);
  const int32_t shift = (newWidth - header.biWidth) / 2;
  for (int64_t y = 0; y < Height(); ++y) {
    for (int64_t x = 0; x < Width(); ++x) {
      centred.SetPixelIndex(x + shift, y, BlindGetPixelIndex(x, y));
    }
  }
  Transfer(centred);
}

bool CxImage::Expand(int64_t left, int64_t top, int64_t right, int64_t bottom,
                     tagRGBQUAD canvasColor) {
  if (dib == nullptr || left < 0 || top < 0 || right < 0 || bottom < 0) return false;
  const auto newWidth = static_cast<uint32_t>(Width() + left + right);
  const auto newHeight = static_cast<uint32_t>(Height() + top + bottom);
  CxImage widened;
  if (!widened.CreateLike(*this, newWidth, newHeight, header.biBitCount)) {
    return TakeErrorFrom(widened);
  }
  widened.SetPalette(GetPalette(), header.biClrUsed);
  widened.FillWith(canvasColor);
  CopyPixelsTo(widened, left, bottom);
  return Transfer(widened);
}

// Gives every pixel one colour; at 8 bits per pixel the rows' padding gets it too.
void CxImage::FillWith(tagRGBQUAD colour) {
  if (header.biBitCount == 8) {
    std::memset(info.bits, GetNearestIndex(colour), header.biSizeImage);
    return;
  }
  for (int64_t y = 0; y < Height(); ++y) {
    for (int64_t x = 0; x < Width(); ++x) BlindSetPixelColor(x, y, colour);
  }
}

// Copies all pixels to a larger image of the same depth, (0, 0) landing on (left, bottom).
void CxImage::CopyPixelsTo(CxImage& larger, int64_t left, int64_t bottom) const {
  const int64_t bytesPerPixel = header.biBitCount / 8;  // 0 at 1 and 4 bits per pixel
  for (int64_t y = 0; y < Height(); ++y) {
    if (bytesPerPixel != 0) {
      std::memcpy(larger.PixelRow(bottom + y) + left * bytesPerPixel, PixelRow(y),
                  static_cast<size_t>(bytesPerPixel * Width()));
      continue;
    }
    for (int64_t x = 0; x < Width(); ++x) {
      larger.BlindSetPixelIndex(left + x, bottom + y, BlindGetPixelIndex(x, y));
    }
  }
}

// Integer line by a running accumulator along the longer axis (Bresenham, 1965).
void CxImage::DrawLine(int32_t startX, int32_t endX, int32_t startY, int32_t endY, uint8_t index) {
  if (dib == nullptr) return;
  const int64_t dx = std::llabs(int64_t{endX} - startX);
  const int64_t dy = std::llabs(int64_t{endY} - startY);
  const int64_t stepX = endX >= startX ? 1 : -1;
  const int64_t stepY = endY >= startY ? 1 : -1;
  const bool alongX = dx >= dy;
  const int64_t limit = alongX ? dx : dy;
  const int64_t add = alongX ? dy : dx;

  int64_t x = startX;
  int64_t y = startY;
  int64_t accumulator = limit / 2;
  for (int64_t i = 0; i <= limit; ++i) {
    SetPixelIndex(x, y, index);
    accumulator += add;
    const bool aside = accumulator >= limit;
    if (aside) accumulator -= limit;
    if (alongX || aside) x += stepX;
    if (!alongX || aside) y += stepY;
  }
}
