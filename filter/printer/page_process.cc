// Page processing: grey page, tone, turn, mirror, halftone, negative, frame, copy.
// Either the palette image's own halftones run or the stencil library's.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <vector>

#include "image/image_kernels.h"
#include "printer/log.h"
#include "printer/pellam_printer.h"
#include "tattoo/pipelines.h"

int PellamPrinter::PageProcess(DitherType type, const unsigned char* src, int stride, int width,
                               int height, unsigned char* dst) {
  useQMDithering_ = halftoneType_ == kHalftoneTattoo || halftoneType_ == kHalftoneTattooZ4;
  pellamLogCommon(0, "PageProcess: QM dithering is %s", useQMDithering_ ? "enabled" : "disabled");

  // Most pages are halftoned as they are, which needs no copy of the grey pixels.
  const bool isDirect = !useQMDithering_ && !changesGrey() && stride >= width;
  const auto columns = static_cast<uint32_t>(width);
  const auto rows = static_cast<uint32_t>(height);
  const auto bytesPerLine = static_cast<uint32_t>(stride);
  const bool created = isDirect
                           ? cximage_.CreateHalftone(src, columns, rows, bytesPerLine, type)
                           : cximage_.CreateFromArray(src, columns, rows, 8, bytesPerLine, false);
  if (!created) {
    pellamLogCommon(4, "cximage.CreateFromArray with grey failed!");
    return 0;
  }
  pellamLogCommon(0, "PageProcess: Successfully created CxImage from array with stride %d", stride);
  changeGrey();

  if (useQMDithering_) {
    if (!halftoneForStencil(width, height, stride)) return 0;
  } else {
    if (!isDirect) cximage_.Dither(type);
    cximage_.IncreaseBpp(8);
    pimage = &cximage_;
    pellamLogCommon(0, "PageProcess: Applied default dithering and increased bit depth");
  }

  pellamLogCommon(0, "PageProcess: negativePrint_ %d", negativePrint_ ? 1 : 0);
  if (negativePrint_) {
    pellamLogCommon(0, "PageProcess: Inverting the image for negative print");
    pimage->Negative();
  }
  if (antiWrinkle_ != 0) EnableAntiWrink(*pimage);
  return copyResult(stride, height, dst);
}

bool PellamPrinter::changesGrey() const {
  return brightness_ != 0 || contrast_ != 0 || isRotate180Print() || isMirrorPrint();
}

// Changes the tone of the grey image, turns and mirrors it.
void PellamPrinter::changeGrey() {
  if (brightness_ != 0 || contrast_ != 0) {
    cximage_.Light(brightness_ * 5, contrast_ * 2);
    pellamLogCommon(0, "PageProcess: Adjusted brightness to %d and contrast to %d", brightness_ * 5,
                    contrast_ * 2);
  }
  if (isRotate180Print()) {
    cximage_.Rotate180(nullptr);
    pellamLogCommon(0, "PageProcess: Rotated the image 180 degrees");
  }
  if (isMirrorPrint()) {
    cximage_.Mirror();
    pellamLogCommon(0, "PageProcess: Mirrored the image");
  }
}

// Returns the length that is reported for the copy, whether or not there is one.
int PellamPrinter::copyResult(int stride, int height, unsigned char* dst) {
  const uint32_t outStride = pimage->GetEffWidth();
  if (dst != nullptr) {
    // The frame may have made the image larger than twice the page.
    const size_t capacity = 2 * static_cast<size_t>(stride) * static_cast<size_t>(height);
    copyProcessedPixels(pimage, dst, static_cast<int>(pimage->GetWidth()),
                        static_cast<int>(pimage->GetHeight()), static_cast<int>(outStride),
                        capacity);
  }
  const auto length = static_cast<int>(static_cast<uint32_t>(height) * outStride);
  pellamLogCommon(0, "PageProcess: Filled the output buffer with processed pixels, length: %d",
                  length);
  return length;
}

// Runs a stencil halftone on the grey image and sets the result image.
bool PellamPrinter::halftoneForStencil(int width, int height, int stride) {
  pellamLogCommon(0,
                  "PageProcess: Copied pixels to the output buffer for QM dithering, with stride "
                  "%d, EffWidth %d",
                  stride, static_cast<int>(cximage_.GetEffWidth()));
  const bool created =
      ditheredImage_.CreateGrey(static_cast<uint32_t>(width), static_cast<uint32_t>(height));
  if (created) ditherForStencil(width, height, stride);
  pellamLogCommon(0, "PageProcess: Applied QM dithering with stride %d, width %d",
                  ((width + 3) / 4) * 4, width);
  if (!created) {
    pellamLogCommon(3, "PageProcess: Failed to create a new CxImage from QM dithered data");
    return false;
  }
  pellamLogCommon(0, "PageProcess: Successfully created a new CxImage from QM dithered data");
  pimage = &ditheredImage_;
  return true;
}

// Where the page's rows are longer than its width, they are laid out `stride` bytes apart but read
// without padding: the picture shears, and the gaps are read as black (PaddedStencilLines).
void PellamPrinter::ditherForStencil(int width, int height, int stride) {
  const auto columns = static_cast<size_t>(width);
  std::vector<unsigned char> padded;
  GreyRows grey(cximage_.GetBits(), cximage_.GetEffWidth(), width, height);
  if (stride != width || !cximage_.IsValid()) {
    padded.resize(static_cast<size_t>(std::max(stride, width)) * static_cast<size_t>(height));
    copyPixels(cximage_, padded.data(), width, height, stride);
    grey = GreyRows(padded.data(), columns, width, height);
  }
  const auto halftone =
      halftoneType_ == kHalftoneTattooZ4 ? qmTattooDitherRowsZ4 : qmTattooDitherRows;
  halftone(grey, ditheredImage_.GetBits(), ditheredImage_.GetEffWidth());
}

void PellamPrinter::copyPixels(CxImage& image, unsigned char* dst, int width, int height,
                               int stride) {
  for (int y = 0; y < height; ++y) {
    image.GetPixelIndices(0, y, static_cast<size_t>(width),
                          dst + static_cast<ptrdiff_t>(y) * stride);
  }
}

void PellamPrinter::copyProcessedPixels(CxImage* image, unsigned char* dst, int width, int height,
                                        int stride, size_t capacity) {
  const auto pixels = static_cast<size_t>(width);
  for (int y = 0; y < height; ++y) {
    const size_t at = static_cast<size_t>(y) * static_cast<size_t>(stride);
    if (at >= capacity) return;
    const size_t count = std::min(pixels, capacity - at);
    image->GetPixelIndices(0, y, count, dst + at);
    imageKernels().raiseOnes(dst + at, count, isNegativePrint());
    if (count < pixels) return;
  }
}
