// One function per finding, in the order of a job: driver, filter, connection, queue, last error.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/queue_doctor.h"

#include <cups/ipp.h>

#include <cstdio>

#include "tools/common/translation.h"
#include "tools/description/description_text.h"
#include "tools/setup/device_choice.h"

namespace korvel {

namespace {

constexpr uint64_t kMuchDumped = 1000'000'000;  // bytes: some sixty sheets of A4

using Findings = std::vector<Finding>;

const char* nameOf(const QueueFacts& facts) { return facts.queue.name.c_str(); }

// Whether the filter asks this model for its status; one-way drivers have other model names.
bool asksForState(const std::string& description) {
  const std::string model = keyword(description, "ModelName");
  return model == "K220" || model == "R57" || model == "M6" || model == "Z4";
}

void checkDescription(const QueueFacts& facts, Findings* found) {
  if (facts.installedName.empty()) {
    found->push_back({true, filled("The driver of queue %s is not installed. Choose another one: "
                                   "korvel-setup -p %s -m MODEL (korvel-setup --list shows all)",
                                   nameOf(facts), nameOf(facts))});
  } else if (!sameDescription(facts.description, facts.installed)) {
    found->push_back(
        {true, filled("The driver of queue %s is not the installed version. Update it: "
                      "korvel-setup -p %s -m %s",
                      nameOf(facts), nameOf(facts), facts.installedName.c_str())});
  }
}

void checkFilter(const QueueFacts& facts, Findings* found) {
  const char* path = facts.filterPath.c_str();
  if (facts.filter == FilterFile::kMissing) {
    found->push_back({true, filled("The print filter %s is missing; reinstall the package "
                                   "printer-driver-korvel.",
                                   path)});
  } else if (facts.filter == FilterFile::kNotExecutable) {
    found->push_back(
        {true, filled("The print filter %s is not executable. As root: chmod 755 %s", path, path)});
  } else if (facts.filter == FilterFile::kUnsafe) {
    found->push_back({true, filled("The print service does not run filters that other users can "
                                   "change. As root: chown root:root %s && chmod 755 %s",
                                   path, path)});
  }
}

void checkConnection(const QueueFacts& facts, Findings* found) {
  const char* uri = facts.queue.uri.c_str();
  const bool asks = asksForState(facts.description);
  const std::string oneWay = oneWayTwin(facts.installedName);
  if (asks && linkOf(facts.queue.uri) == Link::kOneWay) {
    found->push_back({true, filled("Queue %s waits for replies of the printer, but %s returns "
                                   "none; this costs about 20 minutes per page. Choose the "
                                   "one-way driver: korvel-setup -p %s -m %s",
                                   nameOf(facts), uri, nameOf(facts), oneWay.c_str())});
  } else if (facts.answer == PrinterAnswer::kNotReached) {
    found->push_back({true, filled("Cannot reach the printer at %s; switch it on and check its "
                                   "cable, or change the address: korvel-setup -p %s -v "
                                   "socket://ADDRESS",
                                   uri, nameOf(facts))});
  } else if (asks && facts.answer == PrinterAnswer::kSilent) {
    found->push_back({true, filled("The printer at %s does not answer; this costs about 20 minutes "
                                   "per page. Switch it off and on again. If it still does not "
                                   "answer, choose the one-way driver: korvel-setup -p %s -m %s",
                                   uri, nameOf(facts), oneWay.c_str())});
  } else if (isOneWay(facts.installedName) && facts.answer == PrinterAnswer::kAnswers) {
    const std::string own = facts.installedName.substr(0, facts.installedName.rfind('-'));
    found->push_back({false, filled("The printer at %s answers; with its two-way driver the queue "
                                    "would report missing paper and an open cover: korvel-setup "
                                    "-p %s -m %s",
                                    uri, nameOf(facts), own.c_str())});
  }
}

void checkDumps(const QueueFacts& facts, Findings* found) {
  if (facts.dumpBytes < kMuchDumped) return;
  const char* folder = facts.dumpFolder.c_str();
  found->push_back({true, filled("The image dumps of the filter in %s take %d MB. As root: find %s "
                                 "-maxdepth 1 \\( -name 'origin_*.bmp' -o -name "
                                 "'dithered_*.bmp' \\) -delete",
                                 folder, static_cast<int>(facts.dumpBytes / 1000000), folder)});
}

void checkState(const QueueFacts& facts, Findings* found) {
  const auto has = [&facts](const char* reason) { return facts.queue.reasons.contains(reason); };
  if (has("cover-open-warning")) {
    found->push_back({true, filled("The printer's cover is open; close it to continue queue %s.",
                                   nameOf(facts))});
  }
  if (has("media-empty-warning")) {
    found->push_back({true, filled("The printer has no paper, or a sheet is still in its output; "
                                   "load paper or remove the sheet to continue queue %s.",
                                   nameOf(facts))});
  }
  if (facts.queue.stopped) {
    found->push_back({true, filled("Queue %s is stopped. Solve the problems shown here, then start "
                                   "it: cupsenable %s",
                                   nameOf(facts), nameOf(facts))});
  }
  if (!facts.queue.accepting) {
    found->push_back({true, filled("Queue %s rejects new jobs. Let it accept them: cupsaccept %s",
                                   nameOf(facts), nameOf(facts))});
  }
}

struct PlainText {
  const char* part;  // of the message of the spooler
  const char* text;  // with one place, for the job's number
};

const PlainText kPlainTexts[] = {
    {"Paper size must not",
     later("Job %d has a page size that the driver does not support; choose another size, or a "
           "custom size of at least 10 mm.")},
    {"Unsupported bits per pixel",
     later("The pages of job %d were made for another driver; choose the queue's driver again with "
           "korvel-setup and print again.")},
    {"Page rows too short",
     later("The pages of job %d are damaged; print the document again from its application.")},
    {"Page too large",
     later("A page of job %d is too long for the printer; divide the document into pages.")},
    {"Unable to open raster file",
     later("Cannot read the pages of job %d; check whether the disk is full, and print again.")},
    {"printer is not responding",
     later("The printer did not respond to job %d; switch it on and check its cable.")},
    {"may not exist or is unavailable",
     later("Cannot reach the printer of job %d; switch it on, and check its cable and address.")},
    {"is busy",
     later("The printer was busy with another job during job %d; wait, or cancel the other job.")},
    {"Unable to locate printer",
     later("The printer's host name in job %d is unknown; use its IP address.")},
    {"No such file or directory",
     later("A program that job %d needs is missing; reinstall the packages cups-filters and "
           "printer-driver-korvel.")},
    {"crashed",
     later("A filter of job %d crashed; print the document again, and if it crashes again, print "
           "it as a PDF.")},
    {"Filter failed",
     later("A filter of job %d failed; run cupsctl --debug-logging, print again, and read the end "
           "of /var/log/cups/error_log.")},
};

void checkLastError(const QueueFacts& facts, Findings* found) {
  const bool failed =
      facts.job.state == IPP_JSTATE_STOPPED || facts.job.state == IPP_JSTATE_ABORTED;
  const bool waits =
      facts.job.state == IPP_JSTATE_PENDING || facts.job.state == IPP_JSTATE_PROCESSING;
  if (!failed && !waits) return;
  const std::string& said = facts.job.message.empty() ? facts.queue.message : facts.job.message;
  for (const PlainText& plain : kPlainTexts) {
    if (said.find(plain.part) == std::string::npos) continue;
    char text[1024];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::snprintf(text, sizeof text, translated(plain.text), facts.job.number);
#pragma GCC diagnostic pop
    found->push_back({true, text});
    return;
  }
  if (!failed) return;
  found->push_back(
      {true, filled("Job %d failed: \"%s\". Run cupsctl --debug-logging, print again, and read the "
                    "end of /var/log/cups/error_log.",
                    facts.job.number, said.c_str())});
}

}  // namespace

Findings examine(const QueueFacts& facts) {
  Findings found;
  if (facts.description.find("rastertokorvel") == std::string::npos) {
    found.push_back(
        {true, filled("Queue %s does not use a Korvel driver. Create a queue that does: "
                      "korvel-setup -v '%s' -p NAME",
                      nameOf(facts), facts.queue.uri.c_str())});
    return found;
  }
  checkDescription(facts, &found);
  checkFilter(facts, &found);
  checkConnection(facts, &found);
  checkDumps(facts, &found);
  checkState(facts, &found);
  checkLastError(facts, &found);
  return found;
}

}  // namespace korvel
