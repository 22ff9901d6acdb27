// The classic halftones: threshold, two ordered dithers and error diffusion to 1 bit per pixel.
// All scan stored rows upward and pixels left to right, and read indices as grey levels.
// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <cstring>

#include "image/cximage.h"
#include "image/diffusion/diffusion_dispatch.h"
#include "image/dither_tables.h"
#include "image/image_kernels.h"

namespace {

const DiffusionMethod& diffusionMethod(DitherMethod method) {
  const DiffusionKernels& rows = diffusionKernels();
  switch (method) {
    case 2:
      return rows.burkes;
    case 3:
      return rows.stucki;
    case 4:
      return rows.jarvisJudiceNinke;
    case 5:
      return rows.sierra;
    case 6:
      return rows.stevensonArce;
    default:
      return rows.floydSteinberg;
  }
}

}  // namespace

// A pixel is white where its index is above the threshold of its place, row y mod 4, column x
// mod 4.
struct ThresholdTable {
  uint8_t at[4][4];
};

namespace {

constexpr ThresholdTable kFixedThresholds = {{
    {128, 128, 128, 128},
    {128, 128, 128, 128},
    {128, 128, 128, 128},
    {128, 128, 128, 128},
}};

// The ordered dither in its own terms: a grey is a whole level and a fraction of the next, which
// the matrix entries below it raise.
constexpr bool isOrderedWhite(int value, int entry) {
  const int level = (value * 16) / 255;  // 0..16, truncates
  return level / 16 + (entry < level % 16 ? 1 : 0) != 0;
}

// Greys up to the threshold are black; a grey of 0 always is.
constexpr ThresholdTable orderedThresholds() {
  ThresholdTable table{};
  for (int i = 0; i < 16; ++i) {
    int black = 0;
    while (!isOrderedWhite(black + 1, kOrderedMatrix[i / 4][i % 4])) ++black;
    table.at[i / 4][i % 4] = static_cast<uint8_t>(black);
  }
  return table;
}

constexpr ThresholdTable kOrderedThresholds = orderedThresholds();

constexpr bool areOrderedThresholdsRight() {
  for (int i = 0; i < 16 * 256; ++i) {
    const int entry = kOrderedMatrix[i / 4 % 4][i % 4];
    const bool isAbove = i / 16 > kOrderedThresholds.at[i / 4 % 4][i % 4];
    if (isAbove != isOrderedWhite(i / 16, entry)) return false;
  }
  return true;
}
static_assert(areOrderedThresholdsRight());

// Interleaves the bits of column and row into a threshold (B. E. Bayer, 1973). Four bits of each
// are taken, though only 4 x 4 of the 16 x 16 thresholds they define are used, so these are
// multiples of 16 (BayerThresholds).
constexpr ThresholdTable bayerThresholds() {
  ThresholdTable table{};
  for (int i = 0; i < 16; ++i) {
    int row = i / 4;
    int column = i % 4;
    int value = 0;
    for (int bit = 0; bit < 4; ++bit) {
      value = (value << 1) | ((row & 1) ^ (column & 1));
      value = (value << 1) | (column & 1);
      row >>= 1;
      column >>= 1;
    }
    table.at[i / 4][i % 4] = static_cast<uint8_t>(value);
  }
  return table;
}

constexpr ThresholdTable kBayerThresholds = bayerThresholds();

// The table of a method that compares each pixel with a threshold; null for error diffusion.
const ThresholdTable* thresholdTable(DitherMethod method) {
  switch (method) {
    case 0:
      return &kFixedThresholds;
    case 1:
      return &kOrderedThresholds;
    case 7:
      return &kBayerThresholds;
    default:
      return nullptr;
  }
}

// Halftones a page to bits. Returns false without memory for the errors.
bool diffuse(const DiffusionPage& page, const DiffusionMethod& method) {
  auto* scratch = static_cast<uint8_t*>(std::malloc(method.scratchBytes(page.width)));
  if (scratch == nullptr) return false;
  method.halftone(page, scratch);
  std::free(scratch);
  return true;
}

}  // namespace

