// A small page of arbitrary pixels under arbitrary settings, through the page pipeline and the
// transmission into memory: its stream must be whole packets, the same on every target as by the
// plain forms.
// Header line: width, bytes behind a row's last pixel, sheet name, dpi, halftone, brightness,
// contrast, mirror, negative, turn, frame level, stencil printer. Then the rows.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/caught_streams.h"
#include "fuzz/demand.h"
#include "fuzz/header_line.h"
#include "image/cximage_literal.h"
#include "lanes/target.h"
#include "printer/page_literal.h"
#include "protocol/korvel_printer.h"
#include "tattoo/literal.h"
#include "tools/stream_decoder.h"

namespace {

constexpr size_t kMaxBytes = 4096;

bool isSheet(const std::string& name) {
  return name == "A4" || name == "Letter" || name == "Tattoo_A5" || name == "Tattoo_A6";
}

// What one page is made of and printed with.
struct Page {
  const uint8_t* pixels;
  int stride;
  int width;
  int height;
};

class FastPrinter : public KorvelPrinter {
 public:
  void print(const Page& page) {
    std::vector<uint8_t> copy(2 * static_cast<size_t>(page.stride * page.height));
    PageProcess(getHalftoneType(), page.pixels, page.stride, page.width, page.height, copy.data());
    if (pimage == nullptr || !pimage->IsValid()) return;
    doPrintImage(pimage->GetBits(), pimage->GetEffWidth(), pimage->GetHeight(), pimage->GetWidth());
  }
};

// The same road in plain forms; it says nothing.
class PlainPrinter : public KorvelPrinter {
 public:
  void print(const Page& page) {
    cximage_.CreateFromArray(page.pixels, static_cast<uint32_t>(page.width),
                             static_cast<uint32_t>(page.height), 8,
                             static_cast<uint32_t>(page.stride), false);
    if (getBrightness() != 0 || getContrast() != 0) {
      cximage_.Light(getBrightness() * 5, getContrast() * 2);
    }
    if (isRotate180Print()) CxImageLiteral::Rotate180(cximage_);
    if (isMirrorPrint()) CxImageLiteral::Mirror(cximage_);
    halftone(page);
    if (isNegativePrint()) CxImageLiteral::Negative(*pimage);
    if (getAntiWrinkle() != 0) EnableAntiWrink(*pimage);
    send();
  }

 private:
  void halftone(const Page& page) {
    const DitherType type = getHalftoneType();
    if (type != kHalftoneTattoo && type != kHalftoneTattooZ4) {
      CxImageLiteral::Dither(cximage_, type);
      CxImageLiteral::IncreaseBpp(cximage_, 8);
      pimage = &cximage_;
      return;
    }
    std::vector<uint8_t> copy(2 * static_cast<size_t>(page.stride * page.height));
    PageLiteral::copyPixels(cximage_, copy.data(), page.width, page.height, page.stride);
    const QMImage input(page.width, page.height, QM_IMG_GRAY, copy.data());
    const QMImage output = type == kHalftoneTattooZ4 ? literal::qmTattooDitheringZ4(input)
                                                     : literal::qmTattooDithering(input);
    const auto columns = static_cast<uint32_t>(page.width);
    ditheredImage_.CreateFromArray(output.data, columns, static_cast<uint32_t>(page.height), 8,
                                   columns, false);
    pimage = &ditheredImage_;
  }

  void send() {
    const auto rows = static_cast<int>(pimage->GetHeight());
    const int packed = PageLiteral::GrayToMono(static_cast<int>(pimage->GetEffWidth()), rows, 0,
                                               pimage->GetBits());
    if (tattooPrinter_ != 0) {
      FeedPaper(0, static_cast<int>(static_cast<uint32_t>(resolution_) * 120 / 254));
    }
    SendImage(packed, {static_cast<int64_t>(pimage->GetWidth()), rows}, pimage->GetBits());
  }
};

void setUp(KorvelPrinter& printer, HeaderLine line, cups_page_header2_t& header) {
  const std::string sheet(line.word());
  std::strncpy(header.cupsPageSizeName, sheet.c_str(), sizeof header.cupsPageSizeName - 1);
  printer.setPageHeader(&header);
  printer.resolution_ = line.numberWithin(0, 23);  // small sheets, or the frame takes all the time
  printer.setHalftoneType(static_cast<DitherType>(line.numberWithin(0, 11)));
  printer.setBrightness(line.number());
  printer.setContrast(line.number());
  printer.setMirrorPrint(line.number() != 0);
  printer.setNegativePrint(line.number() != 0);
  printer.setRotate180Print(line.number() != 0);
  // Around a sheet a frame of level -1 is a million dots wide.
  printer.setAntiWrinkle(line.numberWithin(isSheet(sheet) ? 0 : -1, 8));
  printer.tattooPrinter_ = line.number();
}

// Prints the page on a new printer; returns its stream.
template <class Printer>
std::string streamOf(const Page& page, const HeaderLine& line) {
  CatchStreams caught;
  cups_page_header2_t header{};
  Printer printer;
  setUp(printer, line, header);
  printer.print(page);
  for (FILE* stream : printer.getOutputStreams()) std::fflush(stream);
  return caught.out();
}

void demandWhole(const std::string& stream) {
  korvel::StreamDecoder decoder([](const korvel::StreamItem&) {});
  decoder.push(reinterpret_cast<const uint8_t*>(stream.data()), stream.size());
  decoder.finish();
  demand(decoder.error().empty(), "the stream is whole packets: " + decoder.error());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count) {
  HeaderLine line(bytes, count);
  const int width = line.numberWithin(1, 200);
  const int stride = width + line.numberWithin(0, 9);
  const int height = static_cast<int>(std::min(line.count(), kMaxBytes)) / stride;
  if (height == 0) return 0;
  const Page page{line.bytes(), stride, width, height};
  const std::string plain = streamOf<PlainPrinter>(page, line);
  demandWhole(plain);
  for (const Target target : availableTargets()) {
    chooseTarget(target);
    demand(streamOf<FastPrinter>(page, line) == plain,
           std::string("the streams are the same on ") + nameOf(target));
  }
  return 0;
}
