// What may go wrong with a printer, as a line of text: "out-of-paper for 5 after 1.5", "silent".
// One notation for options, for the emulated printer's control port, and for the emulated spooler.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_STREAM_PRINTER_SCENARIO_H
#define KORVEL_TOOLS_STREAM_PRINTER_SCENARIO_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/common/result.h"

namespace korvel {

using Micros = int64_t;  // a time or a duration, in microseconds
inline constexpr Micros kForEver = -1;

enum class ScenarioKind {
  kOutOfPaper,
  kLoad,
  kCoverOpen,
  kCoverClose,
  kSilent,
  kNoise,
  kSplit,
  kGlue,
  kReply,
  kSlow,
  kStall,
  kDisconnect,
  kState,
  kQuit,
};

// How the next status request is answered.
enum class ReplyKind {
  kTrue,          // with the printer's status
  kBytes,         // with the pieces of the scenario, each to be read by itself
  kNothing,       // not at all
  kDrainRefused,  // not at all; the spooler's side channel answers that it cannot drain
  kDrainIgnored,  // not at all; the spooler's side channel does not answer either
};

struct Scenario {
  ScenarioKind kind = ScenarioKind::kState;
  Micros duration = kForEver;  // kOutOfPaper, kCoverOpen, kSilent, kStall; 0 ends a silence
  int64_t milliPages = 0;      // kOutOfPaper, kCoverOpen: from now on, in thousandths of a page
  int64_t bytes = 0;  // kNoise; kSplit and kSlow, where 0 is off; kStall, kDisconnect: from now on
  ReplyKind reply = ReplyKind::kTrue;  // kReply
  std::vector<std::string> pieces;     // kReply with kBytes
  int64_t times = 1;                   // kReply: status requests
};

// Whether only a spooler can play it, because it concerns the side channel.
inline bool needsSpooler(const Scenario& scenario) {
  return scenario.reply == ReplyKind::kDrainRefused || scenario.reply == ReplyKind::kDrainIgnored;
}

// A scenario is one of these:
//   out-of-paper [for SECONDS] [after PAGES]     load
//   cover open     cover close     cover for SECONDS [at PAGE]
//   silent [for SECONDS]     silent off
//   reply ANSWER [times N]
//   noise BYTES     split [BYTES]     split off     glue
//   slow BYTES_PER_SECOND     slow off
//   stall for SECONDS [after BYTES]     disconnect [after BYTES]
//   state     quit
// ANSWER is true, nothing, drain-refused, drain-ignored, or the bytes of a reply: ready, paper-out,
// cover-open or hex digits, joined into one read by '+', split into several reads by '|'.
// Upper and lower case are equal. "cover for 2 at 3" opens the cover when half of page 3 has been
// printed. Failures are in English: programs read them on the control port.
Result<Scenario> parseScenario(const std::string& text);

}  // namespace korvel

#endif
