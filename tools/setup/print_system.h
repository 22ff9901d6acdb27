// The print service as a set-up tool needs it: devices, drivers, queues, jobs. The server is the
// one that the spooler's commands use: CUPS_SERVER, the user's settings, or this machine's.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_SETUP_PRINT_SYSTEM_H
#define KORVEL_TOOLS_SETUP_PRINT_SYSTEM_H

#include <cups/cups.h>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tools/common/result.h"

namespace korvel {

struct HttpCloser {
  void operator()(http_t* http) const { httpClose(http); }
};
using HttpConnection = std::unique_ptr<http_t, HttpCloser>;

// A connection of its own to the print service; null when it cannot be reached. The server ends
// those that it has when it reads its configuration.
HttpConnection connectToPrintService();

struct Device {
  std::string uri;
  std::string info;          // for people
  std::string makeAndModel;  // "Unknown" when the device does not report it
  std::string id;            // its IEEE 1284 id; often empty
};

struct Description {
  std::string name;              // as in lpinfo -m: folders/korvel-k220-203.ppd
  std::string makeAndModel;      // "Korvel K220 203 dpi one-way, 1.0"
  std::string bareName() const;  // "korvel-k220-203"
};

struct Queue {
  std::string name;
  std::string uri;
  std::string makeAndModel;
  std::string message;            // the last one
  std::string info, location;     // for people
  std::set<std::string> reasons;  // such as "media-empty-warning", without "none"
  std::string scaling;            // a default that scales pictures: "scaling=90"; mostly empty
  bool stopped = false;
  bool busy = false;
  bool accepting = true;
  bool shared = false;  // published when the server shares at all
  bool isOurs() const;  // by its make
};

struct Job {
  int number = 0;  // 0: no job
  int state = 0;   // an ipp_jstate_t
  std::string message;
  int seconds = 0;          // since its processing began; 0 when it is not being processed
  int sheets = 0;           // as counted so far
  std::string format = {};  // of its document: "application/pdf"
  // The server's clock, in seconds since 1970.
  int created = 0;
  int begun = 0;  // its processing; 0: not yet
  int now = 0;    // when the server was asked
};

// Of all jobs of a queue, by number: those that are not finished, and the newest one if it failed
// or had a raster file, which the filter prints as far as it is whole.
std::vector<Job> jobsToExamine(std::vector<Job> all);

// Every call asks the server. Lists and texts are empty when it has none.
class PrintSystem {
 public:
  bool isThere() const;
  bool isThisMachine() const;

  std::vector<Device> devices() const;            // takes some seconds
  std::vector<Description> descriptions() const;  // of our printers only
  std::optional<Queue> queue(const std::string& name) const;
  std::vector<Queue> queues() const;                      // all, ours and others
  std::vector<Job> jobs(const std::string& queue) const;  // all that it remembers, by number
  // Writes the job's document to a new file, as it was sent. Fails when it is no longer kept or
  // when this user may not read it.
  bool fetchDocument(int job, const std::string& path) const;
  // A file that the server shows to administrators: "/admin/log/error_log". Nothing when this user
  // may not read it.
  std::optional<std::string> administratorsFile(const char* path) const;

  // The texts of PPDs.
  std::string queueDescription(const std::string& queue) const;
  std::string installedDescription(const std::string& name) const;
  // The installed driver of the same model as this PPD; its name is empty without one.
  Description installedFor(const std::string& description) const;

  // Both return the job's number. The bytes of printRaw() go to the printer as they are.
  Result<int> print(const std::string& queue, const std::string& file,
                    const std::string& title) const;
  Result<int> printRaw(const std::string& queue, const std::string& bytes,
                       const std::string& title) const;
  int jobState(int job) const;  // an ipp_jstate_t; 0 when there is no such job
};

}  // namespace korvel

#endif
