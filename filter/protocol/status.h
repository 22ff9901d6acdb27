// The status word of reporting printers, and how its replies are shown in the log.
// A reply is 64 FF, three bytes that nobody reads, then the word, low byte first.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_PROTOCOL_STATUS_H
#define KORVEL_PROTOCOL_STATUS_H

#include <cstddef>

// Bits of the status word; all others are kept and mean nothing here.
constexpr int kStatusReady = 0x00800000;
constexpr int kStatusPaperOut = 0x00080000;  // no sheet in the printer
constexpr int kStatusCoverOpen = 0x00010000;

// Writes "%02X " a byte and a line end to standard error.
void print_data_as_hex(const unsigned char* data, size_t length);

#endif
