// A printer accepts one connection at a time, so it is asked only while its queue is idle.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/queue_facts.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

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

}  // namespace

std::string filterPath() {
  const char* folder = std::getenv("CUPS_SERVERBIN");
  return std::string(folder == nullptr ? KORVEL_CUPS_SERVERBIN : folder) + "/filter/rastertokorvel";
}

QueueFacts gatherFacts(const PrintSystem& system, const Queue& queue,
                       const std::string& dumpFolder) {
  QueueFacts facts;
  facts.queue = queue;
  facts.jobs = system.jobsToExamine(queue.name);
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