bool CxImage::Dither(DitherMethod method) {
  if (dib == nullptr) return false;
  if (header.biBitCount == 1) return true;
  CxImage target;
  if (!target.CreateLike(*this, GetWidth(), GetHeight(), 1)) return TakeErrorFrom(target);

  if (const ThresholdTable* thresholds = thresholdTable(method)) {
    CompareInto(target, *thresholds);
  } else if (!DiffuseInto(target, diffusionMethod(method))) {
    target.Destroy();
    return TakeErrorFrom(target);
  }
  target.SetPaletteColor(0, 0, 0, 0, 0);
  target.SetPaletteColor(1, 255, 255, 255, 0);
  return Transfer(target);
}

void CxImage::CompareInto(CxImage& target, const ThresholdTable& thresholds) const {
  static_assert(kRunPixels % 8 == 0, "each run's bits start on a byte");
  uint8_t scratch[kRunPixels];
  for (int64_t y = 0; y < Height(); ++y) {
    for (int64_t x = 0; x < Width();) {
      const IndexRun run = RunAt(x, y, scratch);
      imageKernels().bitsAbove(run.indices, run.count, thresholds.at[y % 4],
                               target.PixelRow(y) + x / 8);
      x += static_cast<int64_t>(run.count);
    }
  }
}

// Each pixel's error is distributed among the pixels after it. Sums are clamped to 0..255 after
// every addition, so shares are lost at black and white, and so are those outside the page.
bool CxImage::DiffuseInto(CxImage& target, const DiffusionMethod& method) const {
  if (header.biBitCount != 8) {  // greys of four bits stay below white, colours read as 0
    std::memset(target.info.bits, 0, target.header.biSizeImage);
    return true;
  }
  const DiffusionPage page = {info.bits,
                              info.effWidth,
                              target.info.bits,
                              target.info.effWidth,
                              static_cast<size_t>(Width()),
                              static_cast<size_t>(Height())};
  if (diffuse(page, method)) return true;
  std::strcpy(target.info.lastError, "CxImage::Create can't allocate memory");
  return false;
}

bool CxImage::CreateHalftone(const uint8_t* array, uint32_t width, uint32_t height,
                             uint32_t bytesPerLine, DitherMethod method) {
  if (array == nullptr) return false;
  if (!CreateUnwritten(width, height, 8, 0)) return false;
  if (const ThresholdTable* thresholds = thresholdTable(method)) {
    CompareRows(array, bytesPerLine, *thresholds);
  } else if (!DiffuseRows(array, bytesPerLine, diffusionMethod(method))) {
    return CreateFromArray(array, width, height, 8, bytesPerLine, false);  // Dither leaves it grey
  }
  ClearRowsFrom(width);
  SetPaletteColor(0, 0, 0, 0, 0);
  SetPaletteColor(1, 255, 255, 255, 0);
  return true;
}

// Writes the indices 0 and 1 of a page of this image's size, whose rows are `stride` bytes apart.
void CxImage::CompareRows(const uint8_t* rows, uint32_t stride, const ThresholdTable& thresholds) {
  for (int64_t y = 0; y < Height(); ++y) {
    imageKernels().bytesAbove(rows + y * int64_t{stride}, GetWidth(), thresholds.at[y % 4],
                              PixelRow(y));
  }
}

// Does so by error diffusion: the bits of each row go to its end and are spread from there.
bool CxImage::DiffuseRows(const uint8_t* rows, uint32_t stride, const DiffusionMethod& method) {
  const auto width = static_cast<size_t>(Width());
  const size_t place = info.effWidth - (width + 7) / 8;
  const DiffusionPage page = {rows,          stride, info.bits + place,
                              info.effWidth, width,  static_cast<size_t>(Height())};
  if (!diffuse(page, method)) return false;
  for (int64_t y = 0; y < Height(); ++y) {
    imageKernels().bytesOfBits(PixelRow(y) + place, width, PixelRow(y));
  }
  return true;
}
