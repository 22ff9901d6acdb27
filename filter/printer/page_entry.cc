// The page's story: measured, dumped, processed, dumped again, printed.
// Every step leaves a log line, so that a page can be followed in the spooler's log.
// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>

#include "printer/blank_rows.h"
#include "printer/log.h"
#include "printer/pellam_printer.h"
#include "printer/text.h"

namespace {

constexpr unsigned char kTopEdge = 0x02;
constexpr unsigned char kBottomEdge = 0x08;

// Rows found by measuring; both 0 when an edge is not asked for.
struct BlankEdges {
  size_t top = 0;
  size_t bottom = 0;  // rows up to the last ink
};

BlankEdges measureBlankEdges(unsigned char mask, const unsigned char* data, size_t bytesPerLine,
                             size_t height, size_t skipRight, size_t width) {
  BlankEdges edges;
  if ((mask & kBottomEdge) != 0) {
    edges.bottom = pellamImageCountBlankLinesFromBack(data, bytesPerLine, height, skipRight, width);
    pellamLogCommon(0,
                    "printImage: Removal of bottom blank edges detected, number of bottom blank "
                    "lines: %zu",
                    edges.bottom);
  }
  if ((mask & kTopEdge) != 0) {
    edges.top = pellamImageCountBlankLinesFromFront(data, bytesPerLine, height, skipRight, width);
    pellamLogCommon(
        0, "printImage: Removal of top blank edges detected, number of top blank lines: %zu",
        edges.top);
  }
  return edges;
}

// Tells what trimming would leave. Nothing is trimmed: the whole result is printed.
void logTrimmedSize(const BlankEdges& edges, const unsigned char* result, size_t bytesPerLine,
                    size_t height, size_t width) {
  size_t adjustedHeight = height;
  const unsigned char* adjusted = result;
  if (edges.bottom > edges.top) {
    adjustedHeight = edges.bottom - edges.top;
    adjusted += edges.top * bytesPerLine;
    pellamLogCommon(0, "printImage: Adjusted image height to %zu, pointer offset by %zu bytes",
                    adjustedHeight, edges.top * bytesPerLine);
  }
  // The labels of width and bytes per line stand swapped: log readers know them so.
  pellamLogCommon(0,
                  "printImage: Processed image information - pointer address: %lu, width: %zu, "
                  "height: %zu, bytes per line: %zu, number of top blank lines: %zu, number of "
                  "bottom blank lines: %zu, adjusted height: %zu",
                  reinterpret_cast<unsigned long>(adjusted), bytesPerLine, height, width, edges.top,
                  edges.bottom, adjustedHeight);
}

}  // namespace

void PellamPrinter::printImage(const unsigned char* data, size_t bytesPerLine, size_t height,
                               size_t width) {
  pellamLogCommon(
      0, "printImage: Start processing image, input width: %zu, height: %zu, bytes per line: %zu",
      width, height, bytesPerLine);
  const size_t size = bytesPerLine * height;
  unsigned char* result = nullptr;
  // Held for the page and never touched: without memory for it the page does not print. Volatile,
  // or compilers leave the allocation out.
  void* volatile reserve = std::malloc(size);
  if (reserve == nullptr) {
    pellamLogCommon(
        3, "printImage: Memory allocation failed, unable to process image, exiting processing");
  } else {
    pellamLogCommon(0, "printImage: Memory allocated successfully, size: %zu bytes", size);
    BlankEdges edges;
    if (removeBlankEdges_ != 0) {
      edges =
          measureBlankEdges(removeBlankEdges_, data, bytesPerLine, height, skipRightPixels_, width);
    }
    pellamStrCpy(bmpPathFormat_, "/var/spool/cups/tmp/origin_%d-%d-%d_%d_%d_%d_%ld.bmp",
                 sizeof bmpPathFormat_);
    pellamLogCommon(0,
                    "printImage: Saving original image, file path will be generated based on time");
    saveImage(data, bytesPerLine, height, width, 8);

    result = static_cast<unsigned char*>(std::malloc(2 * size));
    if (result == nullptr) {
      pellamLogCommon(3,
                      "printImage: Memory allocation for processing result failed, unable to "
                      "continue processing");
    } else {
      // Tells the single size, as log readers know it.
      pellamLogCommon(
          0, "printImage: Memory for processing result allocated successfully, size: %zu bytes",
          size);
      PageProcess(halftoneType_, data, static_cast<int>(bytesPerLine), static_cast<int>(width),
                  static_cast<int>(height), nullptr);  // prints from the image itself
      logTrimmedSize(edges, result, bytesPerLine, height, width);
      dumpAndPrintResult();
    }
  }

  if (reserve != nullptr) {
    std::free(reserve);
    reserve = nullptr;
    // Told after it was forgotten, so the address is always a null one.
    pellamLogCommon(0, "printImage: Freed the allocated memory, address: %p", reserve);
  }
  if (result != nullptr) {
    pellamLogCommon(0, "printImage: Freed the memory for processing result, address: %p",
                    static_cast<void*>(result));
    std::free(result);
  }
  pellamLogCommon(0, "printImage: Image processing completed");
}

// Prints the image's own rows, not the result buffer. An image object of an earlier page is
// printed again when this page failed; one without pixels counts as none.
void PellamPrinter::dumpAndPrintResult() {
  const bool printable = pimage != nullptr && pimage->IsValid();
  pellamStrCpy(bmpPathFormat_, "/var/spool/cups/tmp/dithered_%d-%d-%d_%d_%d_%d_%ld.bmp",
               sizeof bmpPathFormat_);
  pellamLogCommon(0,
                  "printImage: Saving processed image, file path will be generated based on time");
  if (printable) {
    saveImage(pimage->GetBits(), pimage->GetEffWidth(), pimage->GetHeight(), pimage->GetWidth(), 8);
  }
  pellamLogCommon(0, "printImage: Starting to print the processed image");
  if (printable) {
    doPrintImage(pimage->GetBits(), pimage->GetEffWidth(), pimage->GetHeight(), pimage->GetWidth());
  } else {
    pellamLogCommon(3, "printImage: pimage is NULL, unable to print the image");
  }
}
