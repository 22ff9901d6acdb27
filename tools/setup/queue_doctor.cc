// One function a finding, in the order in which a job meets them: description, filter, line,
// queue, the last error.
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

// Descriptions of models that are asked for their state; the one-way twins are named otherwise.
bool asksForState(const std::string& description) {
  const std::string model = keyword(description, "ModelName");
  return model == "K220" || model == "R57" || model == "M6" || model == "Z4";
}

void lookAtDescription(const QueueFacts& facts, Findings* found) {
  if (facts.installedName.empty()) {
    found->push_back(
        {true, filled("The description of queue %s is not installed here; choose another: "
                      "korvel-setup --list shows them, korvel-setup -p %s -m MODEL sets it.",
                      nameOf(facts), nameOf(facts))});
  } else if (!sameDescription(facts.description, facts.installed)) {
    found->push_back({true, filled("The description of queue %s is not the installed one; refresh "
                                   "it: korvel-setup -p %s -m %s",
                                   nameOf(facts), nameOf(facts), facts.installedName.c_str())});
  }
}

void lookAtFilter(const QueueFacts& facts, Findings* found) {
  const char* path = facts.filterPath.c_str();
  if (facts.filter == FilterFile::kMissing) {
    found->push_back({true, filled("The print filter %s is missing; install the package "
                                   "printer-driver-korvel again.",
                                   path)});
  } else if (facts.filter == FilterFile::kNotExecutable) {
    found->push_back({true, filled("The print filter %s cannot be executed; as root: chmod 755 %s",
                                   path, path)});
  } else if (facts.filter == FilterFile::kUnsafe) {
    found->push_back({true, filled("The spooler runs no filter that others may write to; as root: "
                                   "chown root:root %s && chmod 755 %s",
                                   path, path)});
  }
}

void lookAtLine(const QueueFacts& facts, Findings* found) {
  const char* uri = facts.queue.uri.c_str();
  const bool asks = asksForState(facts.description);
  const std::string twin = oneWayTwin(facts.installedName);
  if (asks && linkOf(facts.queue.uri) == Link::kOneWay) {
    found->push_back({true, filled("Queue %s waits for its printer's answers, but %s never brings "
                                   "one, which costs about 20 minutes a page; take the one-way "
                                   "description: korvel-setup -p %s -m %s",
                                   nameOf(facts), uri, nameOf(facts), twin.c_str())});
  } else if (facts.answer == PrinterAnswer::kNotReached) {
    found->push_back({true, filled("Nothing can be reached at %s; switch the printer on and look "
                                   "at its cable, or tell its new address: korvel-setup -p %s -v "
                                   "socket://ADDRESS",
                                   uri, nameOf(facts))});
  } else if (asks && facts.answer == PrinterAnswer::kSilent) {
    found->push_back({true, filled("The printer at %s does not answer, which costs about 20 "
                                   "minutes a page; switch it off and on, and if it stays silent "
                                   "take the one-way description: korvel-setup -p %s -m %s",
                                   uri, nameOf(facts), twin.c_str())});
  } else if (isOneWay(facts.installedName) && facts.answer == PrinterAnswer::kAnswers) {
    const std::string own = facts.installedName.substr(0, facts.installedName.rfind('-'));
    found->push_back({false, filled("The printer at %s answers; its own description would tell of "
                                    "missing paper and an open cover: korvel-setup -p %s -m %s",
                                    uri, nameOf(facts), own.c_str())});
  }
}

void lookAtDumps(const QueueFacts& facts, Findings* found) {
  if (facts.dumpBytes < kMuchDumped) return;
  const char* folder = facts.dumpFolder.c_str();
  found->push_back(
      {true, filled("The pictures that the filter leaves in %s take %d MB; as root: find %s "
                    "-maxdepth 1 \\( -name 'origin_*.bmp' -o -name 'dithered_*.bmp' \\) -delete",
                    folder, static_cast<int>(facts.dumpBytes / 1000000), folder)});
}

