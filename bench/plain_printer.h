// A page's road with every plain form in place of the fast one: what whole pages are held against.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_BENCH_PLAIN_PRINTER_H
#define KORVEL_BENCH_PLAIN_PRINTER_H

#include "protocol/korvel_printer.h"

class PlainPrinter : public KorvelPrinter {
 public:
  // Does what printImage does, dumps, packets and all, one pixel at a time and without its log.
  void printPlainly(const unsigned char* data, size_t bytesPerLine, size_t height, size_t width);

 private:
  void halftonePlainly(unsigned char* copy, int width, int height, int stride);
};

#endif
