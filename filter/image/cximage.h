// The palette image: a bitmap of 1, 4, 8 or 24 bits per pixel in one heap block.
// Creation, palette, pixels, geometry, tone, depth and the classic halftones.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_IMAGE_CXIMAGE_H
#define KORVEL_IMAGE_CXIMAGE_H

#include <cstddef>
#include <cstdint>

#include "image/rgb_quad.h"

// Number of a halftone method. The number counts, not the name of the setting it comes from:
// 0 threshold, 1 ordered 4 x 4, 2 Burkes, 3 Stucki, 4 Jarvis-Judice-Ninke, 5 Sierra,
// 6 Stevenson-Arce, 7 Bayer; every other number is Floyd-Steinberg.
using DitherMethod = int64_t;

struct DiffusionMethod;  // image/diffusion/diffusion_dispatch.h
struct ThresholdTable;

// Bitmap header with the layout of the published BITMAPINFOHEADER.
struct DibHeader {
  uint32_t biSize;
  int32_t biWidth;   // pixels
  int32_t biHeight;  // rows
  uint16_t biPlanes;
  uint16_t biBitCount;  // bits per pixel: 1, 4, 8 or 24
  uint32_t biCompression;
  uint32_t biSizeImage;  // bytes of all pixel rows, padding counted
  int32_t biXPelsPerMeter;
  int32_t biYPelsPerMeter;
  uint32_t biClrUsed;  // palette entries: 2, 16, 256, or 0 for 24 bits per pixel
  uint32_t biClrImportant;
};

static_assert(sizeof(DibHeader) == 40, "the block starts with a 40-byte header");

// The image owns one block from malloc: a copy of the header, the palette, then the pixel rows,
// each padded to four bytes. Row 0 is the bottom line of the picture by bitmap convention.
//
// There is no destructor: a block lives until the next Create, Transfer or Destroy of the same
// object, so whoever lets an image go out of scope destroys or transfers it first. Nothing throws;
// an operation on an image without a block does nothing or reports failure.
class CxImage {
 public:
  CxImage() = default;
  CxImage(const CxImage&) = delete;
  CxImage& operator=(const CxImage&) = delete;

  // Builds an empty image: palette and pixels all zero. Depths between 1, 4, 8 and 24 are raised
  // to the next. Returns the block, which the image owns, or null with GetLastError set; the old
  // block is gone either way. `type` is carried along and never interpreted.
  uint8_t* Create(uint32_t width, uint32_t height, uint32_t bpp, uint32_t type);

  // Builds an 8-bit image with the grey palette. The caller writes every pixel; the bytes after the
  // last pixel of each row are zero. Returns false when the image cannot be created.
  bool CreateGrey(uint32_t width, uint32_t height);

  // Frees the block and returns true. Width, height and stride keep their last values.
  bool Destroy();

  // Takes over `source`'s image and leaves it empty. The flag is ignored; returns true.
  bool Transfer(CxImage& source, bool flag = false);

  // Copies stride, type, error text and colour cache, only while this image has no block.
  void CopyInfo(const CxImage& source);

  // Builds an image from `height` rows of `bytesPerLine` bytes, first row to stored row 0, or to
  // the last one when `flip` is set. Depths below 24 get a grey palette; 32 bits become 24.
  // The array is only read. Returns false on a null array, another depth or a failed Create.
  bool CreateFromArray(const uint8_t* array, uint32_t width, uint32_t height, uint32_t bitsPerPixel,
                       uint32_t bytesPerLine, bool flip);

  bool IsValid() const { return dib != nullptr; }
  const char* GetLastError() { return info.lastError; }
  uint32_t GetWidth() { return static_cast<uint32_t>(header.biWidth); }
  uint32_t GetWidth() const { return static_cast<uint32_t>(header.biWidth); }
  uint32_t GetHeight() { return static_cast<uint32_t>(header.biHeight); }
  uint32_t GetHeight() const { return static_cast<uint32_t>(header.biHeight); }
  uint32_t GetEffWidth() const { return info.effWidth; }  // bytes between stored rows
  uint32_t GetNumColors() const { return header.biClrUsed; }
  uint32_t GetPaletteSize() { return PaletteBytes(); }
  tagRGBQUAD* GetPalette() const;  // null without a block or a palette
  uint32_t GetSize();              // bytes of the whole block, modulo 2^32

  // First byte of a stored row, or null without a block or outside the image.
  uint8_t* GetBits(uint32_t row = 0);

  void SetPalette(const tagRGBQUAD* palette, uint32_t count);
  void SetPaletteColor(uint8_t index, uint8_t red, uint8_t green, uint8_t blue, uint8_t alpha);
  tagRGBQUAD GetPaletteColor(uint8_t index) const;  // four zeros when there is no such entry
  void SetGrayPalette();

