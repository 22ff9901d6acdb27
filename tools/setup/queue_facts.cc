// A printer accepts one connection at a time, so it is asked only while its queue is idle.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/queue_facts.h"

#include <cups/ipp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>

#include "tools/common/scratch_folder.h"
#include "tools/host/raster_check.h"
#include "tools/setup/error_log.h"
#include "tools/setup/server_start.h"

namespace fs = std::filesystem;

namespace korvel {

namespace {

FilterFile lookAt(const std::string& path) {
  struct stat found;
  if (stat(path.c_str(), &found) != 0) return FilterFile::kMissing;
  if ((found.st_mode & S_IXOTH) == 0) return FilterFile::kNotExecutable;
  const bool ours = found.st_uid == 0 || found.st_uid == geteuid();
  if (!ours || (found.st_mode & (S_IWGRP | S_IWOTH)) != 0) return FilterFile::kUnsafe;
  return FilterFile::kFine;
}

uint64_t bytesOfDumps(const std::string& folder) {
  uint64_t sum = 0;
  std::error_code fault;
  for (fs::directory_iterator at(folder, fault), end; !fault && at != end; at.increment(fault)) {
    const std::string name = at->path().filename().string();
    if (!name.ends_with(".bmp")) continue;
    if (!name.starts_with("origin_") && !name.starts_with("dithered_")) continue;
    std::error_code gone;
    const uintmax_t size = at->file_size(gone);
    if (!gone) sum += size;
  }
  return sum;
}

// The filter ends normally where a raster file ends, so such a job counts as printed.
int damagedJob(const PrintSystem& system, const std::vector<Job>& jobs) {
  if (jobs.empty() || jobs.back().state != IPP_JSTATE_COMPLETED) return 0;
  ScratchFolder scratch;
  if (!scratch.open()) return 0;
  const std::string path = scratch.file("pages.ras");
  if (!system.fetchDocument(jobs.back().number, path)) return 0;
  return checkRaster(path) ? 0 : jobs.back().number;
}

// The server may notice that a filter has ended before it reads why. Then only its log says it.
void explainFailures(const PrintSystem& system, std::vector<Job>* jobs) {
  std::optional<std::string> log;  // for all jobs
  for (Job& job : *jobs) {
    if (job.message.find("Filter failed") == std::string::npos) continue;
    if (!log) log = system.administratorsFile("/admin/log/error_log").value_or("");
    job.message = loggedErrors(*log, job.number) + job.message;
  }
}

}  // namespace

std::string filterPath() {
  const char* folder = std::getenv("CUPS_SERVERBIN");
  return std::string(folder == nullptr ? KORVEL_CUPS_SERVERBIN : folder) + "/filter/rastertokorvel";
}

QueueFacts gatherFacts(const PrintSystem& system, const Queue& queue,
                       const std::string& dumpFolder) {
  QueueFacts facts;
  facts.queue = queue;
  const std::vector<Job> jobs = system.jobs(queue.name);
  if (system.isThisMachine()) facts.interruptedJob = interruptedJob(jobs, printServerStart());
  facts.jobs = jobsToExamine(jobs);
  explainFailures(system, &facts.jobs);
  facts.damagedJob = damagedJob(system, facts.jobs);
  facts.description = system.queueDescription(queue.name);
  const Description installed = system.installedFor(facts.description);
  facts.installedName = installed.bareName();
  if (!installed.name.empty()) facts.installed = system.installedDescription(installed.name);
  facts.filterPath = filterPath();
  if (system.isThisMachine()) facts.filter = lookAt(facts.filterPath);
  facts.reply = queue.busy ? PrinterReply() : askPrinter(queue.uri);
  if (queue.busy) facts.silentSeconds = secondsOfSilence(queue.uri);
  facts.dumpFolder = dumpFolder;
  facts.dumpBytes = bytesOfDumps(dumpFolder);
  return facts;
}

}  // namespace korvel
