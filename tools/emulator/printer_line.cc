// Counters in bytes and moments in time; the descriptors are the caller's.
// SPDX-License-Identifier: Apache-2.0
#include "tools/emulator/printer_line.h"

#include <algorithm>

namespace korvel {
namespace {

constexpr size_t kMostAtOnce = 65536;
constexpr int64_t kSlowReadsPerSecond = 20;

}  // namespace

bool PrinterLine::apply(const Scenario& scenario, Micros now) {
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

// Never past the byte at which something happens.
size_t PrinterLine::readable(Micros now) const {
  if (now < readAgainAt_ || mustHangUp()) return 0;
  int64_t most = kMostAtOnce;
  if (bytesPerSecond_ != 0) {
    most = std::min(most, std::max<int64_t>(1, bytesPerSecond_ / kSlowReadsPerSecond));
  }
  if (stallIn_) most = std::min(most, *stallIn_);
  if (hangUpIn_) most = std::min(most, *hangUpIn_);
  return static_cast<size_t>(most);
}

void PrinterLine::took(size_t bytes, Micros now) {
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

std::vector<PrinterLine::Piece> PrinterLine::pieces(const std::string& reply, Micros now) {
  std::vector<Piece> pieces;
  if (isSilent(now)) return pieces;
  std::string bytes = noise() + reply;
  if (twice_) bytes += reply;
  twice_ = false;
  const size_t length = pieceBytes_ == 0 ? bytes.size() : pieceBytes_;
  Micros due = std::max(now, lastDue_);
  for (size_t at = 0; at < bytes.size(); at += length) {
    pieces.push_back({due, bytes.substr(at, length)});
    due += kPieceGap;
  }
  lastDue_ = pieceBytes_ == 0 ? pieces.back().due : due;
  return pieces;
}

// A linear congruential sequence with the constants of Numerical Recipes (Press et al.): the same
// noise in every run.
std::string PrinterLine::noise() {
  std::string bytes;
  for (; noiseBytes_ > 0; --noiseBytes_) {
    noiseState_ = noiseState_ * 1664525u + 1013904223u;
    bytes.push_back(static_cast<char>(noiseState_ >> 24));
  }
  return bytes;
}

}  // namespace korvel