  // Checked access. Columns count from the left, rows are stored rows. A read outside the image
  // gives a value without meaning; a write outside it changes nothing.
  uint8_t GetPixelIndex(int64_t x, int64_t y) const;
  void SetPixelIndex(int64_t x, int64_t y, uint8_t index);

  // Copies the indices of `count` pixels of a stored row, from column x on, as GetPixelIndex gives
  // them one by one.
  void GetPixelIndices(int64_t x, int64_t y, size_t count, uint8_t* to) const;

  // Unchecked access for loops that stay inside a valid image.
  uint8_t BlindGetPixelIndex(int64_t x, int64_t y) const;
  void BlindSetPixelIndex(int64_t x, int64_t y, uint8_t index);
  tagRGBQUAD BlindGetPixelColor(int64_t x, int64_t y, bool withAlpha = false) const;
  void BlindSetPixelColor(int64_t x, int64_t y, tagRGBQUAD colour, bool withAlpha = false);

  // Entry with the least sum of squared differences, the lowest of equals. Caches one answer.
  uint8_t GetNearestIndex(tagRGBQUAD colour);

  // Turns by 180 degrees, into `destination` when one is given. The result has 8 bits per pixel.
  bool Rotate180(CxImage* destination = nullptr);

  // Mirrors left to right by reversing bytes: right for 8 bits per pixel only.
  void Mirror();

  // Complements every byte of the pixel rows, padding included.
  void Negative();

  // Applies v -> (v - 128) * (contrast + 100) / 100 + brightness + 128, clamped, to every index.
  bool Light(int32_t brightness, int32_t contrast);

  // Replaces every index v by table[v]; `table` has 256 entries.
  bool Lut(const uint8_t* table);

  // Centres the picture on a wider image; the columns beside it are left as created.
  void MakeCenter(int32_t newWidth);

  // Adds margins in the palette's nearest colour; `bottom` goes to the low stored rows. Returns
  // false, image unchanged, on a negative margin or when the new image cannot be created.
  bool Expand(int64_t left, int64_t top, int64_t right, int64_t bottom, tagRGBQUAD canvasColor);

  // Draws a line of one index, both ends included. Both x come before both y.
  void DrawLine(int32_t startX, int32_t endX, int32_t startY, int32_t endY, uint8_t index);

  // Raises the depth to 4, 8 or 24 bits per pixel, indices and palette kept (colours for 24).
  bool IncreaseBpp(uint32_t target);

  // Halftones to 1 bit per pixel with a palette of black, white. An image that already has
  // 1 bit per pixel is left alone. Returns false without a block or when memory is short.
  bool Dither(DitherMethod method);

  // Builds the image that CreateFromArray of 8-bit rows, Dither and IncreaseBpp(8) would leave,
  // with fewer passes over the page. `bytesPerLine` is at least `width`. Returns false on a null
  // array or a failed Create.
  bool CreateHalftone(const uint8_t* array, uint32_t width, uint32_t height, uint32_t bytesPerLine,
                      DitherMethod method);

 private:
  struct Info {
    uint32_t effWidth;  // bytes between stored rows
    uint8_t* bits;      // first pixel row, inside the block
    uint32_t imageType;
    char lastError[256];
    tagRGBQUAD lastColor;  // one-entry cache of GetNearestIndex
    uint8_t lastColorIndex;
    bool lastColorValid;
  };

  static constexpr size_t kRunPixels = 512;  // a multiple of 8

  // Indices of a row's pixels from some column on.
  struct IndexRun {
    const uint8_t* indices;
    size_t count;
  };

  uint32_t PaletteBytes() const { return 4 * header.biClrUsed; }
  int64_t Width() const { return header.biWidth; }
  int64_t Height() const { return header.biHeight; }
  bool IsInside(int64_t x, int64_t y) const;
  uint8_t* PixelRow(int64_t y) const;  // unchecked
  IndexRun RunAt(int64_t x, int64_t y, uint8_t* scratch) const;
  bool CreateUnwritten(uint32_t width, uint32_t height, uint32_t bpp, uint32_t type);
  void ClearRowsFrom(uint64_t byte);
  bool CreateLike(const CxImage& source, uint32_t width, uint32_t height, uint32_t bpp);
  bool TakeErrorFrom(CxImage& failed);
  void FillWith(tagRGBQUAD colour);
  void CopyPixelsTo(CxImage& larger, int64_t left, int64_t bottom) const;
  void CompareInto(CxImage& target, const ThresholdTable& thresholds) const;
  bool DiffuseInto(CxImage& target, const DiffusionMethod& method) const;
  void CompareRows(const uint8_t* rows, uint32_t stride, const ThresholdTable& thresholds);
  bool DiffuseRows(const uint8_t* rows, uint32_t stride, const DiffusionMethod& method);

  DibHeader header{};
  Info info{};
  uint8_t* dib = nullptr;
};

#endif
