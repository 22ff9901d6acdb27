// A page's road with every plain form in place of the fast one: what whole pages are held against.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_BENCH_PLAIN_PRINTER_H
#define KORVEL_BENCH_PLAIN_PRINTER_H

#include "protocol/korvel_printer.h"

class PlainPrinter : public KorvelPrinter {
 public:
  // Does what printImage does, dumps, packets and all, one pixel at a time and without its log.
  void printPlainly(const unsigned char* data, size_t bytesPerLine, size_t height, size_t width);

  // The two halves of it that make dots and packets. `copy` is zeroed and has room for the rows
  // twice; pimage is the result.
  void processPlainly(const unsigned char* data, int bytesPerLine, int width, int height,
                      unsigned char* copy);
  void sendPlainly();

 private:
  void halftonePlainly(unsigned char* copy, int width, int height, int stride);
};

#endif
