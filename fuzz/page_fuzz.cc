// A small page of arbitrary pixels under arbitrary settings, through the page pipeline and the
// transmission into memory: it must end, with no byte out of place.
// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstring>
#include <vector>

#include "protocol/korvel_printer.h"

namespace {

constexpr size_t kSettingBytes = 16;

// Keeps the log and the dumps out of the way.
struct Quiet {
  Quiet() { stderr = std::fopen("/dev/null", "w"); }
};

class FuzzedPrinter : public KorvelPrinter {
 public:
  void process(const uint8_t* pixels, int stride, int width, int height) {
    std::vector<uint8_t> result(2 * static_cast<size_t>(stride * height));
    PageProcess(getHalftoneType(), pixels, stride, width, height, result.data());
    if (pimage == nullptr || !pimage->IsValid()) return;
    doPrintImage(pimage->GetBits(), pimage->GetEffWidth(), pimage->GetHeight(), pimage->GetWidth());
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count) {
  static const Quiet quiet;
  if (count < kSettingBytes + 1) return 0;
  const int width = bytes[0] % 64 + 1;
  const int stride = width + bytes[1] % 8;
  const int height = static_cast<int>((count - kSettingBytes) / static_cast<size_t>(stride));
  if (height == 0) return 0;

  cups_page_header2_t header{};
  static const char* const kNames[] = {"", "A4", "Letter", "Tattoo_A5", "Tattoo_A6"};
  std::strcpy(header.cupsPageSizeName, kNames[bytes[2] % 5]);
  FuzzedPrinter printer;
  printer.getOutputStreams().clear();
  printer.setPageHeader(&header);
  printer.resolution_ = 12 + bytes[3] % 32;  // small sheets, or the frame takes all the time
  printer.setHalftoneType(static_cast<DitherType>(bytes[4] % 12));
  printer.setBrightness(static_cast<int8_t>(bytes[5]));
  printer.setContrast(static_cast<int8_t>(bytes[6]));
  printer.setMirrorPrint((bytes[7] & 1) != 0);
  printer.setNegativePrint((bytes[7] & 2) != 0);
  printer.setRotate180Print((bytes[7] & 4) != 0);
  printer.setAntiWrinkle(bytes[8] % 5);
  printer.tattooPrinter_ = bytes[9] & 1;
  printer.process(bytes + kSettingBytes, stride, width, height);
  return 0;
}
