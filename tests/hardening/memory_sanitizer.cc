// The page pipeline alone under clang's memory sanitizer, which ends the program at the first
// branch on, or the first look at, a byte that nobody wrote. No test framework: it would have to be
// instrumented as well, and so would the spooler's library, which this program never calls.
// SPDX-License-Identifier: Apache-2.0
#include <sanitizer/msan_interface.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "printer/pellam_printer.h"

namespace {

class ProbingPrinter : public PellamPrinter {
 public:
  ProbingPrinter() { std::memset(&header_, 0, sizeof header_); }
  void doPrintImage(const unsigned char*, size_t, size_t, size_t) override {}

  void frame(int level) {
    resolution_ = 3;
    std::strcpy(header_.cupsPageSizeName, "Tattoo_A6");
    setPageHeader(&header_);
    setAntiWrinkle(level);
  }

  // Looks at every byte of the result, as stored, as copied and as packed.
  void probe(const std::vector<unsigned char>& pixels, int stride, int width, int height) {
    std::vector<unsigned char> result(2 * pixels.size(), 0);
    PageProcess(getHalftoneType(), pixels.data(), stride, width, height, result.data());
    const size_t bytes = size_t{pimage->GetEffWidth()} * pimage->GetHeight();
    __msan_check_mem_is_initialized(result.data(), result.size());
    __msan_check_mem_is_initialized(pimage->GetBits(), bytes);
    const int packed = GrayToMono(static_cast<int>(pimage->GetEffWidth()),
                                  static_cast<int>(pimage->GetHeight()), pimage->GetBits());
    __msan_check_mem_is_initialized(pimage->GetBits(), static_cast<size_t>(packed));
  }

 private:
  cups_page_header2_t header_;
};

void probeAll(int width, int height, int padding) {
  const int stride = width + padding;
  std::vector<unsigned char> pixels(static_cast<size_t>(stride * height));
  unsigned state = static_cast<unsigned>(width);
  for (unsigned char& pixel : pixels) {
    state = state * 1103515245 + 12345;
    pixel = static_cast<unsigned char>(state >> 16);
  }
  for (int halftone = 0; halftone <= 9; ++halftone) {
    for (int mask = 0; mask < 32; ++mask) {
      // Never destroyed: the list of streams is linked by a library without instruments.
      auto* printer = new ProbingPrinter;
      printer->setHalftoneType(static_cast<DitherType>(halftone));
      printer->setMirrorPrint((mask & 1) != 0);
      printer->setNegativePrint((mask & 2) != 0);
      printer->setRotate180Print((mask & 4) != 0);
      printer->setBrightness((mask & 8) != 0 ? 7 : 0);
      if ((mask & 16) != 0) printer->frame(5);
      printer->probe(pixels, stride, width, height);
    }
  }
}

}  // namespace

int main() {
  stderr = std::fopen("/dev/null", "w");  // the log; the sanitizer writes to the descriptor
  for (int width = 1; width <= 33; ++width) {
    for (const int height : {1, 2, 5}) {
      probeAll(width, height, 0);
      probeAll(width, height, 3);
    }
  }
  std::puts("no byte without a writer");
  return 0;
}
