// The printer object's settings with their limits, and its output streams.
// Output goes to every stream in list order; a failed write stops nothing.
// SPDX-License-Identifier: Apache-2.0
#include "printer/pellam_printer.h"

#include <algorithm>
#include <cstdarg>
#include <cstdlib>

// "Copyright (c) 2026 The Korvel printer driver authors", one code per character.
const char* const copyright =
    "MFT:43 6F 70 79 72 69 67 68 74 20 28 63 29 20 32 30 32 36 20 54 68 65 20 4B 6F 72 76 65 6C "
    "20 70 72 69 6E 74 65 72 20 64 72 69 76 65 72 20 61 75 74 68 6F 72 73";

PellamPrinter::PellamPrinter() { outputStreams_.push_back(stdout); }

PellamPrinter::~PellamPrinter() {
  cximage_.Destroy();
  ditheredImage_.Destroy();
}

void PellamPrinter::setBrightness(int step) { brightness_ = std::clamp(step, -100, 100); }

void PellamPrinter::setContrast(int step) { contrast_ = std::clamp(step, -100, 100); }

void PellamPrinter::setPrintSpeed(const char* text) {
  printSpeed_ = std::clamp(std::atoi(text), 1, 15);
}

void PellamPrinter::setPrintDensity(int density) { printDensity_ = std::clamp(density, 0, 15); }

void PellamPrinter::printBytes(const unsigned char* data, size_t length) {
  for (FILE* stream : outputStreams_) {
    if (stream != nullptr) std::fwrite(data, length, 1, stream);
  }
}

void PellamPrinter::printStr(const char* text) {
  for (FILE* stream : outputStreams_) {
    if (stream != nullptr) std::fprintf(stream, "%s", text);
  }
}

void PellamPrinter::printByte(unsigned char value) {
  for (FILE* stream : outputStreams_) {
    if (stream != nullptr) std::fputc(value, stream);
  }
}

int PellamPrinter::printFormat(const char* format, ...) {
  int written = 0;
  for (FILE* stream : outputStreams_) {
    if (stream == nullptr) continue;
    va_list arguments;
    va_start(arguments, format);
    written = std::vfprintf(stream, format, arguments);
    va_end(arguments);
  }
  return written;
}

const char* PellamPrinter::getCopyRight() { return copyright; }
