// The part that all commands share: a packet is written to every output stream.
// The commands themselves are in commands.cc.
// SPDX-License-Identifier: Apache-2.0
#include "protocol/korvel_printer.h"

#include <cstdlib>

// Returns whether there was memory to build the packet.
bool KorvelPrinter::sendPacket(const _ASTRAPV2& packet) {
  int64_t length = 0;
  uint8_t* bytes = RapToArray(&packet, &length);
  if (bytes == nullptr) return false;
  printBytes(bytes, static_cast<size_t>(length));
  std::free(bytes);
  return true;
}
