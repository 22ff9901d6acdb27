// Runs a filter as the print spooler does, with its arguments and its descriptors 0 to 4, and plays
// the backend and a printer that reports its status. Needs no spooler and no network.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_HOST_EMULATED_SPOOLER_H
#define KORVEL_TOOLS_HOST_EMULATED_SPOOLER_H

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/common/result.h"
#include "tools/stream/printer_scenario.h"

namespace korvel {

struct SpoolerJob {
  std::string filter;  // path of the program
  std::string ppd;     // value of the variable PPD; empty: unset
  std::string jobId = "1";
  std::string user = "user";
  std::string title = "title";
  std::string copies = "1";
  std::string options;
  std::string raster;         // path of the job's pages; "-" is our own standard input
  int rasterDescriptor = -1;  // borrowed; when open, the pages come from it instead of the path
  bool rasterAsFile = false;  // pass the path as the filter's argument, not as its standard input
  bool noFiles = false;       // the filter cannot create files; see Program::noNewFiles
  // More of the filter's environment, as in Program.
  std::map<std::string, std::optional<std::string>> environment;
  // What goes wrong; all must be playable. Without any, a status request is answered with "ready"
  // before the page's image and with "paper out" after it, which is what the filter waits for.
  std::vector<Scenario> scenarios;
  double timeoutSeconds = 120;

  using Sink = std::function<void(const char* bytes, size_t count)>;
  Sink output;    // receives what the filter sends to the printer, at once
  Sink messages;  // receives what it writes to standard error
};

struct SpoolerOutcome {
  bool timedOut = false;
  int status = -1;  // exit status; -1 when ended by a signal
  int signal = 0;
  unsigned statusRequests = 0;
  unsigned drainRequests = 0;
};

// Whether the emulated spooler can play it: it has a connection, but no paper, cover or motor.
bool isPlayable(const Scenario& scenario);

// Blocks until the filter has ended or the time is over. Fails when the filter cannot be started.
// The filter never outlives the call, nor the calling process.
Result<SpoolerOutcome> runSpoolerJob(const SpoolerJob& job);

}  // namespace korvel

#endif
