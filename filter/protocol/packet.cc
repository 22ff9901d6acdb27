// Builds packets and serialises them as the printer reads them, low bytes first.
// The check word is copied unchanged; it is always zero.
// SPDX-License-Identifier: Apache-2.0
#include "protocol/packet.h"

#include <cstdlib>
#include <cstring>

_ASTRAPV2 makePacket(uint8_t command, uint8_t parameter, const uint8_t* data, uint16_t dataLength) {
  _ASTRAPV2 packet{};
  packet.head = kPacketHead;
  packet.command = command;
  packet.parameter = parameter;
  packet.dataLength = dataLength;
  packet.data = data;
  packet.tail = kPacketTail;
  return packet;
}

uint8_t* RapToArray(const _ASTRAPV2* record, int64_t* length) {
  const size_t n = record->dataLength;
  *length = static_cast<int64_t>(n) + kPacketOverhead;
  auto* bytes = static_cast<uint8_t*>(std::malloc(n + kPacketOverhead));
  if (bytes == nullptr) return nullptr;
  bytes[0] = record->head;
  bytes[1] = record->command;
  bytes[2] = record->parameter;
  bytes[3] = static_cast<uint8_t>(n & 0xFF);
  bytes[4] = static_cast<uint8_t>(n >> 8);
  if (n != 0) std::memcpy(bytes + 5, record->data, n);
  for (size_t i = 0; i < 4; ++i) {
    bytes[5 + n + i] = static_cast<uint8_t>(record->checkWord >> (8 * i));
  }
  bytes[9 + n] = record->tail;
  return bytes;
}
