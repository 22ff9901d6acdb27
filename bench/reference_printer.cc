// A page in the order of PellamPrinter::printImage, step by step.
// SPDX-License-Identifier: Apache-2.0
#include "bench/reference_printer.h"

#include <cstdlib>

#include "image/cximage_reference.h"
#include "printer/page_reference.h"
#include "tattoo/tattoo_reference.h"

void ReferencePrinter::printPage(const unsigned char* data, size_t bytesPerLine, size_t height,
                                 size_t width) {
  saveImage(data, bytesPerLine, height, width, 8);
  const size_t size = bytesPerLine * height;
  auto* copy = static_cast<unsigned char*>(std::calloc(2 * size, 1));
  processPage(data, static_cast<int>(bytesPerLine), static_cast<int>(width),
              static_cast<int>(height), copy);
  reference::copyProcessedPixels(
      pimage, copy, static_cast<int>(pimage->GetWidth()), static_cast<int>(pimage->GetHeight()),
      static_cast<int>(pimage->GetEffWidth()), isNegativePrint(), 2 * size);
  saveImage(pimage->GetBits(), pimage->GetEffWidth(), pimage->GetHeight(), pimage->GetWidth(), 8);
  sendPage();
  std::free(copy);
}

void ReferencePrinter::processPage(const unsigned char* data, int bytesPerLine, int width,
                                   int height, unsigned char* copy) {
  cximage_.CreateFromArray(data, static_cast<uint32_t>(width), static_cast<uint32_t>(height), 8,
                           static_cast<uint32_t>(bytesPerLine), false);
  if (getBrightness() != 0 || getContrast() != 0) {
    cximage_.Light(getBrightness() * 5, getContrast() * 2);
  }
  if (isRotate180Print()) reference::Rotate180(cximage_);
  if (isMirrorPrint()) reference::Mirror(cximage_);
  halftonePage(copy, width, height, bytesPerLine);
  if (isNegativePrint()) reference::Negative(*pimage);
  if (getAntiWrinkle() != 0) EnableAntiWrink(*pimage);
}

void ReferencePrinter::sendPage() {
  const auto rows = static_cast<int>(pimage->GetHeight());
  const int packed =
      reference::GrayToMono(static_cast<int>(pimage->GetEffWidth()), rows, 0, pimage->GetBits());
  if (tattooPrinter_ != 0) {
    FeedPaper(0, static_cast<int>(static_cast<uint32_t>(resolution_) * 120 / 254));
  }
  SendImage(packed, {static_cast<int64_t>(pimage->GetWidth()), rows}, pimage->GetBits());
}

void ReferencePrinter::halftonePage(unsigned char* copy, int width, int height, int stride) {
  const DitherType type = getHalftoneType();
  if (type != kHalftoneTattoo && type != kHalftoneTattooZ4) {
    reference::Dither(cximage_, type);
    reference::IncreaseBpp(cximage_, 8);
    pimage = &cximage_;
    return;
  }
  reference::copyPixels(cximage_, copy, width, height, stride);
  const QMImage input(width, height, QM_IMG_GRAY, copy);
  const QMImage output = type == kHalftoneTattooZ4 ? reference::qmTattooDitheringZ4(input)
                                                   : reference::qmTattooDithering(input);
  const auto columns = static_cast<uint32_t>(width);
  ditheredImage_.CreateFromArray(output.data, columns, static_cast<uint32_t>(height), 8, columns,
                                 false);
  pimage = &ditheredImage_;
}
