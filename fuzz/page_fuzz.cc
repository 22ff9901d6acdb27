// A small page of arbitrary pixels under arbitrary settings, through the page pipeline and the
// transmission into memory: its stream must be whole packets, and on every SIMD target that of the
// reference implementation.
// Header line: width, bytes after a row's last pixel, sheet name, dpi, halftone, brightness,
// contrast, mirror, negative, turn, frame level, stencil printer. Then the rows.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "bench/reference_printer.h"
#include "fuzz/caught_streams.h"
#include "fuzz/demand.h"
#include "fuzz/header_line.h"
#include "lanes/target.h"
#include "tools/stream/stream_decoder.h"

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

class FilterPage : public KorvelPrinter {
 public:
  void print(const Page& page) {
    std::vector<uint8_t> copy(2 * static_cast<size_t>(page.stride * page.height));
    PageProcess(getHalftoneType(), page.pixels, page.stride, page.width, page.height, copy.data());
    if (pimage == nullptr || !pimage->IsValid()) return;
    doPrintImage(pimage->GetBits(), pimage->GetEffWidth(), pimage->GetHeight(), pimage->GetWidth());
  }
};

// The same page through the reference implementation, which does not log.
class ReferencePage : public ReferencePrinter {
 public:
  void print(const Page& page) {
    std::vector<uint8_t> copy(2 * static_cast<size_t>(page.stride * page.height));
    processPage(page.pixels, page.stride, page.width, page.height, copy.data());
    sendPage();
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
  const std::string want = streamOf<ReferencePage>(page, line);
  demandWhole(want);
  for (const Target target : availableTargets()) {
    chooseTarget(target);
    demand(streamOf<FilterPage>(page, line) == want,
           std::string("the streams are the same on ") + nameOf(target));
  }
  return 0;
}
