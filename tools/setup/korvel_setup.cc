// korvel-setup: finds a printer, proposes its driver, creates the queue, prints a test page. With
// --check it finds problems of a queue, with --emulated it needs no printer.
// SPDX-License-Identifier: Apache-2.0
#include <cups/cups.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "tools/common/arguments.h"
#include "tools/common/suggestions.h"
#include "tools/common/translation.h"
#include "tools/setup/device_choice.h"
#include "tools/setup/emulated_queue.h"
#include "tools/setup/queue_facts.h"
#include "tools/setup/queue_setup.h"
#include "tools/setup/setup_dialog.h"

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

const korvel::Help kHelp = {
    later("Usage: korvel-setup [-v URI] [-m MODEL] [-p QUEUE] [OPTION]...\n"
          "       korvel-setup --emulated [--port N] [--out DIR] [OPTION]...\n"
          "       korvel-setup --check [QUEUE]...\n"
          "       korvel-setup --list"),
    later("Creates or updates the queue of a Korvel printer. Prompts for missing values when run "
          "in a terminal."),
    {later("-v URI\tThe device, as shown by lpinfo -v."),
     later("-m MODEL\tThe driver: k220-203, or its name in lpinfo -m."),
     later("-p QUEUE\tThe queue to create or update."),
     later("-o OPTION=VALUE\tA default of the queue; may be repeated."),
     later("-D TEXT\tThe description of the queue."),
     later("-L TEXT\tThe location of the printer."), later("-h SERVER\tThe print server."),
     later("-t, --test-page\tPrint a test page on the queue of -p or -d."),
     later("--emulated\tCreate a queue for an emulated printer, and run that printer."),
     later("--port N\tThe port of the emulated printer (9100)."),
     later("--out DIR\tWhere the emulated printer writes its sheets as pictures (sheets)."),
     later("--check\tFind problems of queues; without names, of all queues of Korvel printers."),
     later("-d QUEUE\tA queue to check."),
     later("--dump-folder DIR\tWhere the filter writes its image dumps (/var/spool/cups/tmp)."),
     later("--list\tList devices and drivers; with -m, list the options of a driver.")},
    nullptr,
    {},
    later("Exit status: 0 success, 1 something failed or a queue has a problem, 2 wrong usage.")};

struct Request {
  QueuePlan plan;
  std::string model;
  std::vector<std::string> queues;  // to check
  korvel::EmulatedPrinter emulated;
  std::string dumpFolder = "/var/spool/cups/tmp";
  bool check = false, list = false, emulate = false, testPage = false;
};

bool takeFlag(const korvel::Arguments& arguments, Request* request) {
  if (arguments.is("--check")) {
    request->check = true;
  } else if (arguments.is("--list")) {
    request->list = true;
  } else if (arguments.is("--emulated")) {
    request->emulate = true;
  } else if (arguments.is("-t", "--test-page")) {
    request->testPage = true;
  } else {
    return false;
  }
  return true;
}

bool takeValued(korvel::Arguments* arguments, Request* request) {
  QueuePlan& plan = request->plan;
  if (arguments->is("-v")) {
    plan.uri = arguments->value();
  } else if (arguments->is("-m")) {
    request->model = arguments->value();
  } else if (arguments->is("-p")) {
    plan.name = arguments->value();
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
    request->queues.push_back(arguments->value());
  } else if (arguments->is("--dump-folder")) {
    request->dumpFolder = arguments->value();
  } else {
    return false;
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
  if (request.check + request.list + request.emulate > 1) {
    arguments.wrong(translated("--check, --list and --emulated cannot be combined"));
  }
  if (!request.queues.empty() && !request.check && !request.testPage) {
    arguments.wrong(translated("-d needs --check or --test-page"));
  }
  if (!operands.empty() && !request.check) {
    arguments.wrong(filled("unexpected argument '%s'", operands[0].c_str()));
  }
  if (request.emulate && !request.plan.uri.empty()) {
    arguments.wrong(translated("--emulated and -v cannot be combined"));
  }
  for (const std::string& operand : operands) request.queues.push_back(operand);
  return request;
}

Failure noQueue(const std::string& name) {
  return {filled("There is no queue %s. Show all queues: lpstat -e", name.c_str())};
}

void say(const std::string& sentence) { std::printf("%s\n", sentence.c_str()); }

// ---- Check ----

bool checkQueue(const PrintSystem& system, const korvel::Queue& queue, const std::string& dumps) {
  const korvel::QueueFacts facts = korvel::gatherFacts(system, queue, dumps);
  bool well = true;
  for (const korvel::Finding& finding : korvel::examine(facts)) {
    say(queue.name + ": " + finding.text);
    well = well && !finding.fault;
  }
  if (well) {
    say(filled("Queue %s (%s): no problems found.", queue.name.c_str(),
               queue.makeAndModel.c_str()));
  }
  return well;
}

Result<std::vector<korvel::Queue>> queuesToCheck(const PrintSystem& system,
                                                 std::vector<std::string> names) {
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
  bool well = true;
  for (const korvel::Queue& queue : queues.value()) {
    well = checkQueue(system, queue, request.dumpFolder) && well;
  }
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
  for (const Description& each : all) names.push_back(korvel::shortName(each));
  std::sort(names.begin(), names.end());
  const std::vector<std::string> nearest = korvel::nearestNames(model, names);
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

// Checks the rest of the plan, and creates or updates the queue.
Result<int> makeQueue(const PrintSystem& system, QueuePlan plan) {
  Result<void> checked = korvel::checkName(plan.name);
  if (!checked) return checked.failure();
  const auto old = system.queue(plan.name);
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
  if (checked) checked = korvel::setUp(plan);
  if (!checked) return checked.failure();
  say(filled("Queue %s is ready. Print with: lp -d %s FILE", plan.name.c_str(), plan.name.c_str()));
  return 0;
}

Result<int> makeAndTest(const PrintSystem& system, const QueuePlan& plan, bool testPage) {
  const Result<int> made = makeQueue(system, plan);
  return made && testPage ? printTestPage(system, plan.name) : made;
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
  const korvel::PrinterAnswer there = korvel::askPrinter(plan.uri);
  if (there == korvel::PrinterAnswer::kSilent) {
    return Failure{
        filled("Port %d is used by a program that is not a printer; choose another port "
               "with --port.",
               request.emulated.port)};
  }
  const Result<int> made = makeAndTest(system, plan, request.testPage);
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
    const bool hasUser = isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
    const korvel::SetupDialog dialog(hasUser);
    const Result<void> completed = dialog.complete(system, all.value(), &plan);
    if (!completed) return completed.failure();
    if (hasUser && !request.testPage) request.testPage = dialog.wantsTestPage();
  }
  return makeAndTest(system, plan, request.testPage);
}

Result<int> run(const Request& request) {
  const PrintSystem system;
  if (!system.isThere()) {
    return Failure{filled("The print service at %s does not answer. As root: systemctl start cups",
                          cupsServer())};
  }
  if (request.check) return check(system, request);
  if (request.list) return list(system, request);
  if (request.emulate) return emulate(system, request);
  return setUpQueue(system, request);
}

}  // namespace

int main(int argc, char** argv) {
  korvel::startTranslation();
  const Result<int> status = run(parseArguments(argc, argv));
  return status ? status.value() : korvel::reportFailure(kProgram, status.sentence());
}
