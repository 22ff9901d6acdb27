// One command packet of the printer's language, as a record and as bytes.
//   64 | command | parameter | n low, n high | n data bytes | 00 00 00 00 | 9B
// Feeding 300 lines in mode 0 is 64 00 00 03 00  00 2C 01  00 00 00 00 9B.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_PROTOCOL_PACKET_H
#define KORVEL_PROTOCOL_PACKET_H

#include <cstdint>

// Zero-fill before use. The data is not owned.
#pragma pack(push, 1)
struct _ASTRAPV2 {
  uint8_t head;  // 0x64
  uint8_t command;
  uint8_t parameter;
  uint16_t dataLength;  // bytes of data
  const uint8_t* data;  // null when there are none
  uint32_t checkWord;   // stays 0: the printer expects no checksum
  uint8_t tail;         // 0x9B
};
#pragma pack(pop)

constexpr uint8_t kPacketHead = 0x64;
constexpr uint8_t kPacketTail = 0x9B;
constexpr int kPacketOverhead = 10;  // bytes of a packet without data

// Returns a zero-filled record with head, tail, command and parameter set. The data is not copied.
_ASTRAPV2 makePacket(uint8_t command, uint8_t parameter, const uint8_t* data = nullptr,
                     uint16_t dataLength = 0);

// Returns the packet's bytes, which the caller frees with free(), or null when there is no memory
// for them; *length is set in both cases.
uint8_t* RapToArray(const _ASTRAPV2* record, int64_t* length);

#endif
