// The status word of reporting printers, and how replies are logged.
// A reply is 64 FF, three ignored bytes, then the word, low byte first.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_PROTOCOL_STATUS_H
#define KORVEL_PROTOCOL_STATUS_H

#include <cstddef>

// Bits of the status word; the others have no meaning here.
constexpr int kStatusReady = 0x00800000;
constexpr int kStatusPaperOut = 0x00080000;  // no sheet in the printer
constexpr int kStatusCoverOpen = 0x00010000;

// Writes each byte as "%02X ", then a newline, to standard error.
void print_data_as_hex(const unsigned char* data, size_t length);

#endif
