// The palette image's one heap block: creation, hand-over, creation from an array.
// The block is a packed bitmap: header copy, palette, padded pixel rows.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "image/cximage.h"

namespace {

uint32_t normalisedDepth(uint32_t bpp) {
  if (bpp <= 1) return 1;
  if (bpp <= 4) return 4;
  if (bpp <= 8) return 8;
  return 24;
}

uint32_t paletteEntries(uint32_t depth) {
  switch (depth) {
    case 1:
      return 2;
    case 4:
      return 16;
    case 8:
      return 256;
    default:
      return 0;
  }
}

// Whether the pixels' bits can be counted in 32 bits. The true product of the sides is compared,
// so sides whose own product wraps are refused too.
bool fitsInMemoryLimit(uint32_t width, uint32_t height, uint32_t depth) {
  const uint32_t bits = width * height * depth;
  if ((bits >> 3) > 0x7FFFFFFFu) return false;
  return bits / depth == uint64_t{width} * height;
}

}  // namespace

uint8_t* CxImage::Create(uint32_t width, uint32_t height, uint32_t bpp, uint32_t type) {
  if (!CreateUnwritten(width, height, bpp, type)) return nullptr;
  std::memset(info.bits, 0, header.biSizeImage);
  return dib;
}

// Creates the image but for its pixel rows, which hold anything.
bool CxImage::CreateUnwritten(uint32_t width, uint32_t height, uint32_t bpp, uint32_t type) {
  Destroy();
  if (width == 0 || height == 0) {
    std::strcpy(info.lastError, "CxImage::Create : width and height must be greater than zero");
    return false;
  }
  const uint32_t depth = normalisedDepth(bpp);
  if (!fitsInMemoryLimit(width, height, depth)) {
    std::strcpy(info.lastError, "CXIMAGE_MAX_MEMORY exceeded");
    return false;
  }

  info.effWidth = ((depth * width + 31) >> 5) << 2;
  info.imageType = type;
  header.biSize = sizeof(DibHeader);
  header.biWidth = static_cast<int32_t>(width);
  header.biHeight = static_cast<int32_t>(height);
  header.biPlanes = 1;
  header.biBitCount = static_cast<uint16_t>(depth);
  header.biCompression = 0;
  header.biSizeImage = info.effWidth * height;
  header.biClrUsed = paletteEntries(depth);

  dib = static_cast<uint8_t*>(std::malloc(GetSize()));
  if (dib == nullptr) {
    std::strcpy(info.lastError, "CxImage::Create can't allocate memory");
    return false;
  }
  std::memcpy(dib, &header, sizeof header);
  std::memset(dib + sizeof header, 0, PaletteBytes());
  info.bits = GetBits(0);
  return true;
}

bool CxImage::CreateGrey(uint32_t width, uint32_t height) {
  if (!CreateUnwritten(width, height, 8, 0)) return false;
  SetGrayPalette();
  ClearRowsFrom(width);
  return true;
}

// Clears every row from this byte on.
void CxImage::ClearRowsFrom(uint64_t byte) {
  if (byte >= info.effWidth) return;
  for (int64_t y = 0; y < Height(); ++y) std::memset(PixelRow(y) + byte, 0, info.effWidth - byte);
}

bool CxImage::Destroy() {
  std::free(dib);
  dib = nullptr;
  return true;
}

bool CxImage::Transfer(CxImage& source, bool /*flag*/) {
  Destroy();
  header = source.header;
  info = source.info;
  dib = source.dib;
  source.header = {};
  source.info = {};
  source.dib = nullptr;
  return true;
}

void CxImage::CopyInfo(const CxImage& source) {
  if (dib == nullptr) info = source.info;
}

// Makes this fresh image one of the given size that carries the source's type and cache. The
// caller writes every pixel. What lies behind a row's last one is clear: packing walks the stride,
// so it becomes dots.
bool CxImage::CreateLike(const CxImage& source, uint32_t width, uint32_t height, uint32_t bpp) {
  CopyInfo(source);
  if (!CreateUnwritten(width, height, bpp, source.info.imageType)) return false;
  ClearRowsFrom(uint64_t{width} * header.biBitCount / 8);  // with the last pixels' byte
  return true;
}

// Copies the error text of a temporary that could not be created; returns false for its caller.
bool CxImage::TakeErrorFrom(CxImage& failed) {
  std::strcpy(info.lastError, failed.GetLastError());
  return false;
}

uint32_t CxImage::GetSize() { return header.biSize + header.biSizeImage + PaletteBytes(); }

uint8_t* CxImage::GetBits(uint32_t row) {
  if (dib == nullptr) return nullptr;
  DibHeader stored;
  std::memcpy(&stored, dib, sizeof stored);
  uint8_t* first = dib + stored.biSize + PaletteBytes();
  if (row == 0) return first;
  if (row >= GetHeight()) return nullptr;
  return first + size_t{info.effWidth} * row;
}

bool CxImage::CreateFromArray(const uint8_t* array, uint32_t width, uint32_t height,
                              uint32_t bitsPerPixel, uint32_t bytesPerLine, bool flip) {
  const bool knownDepth = bitsPerPixel == 1 || bitsPerPixel == 4 || bitsPerPixel == 8 ||
                          bitsPerPixel == 24 || bitsPerPixel == 32;
  if (array == nullptr || !knownDepth) return false;
  if (!CreateUnwritten(width, height, bitsPerPixel, 0)) return false;
  if (bitsPerPixel < 24) SetGrayPalette();
  // Rows that the array does not fill end clear.
  ClearRowsFrom(bitsPerPixel == 32 ? 3 * uint64_t{width} : bytesPerLine);

  for (uint32_t y = 0; y < height; ++y) {
    uint8_t* to = PixelRow(flip ? height - 1 - y : y);
    const uint8_t* from = array + size_t{y} * bytesPerLine;
    if (bitsPerPixel != 32) {
      std::memcpy(to, from, std::min(info.effWidth, bytesPerLine));
      continue;
    }
    for (uint32_t x = 0; x < width; ++x, to += 3, from += 4) std::memcpy(to, from, 3);
  }
  return true;
}
