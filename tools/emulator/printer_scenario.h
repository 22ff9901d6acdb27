// What may go wrong at a printer, as a line of text: "out-of-paper for 5 after 1.5", "silent".
// The same lines serve as options of the emulated printer and on its control port.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_EMULATOR_PRINTER_SCENARIO_H
#define KORVEL_TOOLS_EMULATOR_PRINTER_SCENARIO_H

#include <cstdint>
#include <string>

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
  kSlow,
  kStall,
  kDisconnect,
  kState,
  kQuit,
};

struct Scenario {
  ScenarioKind kind = ScenarioKind::kState;
  Micros duration = kForEver;  // kOutOfPaper, kCoverOpen, kSilent, kStall; 0 ends a silence
  int64_t milliPages = 0;      // kOutOfPaper, kCoverOpen: from now on, in thousandths of a page
  int64_t bytes = 0;  // kNoise; kSplit and kSlow, where 0 is off; kStall, kDisconnect: from now on
};

// The lines, one of them a line:
//   out-of-paper [for SECONDS] [after PAGES]     load
//   cover open     cover close     cover for SECONDS [at PAGE]
//   silent [for SECONDS]     silent off
//   noise BYTES     split [BYTES]     split off     glue
//   slow BYTES_PER_SECOND     slow off
//   stall for SECONDS [after BYTES]     disconnect [after BYTES]
//   state     quit
// Letters of either case are the same; blanks part the words. "cover for 2 at 3" opens the cover
// when half of page 3 has been printed. On a fault returns false and tells it in one sentence;
// the scenario is then unchanged.
bool parseScenario(const std::string& text, Scenario* scenario, std::string* fault);

}  // namespace korvel

#endif