void lookAtState(const QueueFacts& facts, Findings* found) {
  const auto says = [&facts](const char* reason) { return facts.queue.reasons.contains(reason); };
  if (says("cover-open-warning")) {
    found->push_back({true, filled("The printer's cover is open; close it, and queue %s goes on.",
                                   nameOf(facts))});
  }
  if (says("media-empty-warning")) {
    found->push_back(
        {true, filled("The printer reports no paper, or a sheet that still lies in its "
                      "exit; take the sheet or load paper, and queue %s goes on.",
                      nameOf(facts))});
  }
  if (facts.queue.stopped) {
    found->push_back({true, filled("Queue %s is stopped; mend what is told here and start it: "
                                   "cupsenable %s",
                                   nameOf(facts), nameOf(facts))});
  }
  if (!facts.queue.accepting) {
    found->push_back({true, filled("Queue %s refuses new jobs; let it take them: cupsaccept %s",
                                   nameOf(facts), nameOf(facts))});
  }
}

struct PlainWords {
  const char* part;  // of what the spooler says
  const char* text;  // one place, for the job's number
};

const PlainWords kPlainWords[] = {
    {"Paper size must not",
     later("Job %d asked for a page size that the description does not have; choose one that it "
           "offers, or name a custom size of at least 10 mm.")},
    {"Unsupported bits per pixel",
     later("The pages of job %d were made for another printer description; set the queue's "
           "description anew with korvel-setup and print again.")},
    {"Page rows too short",
     later("The pages of job %d are damaged; print the document again from its program.")},
    {"Page too large",
     later("A page of job %d is longer than the printer can take; cut the document into pages.")},
    {"Unable to open raster file",
     later("The pages of job %d could not be read; look whether the disk is full, and print "
           "again.")},
    {"printer is not responding",
     later("The printer did not respond to job %d; switch it on and look at its cable.")},
    {"may not exist or is unavailable",
     later("The printer was not there for job %d; switch it on, look at its cable and address.")},
    {"is busy",
     later("The printer served somebody else during job %d; wait, or stop the other sender.")},
    {"Unable to locate printer",
     later("The name of job %d's printer is not known in the network; use its number address.")},
    {"No such file or directory",
     later("A program that job %d needs is missing; install cups-filters and "
           "printer-driver-korvel again.")},
    {"crashed",
     later("A filter of job %d broke off; print the document again, and if it happens again, "
           "print it as a PDF.")},
    {"Filter failed",
     later("A filter of job %d failed; cupsctl --debug-logging, print again, and read the last "
           "lines of /var/log/cups/error_log.")},
};

void lookAtLastError(const QueueFacts& facts, Findings* found) {
  const bool failed =
      facts.job.state == IPP_JSTATE_STOPPED || facts.job.state == IPP_JSTATE_ABORTED;
  const bool waits =
      facts.job.state == IPP_JSTATE_PENDING || facts.job.state == IPP_JSTATE_PROCESSING;
  if (!failed && !waits) return;
  const std::string& said = facts.job.message.empty() ? facts.queue.message : facts.job.message;
  for (const PlainWords& words : kPlainWords) {
    if (said.find(words.part) == std::string::npos) continue;
    char text[1024];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::snprintf(text, sizeof text, translated(words.text), facts.job.number);
#pragma GCC diagnostic pop
    found->push_back({true, text});
    return;
  }
  if (!failed) return;
  found->push_back(
      {true, filled("Job %d ended with the words \"%s\"; cupsctl --debug-logging, print "
                    "again, and read the last lines of /var/log/cups/error_log.",
                    facts.job.number, said.c_str())});
}

}  // namespace

Findings examine(const QueueFacts& facts) {
  Findings found;
  if (facts.description.find("rastertokorvel") == std::string::npos) {
    found.push_back({true, filled("Queue %s does not use a Korvel description; make one that does: "
                                  "korvel-setup -v '%s' -p NAME",
                                  nameOf(facts), facts.queue.uri.c_str())});
    return found;
  }
  lookAtDescription(facts, &found);
  lookAtFilter(facts, &found);
  lookAtLine(facts, &found);
  lookAtDumps(facts, &found);
  lookAtState(facts, &found);
  lookAtLastError(facts, &found);
  return found;
}

}  // namespace korvel
