// The line between a host and an emulated printer, and what may go wrong on it: reading that is
// slow or stalls, hang-ups, replies that stay away, come in pieces, twice, or behind noise.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_EMULATOR_PRINTER_LINE_H
#define KORVEL_TOOLS_EMULATOR_PRINTER_LINE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/emulator/printer_scenario.h"

namespace korvel {

// Time between the pieces of a split reply: long enough that the host reads each by itself.
inline constexpr Micros kPieceGap = 50'000;

class PrinterLine {
 public:
  struct Piece {
    Micros due;
    std::string bytes;  // to be written at once
  };

  bool apply(const Scenario& scenario, Micros now);  // false: not about the line

  // Bytes that may be read now; 0: not before nextRead().
  size_t readable(Micros now) const;
  Micros nextRead() const { return readAgainAt_; }
  void took(size_t bytes, Micros now);

  bool mustHangUp() const { return hangUpIn_ && *hangUpIn_ == 0; }
  void hungUp() { hangUpIn_.reset(); }

  // What goes out for a reply, and when; nothing while the printer is silent.
  std::vector<Piece> pieces(const std::string& reply, Micros now);

 private:
  bool isSilent(Micros now) const { return silentForEver_ || now < silentUntil_; }
  std::string noise();

  // Reading.
  int64_t bytesPerSecond_ = 0;  // 0: as they come
  Micros readAgainAt_ = 0;
  std::optional<int64_t> stallIn_, hangUpIn_;  // bytes from here on
  Micros stallFor_ = 0;

  // Replies.
  bool silentForEver_ = false;
  Micros silentUntil_ = 0;
  size_t noiseBytes_ = 0;
  uint32_t noiseState_ = 1;
  size_t pieceBytes_ = 0;  // 0: whole
  bool twice_ = false;
  Micros lastDue_ = 0;
};

}  // namespace korvel

#endif
