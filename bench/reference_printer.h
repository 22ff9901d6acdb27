// A page's processing and transmission by the reference implementation, with which whole pages are
// compared.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_BENCH_REFERENCE_PRINTER_H
#define KORVEL_BENCH_REFERENCE_PRINTER_H

#include "protocol/korvel_printer.h"

class ReferencePrinter : public KorvelPrinter {
 public:
  // Does what printImage does, with dumps and packets, one pixel at a time and without its log.
  void printPage(const unsigned char* data, size_t bytesPerLine, size_t height, size_t width);

  // The two parts of it that make dots and packets. `copy` is zeroed and has room for twice the
  // rows; pimage is the result.
  void processPage(const unsigned char* data, int bytesPerLine, int width, int height,
                   unsigned char* copy);
  void sendPage();

 private:
  void halftonePage(unsigned char* copy, int width, int height, int stride);
};

#endif
