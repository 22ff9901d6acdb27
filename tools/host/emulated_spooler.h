// Runs a filter the way the print spooler does, with its arguments and its descriptors 0 to 4,
// and plays the backend and a printer that reports its status. Needs no spooler and no network.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_HOST_EMULATED_SPOOLER_H
#define KORVEL_TOOLS_HOST_EMULATED_SPOOLER_H

#include <cstddef>
#include <functional>
#include <string>

#include "tools/stream/status_script.h"

namespace korvel {

struct SpoolerJob {
  std::string filter;  // path of the program
  std::string ppd;     // becomes the variable PPD; empty leaves it unset
  std::string jobId = "1";
  std::string user = "user";
  std::string title = "title";
  std::string copies = "1";
  std::string options;
  std::string raster;         // path of the job's pages; "-" is our own standard input
  int rasterDescriptor = -1;  // borrowed; when open, the pages come from it and not from a path
  bool rasterAsFile = false;  // the path goes in as the seventh argument, not on descriptor 0
  bool noFiles = false;       // the filter makes none, and touches none of those it would make
  StatusScript script;        // an entry a status request; behind its end every entry is auto
  double timeoutSeconds = 120;

  using Sink = std::function<void(const char* bytes, size_t count)>;
  Sink output;    // what the filter sends to the printer, as it comes
  Sink messages;  // what it writes to standard error
};

struct SpoolerOutcome {
  std::string fault;  // one sentence when the job could not be run or watched; else empty
  bool timedOut = false;
  int status = -1;  // exit status; -1 when ended by a signal
  int signal = 0;
  unsigned statusRequests = 0;
  unsigned drainRequests = 0;
};

// Blocks until the filter has ended or the time is over. The filter never outlives the call, nor
// the calling process.
SpoolerOutcome runSpoolerJob(const SpoolerJob& job);

}  // namespace korvel

#endif
