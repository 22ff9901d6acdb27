// The connection between a host and an emulated printer, and what may go wrong with it: slow or
// stalled reading, hang-ups, replies that are missing, wrong, split, doubled, or preceded by noise.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_STREAM_PRINTER_CONNECTION_H
#define KORVEL_TOOLS_STREAM_PRINTER_CONNECTION_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "tools/stream/printer_scenario.h"

namespace korvel {

// Time between the pieces of a split reply: long enough that the host reads each by itself.
inline constexpr Micros kPieceGap = 50'000;

class PrinterConnection {
 public:
  struct Piece {
    Micros due;
    std::string bytes;  // to be written at once
  };
  struct Reply {
    ReplyKind kind = ReplyKind::kTrue;
    std::vector<Piece> pieces;  // what is sent, and when
  };

  bool apply(const Scenario& scenario, Micros now);  // false: not about the connection

  // Bytes that may be read now; 0: not before nextRead().
  size_t readable(Micros now) const;
  Micros nextRead() const { return readAgainAt_; }
  void took(size_t bytes, Micros now);

  bool mustHangUp() const { return hangUpIn_ && *hangUpIn_ == 0; }
  void hungUp() { hangUpIn_.reset(); }

  // The answer to a status request to which the printer's true reply is `reply`. Nothing is sent
  // while the printer is silent.
  Reply answer(const std::string& reply, Micros now);

 private:
  bool isSilent(Micros now) const { return silentForEver_ || now < silentUntil_; }
  Scenario nextScripted();
  std::vector<Piece> scheduled(const std::vector<std::string>& pieces, Micros now);
  std::vector<std::string> splitUp(const std::string& bytes) const;
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
  std::deque<Scenario> scripted_;  // kReply, in order, each with the times that are left
  size_t pieceBytes_ = 0;          // 0: whole
  bool twice_ = false;
  Micros lastDue_ = 0;
};

}  // namespace korvel

#endif
