// Measures the blank rows at the top and bottom of a page.
// The results are only reported: no row is ever left out of a print.
// SPDX-License-Identifier: Apache-2.0
#include "printer/blank_rows.h"

namespace {

bool isBlankRow(const unsigned char* row, size_t bytes) {
  for (size_t i = 0; i < bytes; ++i) {
    if (row[i] != 0) return false;
  }
  return true;
}

size_t examinedBytes(size_t widthBytes, size_t skipRightBytes) {
  return skipRightBytes > widthBytes ? widthBytes : widthBytes - skipRightBytes;
}

}  // namespace

size_t pellamImageCountBlankLinesFromFront(const unsigned char* data, size_t widthBytes,
                                           size_t height, size_t skipRightBytes, size_t stride) {
  const size_t bytes = examinedBytes(widthBytes, skipRightBytes);
  const unsigned char* row = data;
  size_t count = 0;
  while (count < height) {
    row += stride;  // before the first look: row 0 does not count (BlankRowsFromFront)
    if (!isBlankRow(row, bytes)) return count;
    ++count;
  }
  return count;
}

size_t pellamImageCountBlankLinesFromBack(const unsigned char* data, size_t widthBytes,
                                          size_t height, size_t skipRightBytes, size_t stride) {
  const size_t bytes = examinedBytes(widthBytes, skipRightBytes);
  const unsigned char* row = data + height * stride;
  size_t counter = height;
  while (counter > 0) {
    row -= stride;
    if (!isBlankRow(row, bytes)) return counter;
    --counter;
  }
  return 0;
}
