// korvel-setup: finds a printer, proposes its description, makes the queue, prints a test page.
// With --check it looks for what is wrong with a queue, with --emulated it needs no printer.
// SPDX-License-Identifier: Apache-2.0
#include <cups/cups.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "tools/common/arguments.h"
#include "tools/common/translation.h"
#include "tools/setup/device_choice.h"
#include "tools/setup/emulated_queue.h"
#include "tools/setup/preset.h"
#include "tools/setup/queue_facts.h"
#include "tools/setup/queue_setup.h"
#include "tools/setup/queue_sharing.h"
#include "tools/setup/setup_dialogue.h"

namespace {

using korvel::Description;
using korvel::filled;
using korvel::PrintSystem;
using korvel::QueuePlan;
using korvel::translated;

const char* const kUsage = korvel::later(
    "Usage: korvel-setup [-v URI] [-m MODEL] [-p QUEUE] [-o OPTION=VALUE]... [OPTION]...\n"
    "       korvel-setup --emulated [--port N] [--out DIR] [OPTION]...\n"
    "       korvel-setup -p QUEUE --preset NAME -o OPTION=VALUE... [-L TEXT]\n"
    "       korvel-setup --share QUEUE [-D TEXT] [-L TEXT] [--ready SIZE,...] [-n] [-t]\n"
    "       korvel-setup --unshare QUEUE [-n]\n"
    "       korvel-setup --check [QUEUE]...\n"
    "       korvel-setup --list\n"
    "Makes a queue for a Korvel printer, or brings one up to date. Asks for what is not told when\n"
    "it runs in a terminal.\n\n"
    "  -v URI             the device, as lpinfo -v shows it\n"
    "  -m MODEL           the description: k220-203, or its name in lpinfo -m\n"
    "  -p QUEUE           the queue to make or to change\n"
    "  -o OPTION=VALUE    a default of the queue; may be given more than once\n"
    "  -D TEXT, -L TEXT   the queue's description and place for people\n"
    "  -h SERVER          the print server\n"
    "  -t, --test-page    print a test page on the queue of -p or -d when it is ready\n"
    "  --emulated         make a queue to an emulated printer, and be that printer\n"
    "  --port N           the emulated printer's port (9100)\n"
    "  --out DIR          where it writes its sheets as pictures (sheets)\n"
    "  --preset NAME      make another queue to the printer of -p, with other defaults\n"
    "  --share QUEUE      let tablets and phones of the local network print on a queue\n"
    "  --unshare QUEUE    undo what --share changed\n"
    "  --ready SIZE,...   the sizes that they are offered (what the queue prints by default)\n"
    "  -n, --dry-run      show what --share or --unshare would change\n"
    "  --check            tell what is wrong with queues; without names, with all of ours\n"
    "  -d QUEUE           a queue to check, as lp names it\n"
    "  --dump-folder DIR  where the filter leaves its pictures (/var/spool/cups/tmp)\n"
    "  --list             show devices and descriptions; with -m a description's options\n"
    "  --help, --version\n\n"
    "Status: 0 all is well, 1 something failed or is wrong with a queue, 2 wrong usage.\n");

struct Request {
  QueuePlan plan;
  std::string model;
  std::vector<std::string> queues;  // to check
  korvel::EmulatedPrinter emulated;
  std::string dumpFolder = "/var/spool/cups/tmp";
  korvel::SharingRequest sharing;
  std::string preset;
  bool check = false, list = false, emulate = false, testPage = false;
  bool share = false, unshare = false;
};

bool takeFlag(const korvel::Arguments& words, Request* request) {
  if (words.is("--check")) {
    request->check = true;
  } else if (words.is("--list")) {
    request->list = true;
  } else if (words.is("--emulated")) {
    request->emulate = true;
  } else if (words.is("-t", "--test-page")) {
    request->testPage = true;
  } else if (words.is("-n", "--dry-run")) {
    request->sharing.dryRun = true;
  } else {
    return false;
  }
  return true;
}

bool takeSharing(korvel::Arguments* words, Request* request) {
  if (words->is("--share") || words->is("--unshare")) {
    (words->is("--share") ? request->share : request->unshare) = true;
    request->sharing.queue = words->text();
  } else if (words->is("--preset")) {
    request->preset = words->text();
  } else if (words->is("--ready")) {
    request->sharing.readySizes = korvel::parseSizes(words->text());
  } else if (words->is("--state-folder")) {
    request->sharing.stateFolder = words->text();
  } else {
    return false;
  }
  return true;
}

bool takeValued(korvel::Arguments* words, Request* request) {
  QueuePlan& plan = request->plan;
  if (words->is("-v")) {
    plan.uri = words->value();
  } else if (words->is("-m")) {
    request->model = words->value();
  } else if (words->is("-p")) {
    plan.name = words->value();
  } else if (words->is("-o")) {
    for (const auto& option : korvel::parseOptions(words->value())) plan.options.push_back(option);
  } else if (words->is("-D")) {
    plan.info = words->value();
  } else if (words->is("-L")) {
    plan.location = words->value();
  } else if (words->is("-h")) {
    setenv("CUPS_SERVER", words->value().c_str(), 1);  // lpadmin too is to take it
  } else if (words->is("--port")) {
    request->emulated.port = words->number(1, 65535);
  } else if (words->is("--out")) {
    request->emulated.folder = words->value();
  } else if (words->is("-d")) {
    request->queues.push_back(words->value());
  } else if (words->is("--dump-folder")) {
    request->dumpFolder = words->value();
  } else {
    return takeSharing(words, request);
  }
  return true;
}

Request parseArguments(int argc, char** argv) {
  Request request;
  korvel::Arguments words(argc, argv, "korvel-setup", translated(kUsage));
  std::vector<std::string> operands;
  while (words.next()) {
    if (!words.isOption()) {
      operands.push_back(words.word());
    } else if (!takeFlag(words, &request) && !takeValued(&words, &request)) {
      words.unknown();
    }
  }
  if (request.check + request.list + request.emulate + request.share + request.unshare > 1) {
    words.wrong(
        translated("--check, --list, --emulated, --share and --unshare exclude each other"));
  }
  if (!request.queues.empty() && !request.check && !request.testPage) {
    words.wrong(translated("-d goes with --check and --test-page"));
  }
  if (!operands.empty() && !request.check) {
    words.wrong(filled("unexpected argument '%s'", operands[0].c_str()));
  }
  if (request.emulate && !request.plan.uri.empty()) {
    words.wrong(translated("--emulated and -v exclude each other"));
  }
  if (!request.preset.empty() && request.plan.name.empty()) {
    words.wrong(translated("--preset needs the printer's queue: -p QUEUE"));
  }
  for (const std::string& operand : operands) request.queues.push_back(operand);
  return request;
}

[[noreturn]] void stop(const std::string& sentence) {
  std::fflush(stdout);
  std::fprintf(stderr, "korvel-setup: %s\n", sentence.c_str());
  std::exit(1);
}

void stopAt(const std::string& fault) {
  if (!fault.empty()) stop(fault);
}

[[noreturn]] void stopForNoQueue(const std::string& name) {
  stop(filled("There is no queue %s; lpstat -e shows those that there are.", name.c_str()));
}

// ---- Check ----

bool checkQueue(const PrintSystem& system, const korvel::Queue& queue, const std::string& dumps) {
  const korvel::QueueFacts facts = korvel::gatherFacts(system, queue, dumps);
  bool well = true;
  for (const korvel::Finding& finding : korvel::examine(facts)) {
    std::printf("%s: %s\n", queue.name.c_str(), finding.text.c_str());
    well = well && !finding.fault;
  }
  if (well) {
    std::printf("%s\n", filled("%s: all is well with this queue of a %s.", queue.name.c_str(),
                               queue.makeAndModel.c_str())
                            .c_str());
  }
  return well;
}

int check(const PrintSystem& system, Request request) {
  if (request.queues.empty() && !request.plan.name.empty()) {
    request.queues.push_back(request.plan.name);
  }
  std::vector<korvel::Queue> queues;
  for (const std::string& name : request.queues) {
    const auto queue = system.queue(name);
    if (!queue) stopForNoQueue(name);
    queues.push_back(*queue);
  }
  if (request.queues.empty()) {
    for (const korvel::Queue& queue : system.queues()) {
      if (queue.isOurs()) queues.push_back(queue);
    }
    if (queues.empty())
      stop(translated("There is no queue of a Korvel printer; korvel-setup makes one."));
  }
  bool well = true;
  for (const korvel::Queue& queue : queues) {
    well = checkQueue(system, queue, request.dumpFolder) && well;
  }
  return well ? 0 : 1;
}

// ---- Set up ----

// The installed descriptions; without any there is nothing to set up.
std::vector<Description> descriptionsOf(const PrintSystem& system) {
  std::vector<Description> all = system.descriptions();
  if (all.empty()) {
    stop(
        translated("The spooler knows no Korvel descriptions; install the package "
                   "printer-driver-korvel."));
  }
  return all;
}

const Description& describe(const std::string& model, const std::vector<Description>& all) {
  const Description* one = korvel::meant(model, all);
  if (one == nullptr) {
    stop(filled("There is no description %s; korvel-setup --list shows those that there are.",
                model.c_str()));
  }
  return *one;
}

void printTestPage(const PrintSystem& system, const std::string& queue) {
  const std::string file = korvel::testPage(system.queueDescription(queue));
  if (file.empty()) {
    stop(translated("The test pages are not installed; print a document of yours with lp."));
  }
  const int job = system.print(queue, file, translated("Korvel test page"));
  if (job == 0) stop(filled("The test page was not taken: %s", system.fault().c_str()));
  std::printf("%s\n", filled("The test page is job %s-%d; korvel-setup --check %s tells when "
                             "something is wrong.",
                             queue.c_str(), job, queue.c_str())
                          .c_str());
}

// Checks what is left to check, and makes the queue.
void makeQueue(const PrintSystem& system, QueuePlan plan) {
  stopAt(korvel::checkName(plan.name));
  const auto old = system.queue(plan.name);
  if (old && !old->isOurs()) {
    stop(
        filled("Queue %s belongs to another driver; choose another name with -p, or remove it: "
               "lpadmin -x %s",
               plan.name.c_str(), plan.name.c_str()));
  }
  plan.isNew = !old;
  const std::string text = plan.description.name.empty()
                               ? system.queueDescription(plan.name)
                               : system.installedDescription(plan.description.name);
  const std::string shown = system.installedFor(text).bareName();
  stopAt(korvel::checkOptions(text, shown.empty() ? plan.name : shown, plan.options));
  stopAt(korvel::setUp(plan));
  std::printf("%s\n", filled("Queue %s is ready; print with: lp -d %s FILE", plan.name.c_str(),
                             plan.name.c_str())
                          .c_str());
}

int list(const PrintSystem& system, const Request& request) {
  const std::vector<Description> all = descriptionsOf(system);
  if (!request.model.empty()) {
    korvel::showOptions(system.installedDescription(describe(request.model, all).name));
    return 0;
  }
  korvel::showDevices(system.devices(), all);
  korvel::showDescriptions(all);
  return 0;
}

int emulate(const PrintSystem& system, Request request) {
  const std::vector<Description> all = descriptionsOf(system);
  QueuePlan& plan = request.plan;
  plan.description = describe(request.model.empty() ? "k220-203" : request.model, all);
  plan.uri = "socket://127.0.0.1:" + std::to_string(request.emulated.port);
  if (plan.name.empty()) plan.name = "emulated";
  const korvel::PrinterAnswer there = korvel::askPrinter(plan.uri);
  if (there == korvel::PrinterAnswer::kSilent) {
    stop(filled("Port %d belongs to a program that is no printer; choose another with --port.",
                request.emulated.port));
  }
  makeQueue(system, plan);
  if (request.testPage) printTestPage(system, plan.name);
  if (there == korvel::PrinterAnswer::kAnswers) {
    std::printf("%s\n", filled("A printer already listens on port %d and prints for this queue.",
                               request.emulated.port)
                            .c_str());
    return 0;
  }
  request.emulated.once = request.testPage;
  stop(korvel::becomePrinter(request.emulated, system.installedDescription(plan.description.name)));
}

int setUpQueue(const PrintSystem& system, Request request) {
  QueuePlan& plan = request.plan;
  if (plan.name.empty() && !request.queues.empty()) {
    plan.name = request.queues[0];
    if (!system.queue(plan.name)) stopForNoQueue(plan.name);
  }
  const auto old = plan.name.empty() ? std::nullopt : system.queue(plan.name);
  const bool onlyTest = request.testPage && request.model.empty() && plan.uri.empty() &&
                        plan.options.empty() && plan.info.empty() && plan.location.empty();
  if (onlyTest && old) {
    printTestPage(system, plan.name);
    return 0;
  }
  const bool talks = isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
  std::vector<Description> all;
  if (!request.model.empty() || !old) all = descriptionsOf(system);
  if (!request.model.empty()) plan.description = describe(request.model, all);
  if (!old) {
    const korvel::SetupDialogue dialogue(talks);
    stopAt(dialogue.complete(system, all, &plan));
    if (talks && !request.testPage) request.testPage = dialogue.wantsTestPage();
  }
  makeQueue(system, plan);
  if (request.testPage) printTestPage(system, plan.name);
  return 0;
}

// ---- Preset ----

int makePreset(const PrintSystem& system, Request request) {
  const auto base = system.queue(request.plan.name);
  if (!base) stopForNoQueue(request.plan.name);
  if (!base->isOurs()) {
    stop(filled("Queue %s is not one of a Korvel printer.", base->name.c_str()));
  }
  QueuePlan plan = korvel::planPreset(system, *base, request.preset, request.plan.options);
  if (!request.plan.location.empty()) plan.location = request.plan.location;
  makeQueue(system, plan);
  if (plan.uri != base->uri) stopAt(korvel::runLpadmin({"-p", base->name, "-v", plan.uri}));
  if (!korvel::isSharedByUs(request.sharing.stateFolder, base->name)) return 0;
  request.sharing.queue = plan.name;
  const auto shared = korvel::shareQueue(system, request.sharing);
  if (!shared) stop(shared.sentence());
  return 0;
}

// ---- Share ----

int share(const PrintSystem& system, Request request) {
  korvel::SharingRequest& sharing = request.sharing;
  sharing.info = request.plan.info;
  sharing.location = request.plan.location;
  const bool talks = isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
  if (talks) sharing.agreed = korvel::agreesToChanges;
  const auto done =
      request.share ? korvel::shareQueue(system, sharing) : korvel::unshareQueue(system, sharing);
  if (!done) stop(done.sentence());
  if (!request.share || !request.testPage || sharing.dryRun) return 0;
  const auto job = korvel::printSharedTestSheet(system, sharing.queue);
  if (!job) stop(job.sentence());
  std::printf("%s\n", filled("The test sheet is job %s-%d, sent as a tablet would.",
                             sharing.queue.c_str(), job.value())
                          .c_str());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  korvel::startTranslation();
  const char* path = std::getenv("PATH");  // lpadmin lies where users do not look
  setenv("PATH",
         ((path == nullptr ? std::string() : path + std::string(":")) + "/usr/sbin").c_str(), 1);
  const Request request = parseArguments(argc, argv);
  const PrintSystem system;
  if (!system.isThere()) {
    stop(filled("The spooler at %s does not answer; as root: systemctl start cups", cupsServer()));
  }
  if (request.check) return check(system, request);
  if (request.share || request.unshare) return share(system, request);
  if (!request.preset.empty()) return makePreset(system, request);
  if (request.list) return list(system, request);
  if (request.emulate) return emulate(system, request);
  return setUpQueue(system, request);
}
