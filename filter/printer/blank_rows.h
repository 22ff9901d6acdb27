// Counts of blank rows at a page's edges: all bytes zero, some at the right left out.
// A leaf header.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_PRINTER_BLANK_ROWS_H
#define KORVEL_PRINTER_BLANK_ROWS_H

#include <cstddef>

extern "C" {

// Both look at the first widthBytes - skipRightBytes bytes of each row (at all of them when the
// skip is larger than the row); rows are `stride` bytes apart.

// Blank rows that follow row 0, which itself is never looked at; `height` when there is no other
// ink. Reads the row after the image: the buffer holds height + 1 rows.
size_t pellamImageCountBlankLinesFromFront(const unsigned char* data, size_t widthBytes,
                                           size_t height, size_t skipRightBytes, size_t stride);

// Rows up to and including the last one with ink: what to keep, not what is blank.
size_t pellamImageCountBlankLinesFromBack(const unsigned char* data, size_t widthBytes,
                                          size_t height, size_t skipRightBytes, size_t stride);
}

#endif
