// korvel-setup: finds a printer, proposes its driver, creates the queue, prints a test page. With
// --check it finds problems of a queue, with --emulated it needs no printer.
// SPDX-License-Identifier: Apache-2.0
#include <cups/cups.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "tools/common/arguments.h"
#include "tools/common/shown_text.h"
#include "tools/common/suggestions.h"
#include "tools/common/translation.h"
#include "tools/description/driver_names.h"
#include "tools/setup/device_choice.h"
#include "tools/setup/emulated_queue.h"
#include "tools/setup/examination.h"
#include "tools/setup/first_contact.h"
#include "tools/setup/media_feed.h"
#include "tools/setup/preset.h"
#include "tools/setup/queue_facts.h"
#include "tools/setup/queue_setup.h"
#include "tools/setup/queue_sharing.h"
#include "tools/setup/setup_dialog.h"
#include "tools/setup/sharing_doctor.h"
#include "tools/setup/typed_answer.h"

namespace {

using korvel::Description;
using korvel::Failure;
using korvel::filled;
using korvel::later;
using korvel::PrintSystem;
using korvel::QueuePlan;
using korvel::Result;
using korvel::translated;

constexpr char kProgram[] = "korvel-setup";
constexpr int kCannotCheck = 2;  // the exit status for monitoring

const korvel::Help kHelp = {
    later("Usage: korvel-setup [-v URI] [-m MODEL] [-p QUEUE] [OPTION]...\n"
          "       korvel-setup --emulated [--port N] [--out DIR] [OPTION]...\n"
          "       korvel-setup -p QUEUE --preset NAME -o OPTION=VALUE... [-L TEXT]\n"
          "       korvel-setup --share QUEUE [OPTION]...\n"
          "       korvel-setup --unshare QUEUE [-n]\n"
          "       korvel-setup --check [QUEUE]...\n"
          "       korvel-setup --feed QUEUE [--cut | --back]\n"
          "       korvel-setup --list"),
    later("Creates or updates the queue of a Korvel printer. Prompts for missing values when run "
          "in a terminal."),
    {later("-v URI\tThe device, as shown by lpinfo -v."),
     later("-m MODEL\tThe driver: k220-203, or its name in lpinfo -m."),
     later("-p QUEUE\tThe queue to create or update."),
     later("-o OPTION=VALUE\tA default of the queue; may be repeated."),
     later("-D TEXT\tThe description of the queue."),
     later("-L TEXT\tThe location of the printer."),
     later("-h SERVER\tThe print server."),
     later("-t, --test-page\tPrint a test page on the queue of -p or -d."),
     later("--emulated\tCreate a queue for an emulated printer, and run that printer."),
     later("--port N\tThe port of the emulated printer (9100)."),
     later("--out DIR\tWhere the emulated printer writes its sheets as pictures (sheets)."),
     later("--preset NAME\tCreate another queue for the printer of -p, with other defaults."),
     later("--share QUEUE\tLet tablets and phones of the local network print on a queue."),
     later("--unshare QUEUE\tUndo what --share changed."),
     later("--ready SIZE,...\tThe sizes that they are offered (the default of the queue)."),
     later("-n, --dry-run\tOnly show what --share or --unshare would change."),
     later("--check\tFind problems of queues; without names, of all queues of Korvel printers."),
     later("--json\tPrint the result of --check as JSON."),
     later("-d QUEUE\tA queue to check."),
     later("--feed QUEUE\tFeed the media to the tear-off edge, and back when it is torn off."),
     later("--cut\tWith --feed: cut at the edge, and take the media back."),
     later("--back\tWith --feed: only take the media back to the print position."),
     later("--dump-folder DIR\tWhere the filter writes its image dumps (/var/spool/cups/tmp)."),
     later("--list\tList devices and drivers; with -m, list the options of a driver.")},
    nullptr,
    {},
    later("Exit status: 0 success, 1 something failed or a queue has a problem, 2 wrong usage, or "
          "--check cannot check.")};

struct Request {
  QueuePlan plan;
  std::string model;
  std::vector<std::string> queues;  // to check
  korvel::EmulatedPrinter emulated;
  std::string dumpFolder = "/var/spool/cups/tmp";
  korvel::SharingRequest sharing;
  std::string preset;
  bool check = false, list = false, emulate = false, testPage = false;
  bool share = false, unshare = false, json = false;
  std::string feed;  // the queue whose media is fed
  bool cut = false, back = false;
};

bool takeFlag(const korvel::Arguments& arguments, Request* request) {
  if (arguments.is("--check")) {
    request->check = true;
  } else if (arguments.is("--json")) {
    request->json = true;
  } else if (arguments.is("--cut")) {
    request->cut = true;
  } else if (arguments.is("--back")) {
    request->back = true;
  } else if (arguments.is("--list")) {
    request->list = true;
  } else if (arguments.is("--emulated")) {
    request->emulate = true;
  } else if (arguments.is("-t", "--test-page")) {
    request->testPage = true;
  } else if (arguments.is("-n", "--dry-run")) {
    request->sharing.dryRun = true;
  } else {
    return false;
  }
  return true;
}

bool takeSharing(korvel::Arguments* arguments, Request* request) {
  if (arguments->is("--share") || arguments->is("--unshare")) {
    (arguments->is("--share") ? request->share : request->unshare) = true;
    request->sharing.queue = arguments->value();
  } else if (arguments->is("--preset")) {
    request->preset = arguments->value();
  } else if (arguments->is("--ready")) {
    request->sharing.readySizes = korvel::parseSizes(arguments->value());
  } else if (arguments->is("--state-folder")) {
    request->sharing.stateFolder = arguments->value();
  } else {
    return false;
  }
  return true;
}

// An address for a URI, as in the dialog. The print service judges everything else.
std::string uriOf(const std::string& value) {
  const std::string uri = korvel::deviceUri(value);
  return uri.empty() ? value : uri;
}

bool takeValued(korvel::Arguments* arguments, Request* request) {
  QueuePlan& plan = request->plan;
  if (arguments->is("-v")) {
    plan.uri = uriOf(arguments->nonEmptyValue());
  } else if (arguments->is("-m")) {
    request->model = arguments->value();
  } else if (arguments->is("-p")) {
    plan.name = arguments->nonEmptyValue();
  } else if (arguments->is("-o")) {
    for (const auto& option : korvel::parseOptions(arguments->value()))
      plan.options.push_back(option);
  } else if (arguments->is("-D")) {
    plan.info = arguments->value();
  } else if (arguments->is("-L")) {
    plan.location = arguments->value();
  } else if (arguments->is("-h")) {
    setenv("CUPS_SERVER", arguments->value().c_str(), 1);  // for lpadmin too
  } else if (arguments->is("--port")) {
    request->emulated.port = arguments->number(1, 65535);
  } else if (arguments->is("--out")) {
    request->emulated.folder = arguments->value();
  } else if (arguments->is("-d")) {
    request->queues.push_back(arguments->nonEmptyValue());
  } else if (arguments->is("--feed")) {
    request->feed = arguments->nonEmptyValue();
  } else if (arguments->is("--dump-folder")) {
    request->dumpFolder = arguments->value();
  } else {
    return takeSharing(arguments, request);
  }
  return true;
}

Request parseArguments(int argc, char** argv) {
  Request request;
  korvel::Arguments arguments(argc, argv, kProgram, kHelp);
  std::vector<std::string> operands;
  while (arguments.next()) {
    if (!arguments.isOption()) {
      operands.push_back(arguments.text());
    } else if (!takeFlag(arguments, &request) && !takeValued(&arguments, &request)) {
      arguments.unknown();
    }
  }
  const bool feeds = !request.feed.empty();
  if (request.check + request.list + request.emulate + request.share + request.unshare + feeds >
      1) {
    arguments.wrong(translated(
        "--check, --list, --emulated, --share, --unshare and --feed cannot be combined"));
  }
  if ((request.cut || request.back) && !feeds) {
    arguments.wrong(translated("--cut and --back need --feed"));
  }
  if (request.cut && request.back)
    arguments.wrong(translated("--cut and --back cannot be combined"));
  if (!request.queues.empty() && !request.check && !request.testPage) {
    arguments.wrong(translated("-d needs --check or --test-page"));
  }
  if (request.json && !request.check) arguments.wrong(translated("--json needs --check"));
  if (!operands.empty() && !request.check) {
    arguments.wrong(filled("unexpected argument '%s'", operands[0].c_str()));
  }
  if (request.emulate && !request.plan.uri.empty()) {
    arguments.wrong(translated("--emulated and -v cannot be combined"));
  }
  if (!request.preset.empty() && request.plan.name.empty()) {
    arguments.wrong(translated("--preset needs the queue of the printer: -p QUEUE"));
  }
  for (const std::string& operand : operands) request.queues.push_back(operand);
  return request;
}

Failure noQueue(const std::string& name) {
  return {filled("There is no queue %s. Show all queues: lpstat -e", name.c_str())};
}

Failure noOwnDriver(const std::string& queue) {
  return {filled("Queue %s does not have an installed Korvel driver.", queue.c_str())};
}

void say(const std::string& sentence) { std::printf("%s\n", korvel::shown(sentence).c_str()); }

// ---- Check ----

korvel::Examination checkQueue(const PrintSystem& system, const korvel::Queue& queue,
                               const Request& request) {
  std::vector<korvel::Finding> findings =
      korvel::examine(korvel::gatherFacts(system, queue, request.dumpFolder));
  for (const korvel::Finding& finding : korvel::examineSharing(
           korvel::gatherSharingFacts(system, queue, request.sharing.stateFolder))) {
    findings.push_back(finding);
  }
  return {queue.name, queue.makeAndModel, findings};
}

void showExamination(const korvel::Examination& examination) {
  for (const korvel::Finding& finding : examination.findings) {
    say(examination.queue + ": " + finding.text);
  }
  if (!korvel::isWell(examination)) return;
  say(filled("Queue %s (%s): no problems found.", examination.queue.c_str(),
             examination.makeAndModel.c_str()));
}

Result<std::vector<korvel::Queue>> queuesToCheck(const PrintSystem& system,
                                                 const std::vector<std::string>& names) {
  std::vector<korvel::Queue> queues;
  for (const std::string& name : names) {
    const auto queue = system.queue(name);
    if (!queue) return noQueue(name);
    queues.push_back(*queue);
  }
  if (!names.empty()) return queues;
  for (const korvel::Queue& queue : system.queues()) {
    if (queue.isOurs()) queues.push_back(queue);
  }
  if (!queues.empty()) return queues;
  return Failure{
      translated("There is no queue of a Korvel printer; create one with korvel-setup.")};
}

// All functions from here on return the exit status.
Result<int> check(const PrintSystem& system, Request request) {
  if (request.queues.empty() && !request.plan.name.empty()) {
    request.queues.push_back(request.plan.name);
  }
  const Result<std::vector<korvel::Queue>> queues = queuesToCheck(system, request.queues);
  if (!queues) return queues.failure();
  std::vector<korvel::Examination> examined;
  for (const korvel::Queue& queue : queues.value()) {
    examined.push_back(checkQueue(system, queue, request));
    if (!request.json) showExamination(examined.back());
  }
  if (request.json) std::printf("%s", korvel::asJson(examined).c_str());
  const bool well = std::all_of(examined.begin(), examined.end(), korvel::isWell);
  return well ? 0 : 1;
}

// ---- Set up ----

using Descriptions = std::vector<Description>;

// The installed drivers; fails when there are none.
Result<Descriptions> descriptionsOf(const PrintSystem& system) {
  Descriptions all = system.descriptions();
  if (!all.empty()) return all;
  return Failure{translated(
      "The print service has no Korvel drivers; install the package printer-driver-korvel.")};
}

Result<Description> describe(const std::string& model, const Descriptions& all) {
  const Description* one = korvel::meant(model, all);
  if (one != nullptr) return *one;
  std::vector<std::string> names;
  for (const Description& each : all) names.push_back(each.bareName());
  const std::vector<std::string> nearest = korvel::nearestDrivers(model, names);
  if (nearest.empty()) {
    return Failure{
        filled("There is no driver %s. Show all drivers: korvel-setup --list", model.c_str())};
  }
  return Failure{filled("There is no driver %s. Nearest drivers: %s.", model.c_str(),
                        korvel::listed(nearest).c_str())};
}

Result<int> printTestPage(const PrintSystem& system, const std::string& queue) {
  const Result<std::string> file = korvel::testPage(system.queueDescription(queue));
  if (!file) return file.failure();
  const Result<int> job = system.print(queue, file.value(), translated("Korvel test page"));
  if (!job) return job;
  say(filled("The test page is job %s-%d. If it is not printed, run korvel-setup --check %s.",
             queue.c_str(), job.value(), queue.c_str()));
  return 0;
}

bool hasUser() { return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0; }

// Asks the printer of the queue, unless it is busy or neither its device nor its driver changes.
// `description` is the text of the PPD.
korvel::Contact contact(const PrintSystem& system, const QueuePlan& plan,
                        const std::optional<korvel::Queue>& old, const std::string& description) {
  korvel::Contact made = {
      plan.name, plan.uri, plan.description.bareName(), korvel::asksForStatus(description), {}};
  if (made.uri.empty() && old) made.uri = old->uri;
  if (made.driver.empty()) made.driver = system.installedFor(description).bareName();
  const bool changes = !old || !plan.uri.empty() || !plan.description.name.empty();
  if (!changes || (old && old->busy) || !korvel::canBeAsked(made.uri)) return made;
  say(filled("Asking the printer at %s (at most %d s)...", made.uri.c_str(),
             korvel::kProbeSeconds));
  std::fflush(stdout);
  made.reply = korvel::askPrinter(made.uri);
  return made;
}

// Exchanges the driver of a silent printer if the user agrees.
void offerOneWay(const PrintSystem& system, QueuePlan* plan, korvel::Contact* contact) {
  if (!korvel::waitsInVain(*contact) || !hasUser() || !korvel::wantsOneWay(contact->uri)) return;
  const Descriptions all = system.descriptions();
  const Description* twin = korvel::meant(korvel::oneWayTwin(contact->driver), all);
  if (twin == nullptr) return;
  plan->description = *twin;
  contact->asks = false;
}

enum class Probe { kAskPrinter, kNone };

// Checks the rest of the plan, asks the printer, and creates or updates the queue.
Result<int> makeQueue(const PrintSystem& system, QueuePlan plan, Probe probe) {
  const auto old = system.queue(plan.name);
  Result<void> checked;
  if (!old) checked = korvel::checkName(plan.name);
  if (!checked) return checked.failure();
  if (old && !old->isOurs()) {
    return Failure{
        filled("Queue %s has another driver; choose another name with -p, or remove the "
               "queue: lpadmin -x %s",
               plan.name.c_str(), plan.name.c_str())};
  }
  plan.isNew = !old;
  const std::string text = plan.description.name.empty()
                               ? system.queueDescription(plan.name)
                               : system.installedDescription(plan.description.name);
  checked = korvel::checkQueueOptions(text, plan.options);
  if (!checked) return checked.failure();
  korvel::Contact contacted = {plan.name, plan.uri, "", false, {}};
  if (probe == Probe::kAskPrinter) {
    contacted = contact(system, plan, old, text);
    offerOneWay(system, &plan, &contacted);
  }
  checked = korvel::setUp(plan);
  if (!checked) return checked.failure();
  for (const std::string& sentence : korvel::sentencesOf(contacted)) say(sentence);
  return 0;
}

Result<int> list(const PrintSystem& system, const Request& request) {
  const Result<Descriptions> all = descriptionsOf(system);
  if (!all) return all.failure();
  if (request.model.empty()) {
    korvel::showDevices(system.devices(), all.value());
    korvel::showDescriptions(all.value());
    return 0;
  }
  const Result<Description> one = describe(request.model, all.value());
  if (!one) return one.failure();
  korvel::showOptions(system.installedDescription(one.value().name));
  return 0;
}

Result<int> emulate(const PrintSystem& system, Request request) {
  const Result<Descriptions> all = descriptionsOf(system);
  if (!all) return all.failure();
  const Result<Description> one =
      describe(request.model.empty() ? "k220-203" : request.model, all.value());
  if (!one) return one.failure();
  QueuePlan& plan = request.plan;
  plan.description = one.value();
  plan.uri = "socket://127.0.0.1:" + std::to_string(request.emulated.port);
  if (plan.name.empty()) plan.name = "emulated";
  const korvel::PrinterAnswer there = korvel::askPrinter(plan.uri).answer;
  if (there == korvel::PrinterAnswer::kSilent) {
    return Failure{
        filled("Port %d is used by another program, or by a printer that is busy; choose another "
               "port with --port.",
               request.emulated.port)};
  }
  const bool isChosen = !request.model.empty() || !request.emulated.folder.empty();
  if (there == korvel::PrinterAnswer::kAnswers && isChosen) {
    return Failure{
        filled("A printer is already listening on port %d, so that -m and --out would have no "
               "effect; stop it, or choose another port with --port.",
               request.emulated.port)};
  }
  Result<int> made = makeQueue(system, plan, Probe::kNone);
  if (made && request.testPage) made = printTestPage(system, plan.name);
  if (!made) return made;
  if (there == korvel::PrinterAnswer::kAnswers) {
    say(filled("A printer is already listening on port %d and prints the jobs of this queue.",
               request.emulated.port));
    return 0;
  }
  request.emulated.once = request.testPage;
  return korvel::becomePrinter(request.emulated,
                               system.installedDescription(plan.description.name));
}

Result<int> share(const PrintSystem& system, Request request) {
  korvel::SharingRequest& sharing = request.sharing;
  sharing.info = request.plan.info;
  sharing.location = request.plan.location;
  if (hasUser()) sharing.agreed = korvel::agreesToChanges;
  const Result<void> done =
      request.share ? korvel::shareQueue(system, sharing) : korvel::unshareQueue(system, sharing);
  if (!done) return done.failure();
  if (!request.share || !request.testPage || sharing.dryRun) return 0;
  const Result<int> job = korvel::printSharedTestSheet(system, sharing.queue);
  if (!job) return job;
  say(filled("The test sheet is job %s-%d, sent as a tablet would.", sharing.queue.c_str(),
             job.value()));
  return 0;
}

// Prints a test page on an existing queue that is not to be changed.
bool isTestOnly(const Request& request) {
  const QueuePlan& plan = request.plan;
  return request.testPage && request.model.empty() && plan.uri.empty() && plan.options.empty() &&
         plan.info.empty() && plan.location.empty();
}

Result<int> setUpQueue(const PrintSystem& system, Request request) {
  QueuePlan& plan = request.plan;
  if (plan.name.empty() && !request.queues.empty()) {
    plan.name = request.queues[0];
    if (!system.queue(plan.name)) return noQueue(plan.name);
  }
  const auto old = plan.name.empty() ? std::nullopt : system.queue(plan.name);
  if (old && isTestOnly(request)) return printTestPage(system, plan.name);
  Result<Descriptions> all = Descriptions();
  if (!request.model.empty() || !old) all = descriptionsOf(system);
  if (!all) return all.failure();
  if (!request.model.empty()) {
    const Result<Description> one = describe(request.model, all.value());
    if (!one) return one.failure();
    plan.description = one.value();
  }
  if (!old) {
    const korvel::SetupDialog dialog(hasUser());
    const Result<void> completed = dialog.complete(system, all.value(), &plan);
    if (!completed) return completed.failure();
    if (plan.uri == korvel::kEmulatedUri) {
      request.model = plan.description.bareName();
      return emulate(system, request);
    }
  }
  const bool isDialog = !old && hasUser();
  Result<int> made = makeQueue(system, plan, Probe::kAskPrinter);
  if (made && isDialog && !request.testPage) request.testPage = korvel::wantsTestPage();
  if (made && request.testPage) made = printTestPage(system, plan.name);
  if (!made || !isDialog || !system.isThisMachine() || !korvel::wantsSharing()) return made;
  request.sharing.queue = plan.name;
  request.share = true;
  request.testPage = false;  // it was printed
  return share(system, request);
}

// ---- Feed ----

// Media that stays at the tear-off edge would shift the first label of the next job, which does not
// take it back.
Result<int> feed(const PrintSystem& system, const Request& request) {
  const std::string& queue = request.feed;
  const auto existing = system.queue(queue);
  if (!existing) return noQueue(queue);
  if (!existing->isOurs()) return noOwnDriver(queue);
  const korvel::Feed what = request.cut    ? korvel::Feed::kCut
                            : request.back ? korvel::Feed::kBack
                                           : korvel::Feed::kToEdge;
  Result<void> fed = korvel::feedMedia(system, queue, what);
  if (fed && what == korvel::Feed::kToEdge && hasUser()) {
    korvel::waitForTearOff();
    fed = korvel::feedMedia(system, queue, korvel::Feed::kBack);
  } else if (fed && what == korvel::Feed::kToEdge) {
    say(
        filled("The media is at the tear-off edge. When it is torn off, take it back to the print "
               "position: korvel-setup --feed %s --back",
               queue.c_str()));
    return 0;
  }
  if (!fed) return fed.failure();
  say(translated("The media is at the print position."));
  return 0;
}

// ---- Preset ----

Result<int> makePreset(const PrintSystem& system, Request request) {
  const auto base = system.queue(request.plan.name);
  if (!base) return noQueue(request.plan.name);
  QueuePlan plan = korvel::planPreset(system, *base, request.preset, request.plan.options);
  if (!request.plan.location.empty()) plan.location = request.plan.location;
  if (!base->isOurs() || plan.description.name.empty()) {
    return noOwnDriver(base->name);
  }
  const Result<void> checked =
      korvel::checkQueueOptions(system.installedDescription(plan.description.name), plan.options);
  if (!checked) return checked.failure();
  // Both queues take turns from now on, before the new one can print.
  if (plan.uri != base->uri) {
    const Result<void> moved = korvel::runLpadmin({"-p", base->name, "-v", plan.uri});
    if (!moved) return moved.failure();
  }
  const Result<int> made = makeQueue(system, plan, Probe::kNone);
  if (!made || !korvel::isSharedByUs(request.sharing.stateFolder, base->name)) return made;
  request.sharing.queue = plan.name;
  const Result<void> shared = korvel::shareQueue(system, request.sharing);
  if (!shared) return shared.failure();
  return 0;
}

Failure serviceFailure() {
  if (access("/run/systemd/system", F_OK) == 0) {
    return {filled("The print service at %s does not answer. As root: systemctl start cups",
                   cupsServer())};
  }
  return {
      filled("The print service at %s does not answer. As root: service cups start", cupsServer())};
}

Result<int> run(const Request& request) {
  const PrintSystem system;
  if (!system.isThere()) return serviceFailure();
  if (request.check) return check(system, request);
  if (request.share || request.unshare) return share(system, request);
  if (!request.preset.empty()) return makePreset(system, request);
  if (request.list) return list(system, request);
  if (!request.feed.empty()) return feed(system, request);
  if (request.emulate) return emulate(system, request);
  return setUpQueue(system, request);
}

}  // namespace

int main(int argc, char** argv) {
  korvel::startTranslation();
  const Request request = parseArguments(argc, argv);
  const Result<int> status = run(request);
  if (status) return status.value();
  const int failed = korvel::reportFailure(kProgram, status.sentence());
  return request.check ? kCannotCheck : failed;
}
