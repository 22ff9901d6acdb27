// One function per finding, in the order of a job: driver, filter, connection, queue, last error.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/queue_doctor.h"

#include <cups/ipp.h>

#include <cstdio>

#include "tools/common/translation.h"
#include "tools/description/description_text.h"
#include "tools/description/size_order.h"
#include "tools/setup/device_choice.h"
#include "tools/setup/preset.h"

namespace korvel {

namespace {

constexpr uint64_t kMuchDumped = 1000'000'000;  // bytes: some sixty sheets of A4
constexpr int kPatienceSeconds = 30;
constexpr int kSecondsPerSheet = 10;  // generous: a label with tear-off takes four

using Findings = std::vector<Finding>;

const char* nameOf(const QueueFacts& facts) { return facts.queue.name.c_str(); }

// Whether bars get the width that was drawn. Drivers of label printers have had this option since
// they do; drivers of stencil printers have none.
bool isExact(const std::string& description) {
  return !keyword(description, "DefaultCenterOfPixel").empty();
}

void checkDescription(const QueueFacts& facts, Findings* found) {
  if (facts.installedName.empty()) {
    found->push_back({true, filled("The driver of queue %s is not installed. Choose another one: "
                                   "korvel-setup -p %s -m MODEL (korvel-setup --list shows all)",
                                   nameOf(facts), nameOf(facts))});
  } else if (isExact(facts.installed) && !isExact(facts.description)) {
    found->push_back(
        {true, filled("Queue %s has an old driver, which prints the bars of barcodes too wide. "
                      "Update it: korvel-setup -p %s -m %s",
                      nameOf(facts), nameOf(facts), facts.installedName.c_str())});
  } else if (!sameDescription(withSizesFirst(facts.description, sizeNames(facts.installed)),
                              facts.installed)) {
    found->push_back(
        {true, filled("The driver of queue %s is not the installed version. Update it: "
                      "korvel-setup -p %s -m %s",
                      nameOf(facts), nameOf(facts), facts.installedName.c_str())});
  }
}

void checkScaling(const QueueFacts& facts, Findings* found) {
  const std::string& scaling = facts.queue.scaling;
  if (scaling.empty()) return;
  const std::string option = scaling.substr(0, scaling.find('='));
  found->push_back({false, filled("Queue %s scales pictures by default (%s), so that barcodes may "
                                  "not scan. Remove the default: lpadmin -p %s -R %s-default",
                                  nameOf(facts), scaling.c_str(), nameOf(facts), option.c_str())});
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

constexpr char kLoopback[] = "korvel://127.0.0.1:";

void reportNotReached(const QueueFacts& facts, Findings* found) {
  const std::string& uri = facts.queue.uri;
  const std::string device = addressWithTurns(uri);
  if (device.starts_with(kLoopback)) {
    const std::string port = device.substr(sizeof kLoopback - 1);
    found->push_back(
        {true, filled("Nothing listens at %s. Start the emulated printer again: "
                      "korvel-setup --emulated -p %s -m %s --port %s",
                      uri.c_str(), nameOf(facts), facts.installedName.c_str(), port.c_str())});
    return;
  }
  found->push_back({true, filled("Cannot reach the printer at %s; switch it on and check its "
                                 "cable, or change the address: korvel-setup -p %s -v "
                                 "socket://ADDRESS",
                                 uri.c_str(), nameOf(facts))});
}

void checkConnection(const QueueFacts& facts, Findings* found) {
  const char* uri = facts.queue.uri.c_str();
  const bool asks = asksForStatus(facts.description);
  const std::string oneWay = oneWayTwin(facts.installedName);
  if (asks && linkOf(facts.queue.uri) == Link::kOneWay) {
    found->push_back({true, filled("Queue %s waits for replies of the printer, but %s returns "
                                   "none; this costs about 20 minutes per page. Choose the "
                                   "one-way driver: korvel-setup -p %s -m %s",
                                   nameOf(facts), uri, nameOf(facts), oneWay.c_str())});
  } else if (facts.reply.answer == PrinterAnswer::kNotReached) {
    reportNotReached(facts, found);
  } else if (asks && facts.reply.answer == PrinterAnswer::kSilent) {
    found->push_back({true, filled("The printer at %s does not answer; this costs about 20 minutes "
                                   "per page. Switch it off and on again. If it still does not "
                                   "answer, choose the one-way driver: korvel-setup -p %s -m %s",
                                   uri, nameOf(facts), oneWay.c_str())});
  } else if (isOneWay(facts.installedName) && facts.reply.answer == PrinterAnswer::kAnswers) {
    const std::string own = facts.installedName.substr(0, facts.installedName.rfind('-'));
    found->push_back({false, filled("The printer at %s answers; with its two-way driver the queue "
                                    "would report missing paper and an open cover, but wait for "
                                    "the printer after each sheet (20 labels: 82 s instead of "
                                    "25 s): korvel-setup -p %s -m %s",
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

// Printers for single sheets have none between two jobs.
void checkState(const QueueFacts& facts, Findings* found) {
  const auto has = [&facts](const char* reason) { return facts.queue.reasons.contains(reason); };
  if (has("cover-open-warning") || facts.reply.coverOpen) {
    found->push_back({true, filled("The printer's cover is open; close it to continue queue %s.",
                                   nameOf(facts))});
  }
  if (has("media-empty-warning") ||
      (facts.reply.noPaper && !takesSingleSheets(facts.description))) {
    found->push_back({true, filled("The printer has no paper, or a sheet is still in its output; "
                                   "load paper or remove the sheet to continue queue %s.",
                                   nameOf(facts))});
  }
  if (facts.reply.noPaper && takesSingleSheets(facts.description) && !has("media-empty-warning")) {
    found->push_back({false, translated("The printer has no sheet loaded, or the last one is still "
                                        "in its output; it will wait for a sheet when a job "
                                        "starts.")});
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

// Explains what the spooler says of a job. Returns false when the message is not known.
bool explain(int job, const std::string& message, Findings* found) {
  for (const PlainText& plain : kPlainTexts) {
    if (message.find(plain.part) == std::string::npos) continue;
    char text[1024];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::snprintf(text, sizeof text, translated(plain.text), job);
#pragma GCC diagnostic pop
    found->push_back({true, text});
    return true;
  }
  return false;
}

void checkFailedJob(const QueueFacts& facts, const Job& job, Findings* found) {
  const std::string& said = job.message.empty() ? facts.queue.message : job.message;
  if (!explain(job.number, said, found)) {
    found->push_back(
        {true,
         filled("Job %d failed: \"%s\". Run cupsctl --debug-logging, print again, and read the "
                "end of /var/log/cups/error_log.",
                job.number, said.c_str())});
  }
  if (job.state != IPP_JSTATE_STOPPED) return;
  found->push_back(
      {true, filled("Job %d is stopped. After solving its problem, start it again: lp "
                    "-i %s-%d -H restart (or remove it: cancel %s-%d)",
                    job.number, nameOf(facts), job.number, nameOf(facts), job.number)});
}

// Whether the job takes longer than its sheets explain. A queue that reports why it waits does not
// wait for an answer.
bool isStuck(const QueueFacts& facts, const Job& job) {
  if (!facts.queue.reasons.empty() || job.seconds <= kPatienceSeconds) return false;
  if (facts.silentSeconds) return *facts.silentSeconds >= kPatienceSeconds;
  const int moreSheets = job.sheets > 1 ? job.sheets - 1 : 0;
  return job.seconds > kPatienceSeconds + kSecondsPerSheet * moreSheets;
}

void checkRunningJob(const QueueFacts& facts, const Job& job, Findings* found) {
  const std::string& said = job.message.empty() ? facts.queue.message : job.message;
  if (explain(job.number, said, found)) return;
  if (!asksForStatus(facts.description) || !isStuck(facts, job)) return;
  found->push_back(
      {true, filled("Job %d has been printing for %d s and the printer does not answer. Switch it "
                    "off and on again. If that does not help, cancel the job (cancel %s-%d) and "
                    "choose the one-way driver: korvel-setup -p %s -m %s",
                    job.number, job.seconds, nameOf(facts), job.number, nameOf(facts),
                    oneWayTwin(facts.installedName).c_str())});
}

void checkJobs(const QueueFacts& facts, Findings* found) {
  for (const Job& job : facts.jobs) {
    if (job.state == IPP_JSTATE_STOPPED || job.state == IPP_JSTATE_ABORTED) {
      checkFailedJob(facts, job, found);
    } else if (job.state == IPP_JSTATE_PENDING || job.state == IPP_JSTATE_PROCESSING) {
      checkRunningJob(facts, job, found);
    } else if (job.state == IPP_JSTATE_HELD) {
      found->push_back(
          {true, filled("Job %d is held. Print it: lp -i %s-%d -H resume (or remove "
                        "it: cancel %s-%d)",
                        job.number, nameOf(facts), job.number, nameOf(facts), job.number)});
    }
  }
  if (facts.interruptedJob != 0) {
    found->push_back({false, filled("Job %d was interrupted when the print server stopped, and was "
                                    "printed again from its first page; look for labels that were "
                                    "printed twice.",
                                    facts.interruptedJob)});
  }
  if (facts.damagedJob == 0) return;
  found->push_back({true, filled("The pages of job %d are damaged; print the document again from "
                                 "its application.",
                                 facts.damagedJob)});
}

}  // namespace

bool asksForStatus(const std::string& description) {
  const std::string model = keyword(description, "ModelName");
  return model == "K220" || model == "R57" || model == "M6" || model == "Z4";
}

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
  checkScaling(facts, &found);
  checkFilter(facts, &found);
  checkConnection(facts, &found);
  checkDumps(facts, &found);
  checkState(facts, &found);
  checkJobs(facts, &found);
  return found;
}

}  // namespace korvel
