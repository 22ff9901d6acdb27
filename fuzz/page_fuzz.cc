// A small page of arbitrary pixels under arbitrary settings, through the page pipeline and the
// transmission into memory: it must end, and its stream must be whole packets.
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
#include "protocol/korvel_printer.h"
#include "tools/stream_decoder.h"

namespace {

constexpr size_t kMaxBytes = 4096;

bool isSheet(const std::string& name) {
  return name == "A4" || name == "Letter" || name == "Tattoo_A5" || name == "Tattoo_A6";
}

class FuzzedPrinter : public KorvelPrinter {
 public:
  void process(const uint8_t* pixels, int stride, int width, int height) {
    std::vector<uint8_t> result(2 * static_cast<size_t>(stride * height));
    PageProcess(getHalftoneType(), pixels, stride, width, height, result.data());
    if (pimage == nullptr || !pimage->IsValid()) return;
    doPrintImage(pimage->GetBits(), pimage->GetEffWidth(), pimage->GetHeight(), pimage->GetWidth());
  }
};

void setUp(FuzzedPrinter& printer, HeaderLine& line, cups_page_header2_t& header) {
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count) {
  HeaderLine line(bytes, count);
  const int width = line.numberWithin(1, 200);
  const int stride = width + line.numberWithin(0, 9);
  const int height = static_cast<int>(std::min(line.count(), kMaxBytes)) / stride;
  if (height == 0) return 0;

  CatchStreams caught;
  cups_page_header2_t header{};
  FuzzedPrinter printer;
  setUp(printer, line, header);
  printer.process(line.bytes(), stride, width, height);
  for (FILE* stream : printer.getOutputStreams()) std::fflush(stream);

  korvel::StreamDecoder decoder([](const korvel::StreamItem&) {});
  const std::string& stream = caught.out();
  decoder.push(reinterpret_cast<const uint8_t*>(stream.data()), stream.size());
  decoder.finish();
  demand(decoder.error().empty(), "the stream is whole packets: " + decoder.error());
  return 0;
}
