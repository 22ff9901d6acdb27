// Counts bytes and times only; the caller has the descriptors.
// SPDX-License-Identifier: Apache-2.0
#include "tools/stream/printer_connection.h"

#include <algorithm>

namespace korvel {
namespace {

constexpr size_t kMostAtOnce = 65536;
constexpr int64_t kSlowReadsPerSecond = 20;

}  // namespace

bool PrinterConnection::apply(const Scenario& scenario, Micros now) {
  switch (scenario.kind) {
    case ScenarioKind::kSilent:
      silentForEver_ = scenario.duration == kForEver;
      silentUntil_ = silentForEver_ ? now : now + scenario.duration;
      return true;
    case ScenarioKind::kNoise:
      noiseBytes_ = static_cast<size_t>(scenario.bytes);
      return true;
    case ScenarioKind::kSplit:
      pieceBytes_ = static_cast<size_t>(scenario.bytes);
      return true;
    case ScenarioKind::kGlue:
      twice_ = true;
      return true;
    case ScenarioKind::kReply:
      scripted_.push_back(scenario);
      return true;
    case ScenarioKind::kSlow:
      bytesPerSecond_ = scenario.bytes;
      return true;
    case ScenarioKind::kStall:
      stallIn_ = scenario.bytes;
      stallFor_ = scenario.duration;
      took(0, now);
      return true;
    case ScenarioKind::kDisconnect:
      hangUpIn_ = scenario.bytes;
      return true;
    default:
      return false;
  }
}

// Not beyond the byte at which something happens.
size_t PrinterConnection::readable(Micros now) const {
  if (now < readAgainAt_ || mustHangUp()) return 0;
  int64_t most = kMostAtOnce;
  if (bytesPerSecond_ != 0) {
    most = std::min(most, std::max<int64_t>(1, bytesPerSecond_ / kSlowReadsPerSecond));
  }
  if (stallIn_) most = std::min(most, *stallIn_);
  if (hangUpIn_) most = std::min(most, *hangUpIn_);
  return static_cast<size_t>(most);
}

void PrinterConnection::took(size_t bytes, Micros now) {
  const auto count = static_cast<int64_t>(bytes);
  if (bytesPerSecond_ != 0) {
    readAgainAt_ = std::max(readAgainAt_, now) + count * 1'000'000 / bytesPerSecond_;
  }
  if (hangUpIn_) *hangUpIn_ -= count;
  if (!stallIn_) return;
  *stallIn_ -= count;
  if (*stallIn_ > 0) return;
  readAgainAt_ = std::max(readAgainAt_, now) + stallFor_;
  stallIn_.reset();
}

// Without a script, and after its end, the printer's true reply.
Scenario PrinterConnection::nextScripted() {
  if (scripted_.empty()) return Scenario();
  const Scenario next = scripted_.front();
  if (--scripted_.front().times == 0) scripted_.pop_front();
  return next;
}

PrinterConnection::Reply PrinterConnection::answer(const std::string& reply, Micros now) {
  const Scenario scripted = nextScripted();
  if (isSilent(now)) return {ReplyKind::kNothing, {}};
  if (scripted.reply == ReplyKind::kBytes) {
    return {scripted.reply, scheduled(scripted.pieces, now)};
  }
  if (scripted.reply != ReplyKind::kTrue) return {scripted.reply, {}};
  std::string bytes = noise() + reply;
  if (twice_) bytes += reply;
  twice_ = false;
  return {ReplyKind::kTrue, scheduled(splitUp(bytes), now)};
}

std::vector<std::string> PrinterConnection::splitUp(const std::string& bytes) const {
  if (pieceBytes_ == 0) return {bytes};
  std::vector<std::string> pieces;
  for (size_t at = 0; at < bytes.size(); at += pieceBytes_) {
    pieces.push_back(bytes.substr(at, pieceBytes_));
  }
  return pieces;
}

// A split reply keeps its distance from the next one too.
std::vector<PrinterConnection::Piece> PrinterConnection::scheduled(
    const std::vector<std::string>& pieces, Micros now) {
  std::vector<Piece> due;
  Micros next = std::max(now, lastDue_);
  for (const std::string& piece : pieces) {
    due.push_back({next, piece});
    next += kPieceGap;
  }
  lastDue_ = pieces.size() == 1 && pieceBytes_ == 0 ? due.back().due : next;
  return due;
}

// A linear congruential sequence with the constants of Numerical Recipes (Press et al.): the same
// noise in every run.
std::string PrinterConnection::noise() {
  std::string bytes;
  for (; noiseBytes_ > 0; --noiseBytes_) {
    noiseState_ = noiseState_ * 1664525u + 1013904223u;
    bytes.push_back(static_cast<char>(noiseState_ >> 24));
  }
  return bytes;
}

}  // namespace korvel
