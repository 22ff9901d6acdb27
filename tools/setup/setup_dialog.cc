// A question shows its default answer in brackets; an empty line accepts it.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/setup_dialog.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <iostream>

#include "tools/common/shown_text.h"
#include "tools/common/translation.h"
#include "tools/description/description_text.h"
#include "tools/description/option_check.h"
#include "tools/setup/device_choice.h"

namespace korvel {

namespace {

// The answer, or the proposal if there is no answer or no more input.
std::string ask(const std::string& question, const std::string& proposal) {
  std::printf("%s [%s] ", question.c_str(), proposal.c_str());
  std::fflush(stdout);
  std::string answer;
  std::getline(std::cin, answer);
  return answer.empty() ? proposal : answer;
}

// One of the numbers 1 to `count`.
size_t askNumber(const std::string& question, size_t count, size_t proposal) {
  for (;;) {
    const std::string answer = ask(question, std::to_string(proposal));
    const bool digits =
        answer.size() < 6 && answer.find_first_not_of("0123456789") == std::string::npos;
    const unsigned long number = digits ? std::stoul(answer) : 0;
    if (number >= 1 && number <= count) return number;
    std::printf("%s\n", filled("Enter a number from 1 to %zu.", count).c_str());
  }
}

// A letter in UTF-8 may have several bytes.
std::string firstLetter(const std::string& text) {
  size_t end = 1;
  while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0u) == 0x80) ++end;
  return text.substr(0, end);
}

void showNumbered(size_t number, const std::string& name, const std::string& what) {
  std::printf("%3zu  %-28s  %s\n", number, shown(name).c_str(), shown(what).c_str());
}

// "-m korvel-k220-203, -m korvel-k220-300"
std::string asOptions(const std::vector<Description>& some) {
  std::string line;
  for (const Description& one : some) line += (line.empty() ? "-m " : ", -m ") + one.bareName();
  return line;
}

std::string whatItIs(const Device& device) {
  return device.info.empty() || device.info == "Unknown" ? device.makeAndModel : device.info;
}

}  // namespace

void showDevices(const std::vector<Device>& devices, const std::vector<Description>& all) {
  std::printf("%s\n", translated("Devices:"));
  for (const Device& device : devices) {
    const std::vector<Description> fit = fitting(device, all);
    std::printf("  %s  %s%s%s\n", shown(device.uri).c_str(), shown(whatItIs(device)).c_str(),
                fit.empty() ? "" : "  ", asOptions(fit).c_str());
  }
  if (devices.empty()) {
    std::printf("  %s\n", translated("None; switch the printer on, or specify its address: -v "
                                     "socket://ADDRESS"));
  }
}

void showDescriptions(const std::vector<Description>& all) {
  std::printf("%s\n", translated("Drivers:"));
  for (const Description& one : all) {
    std::printf("  %-24s  %s\n", shown(one.bareName()).c_str(), shown(one.makeAndModel).c_str());
  }
}

void showOptions(const std::string& description) {
  const Ppd ppd = openDescription(description);
  if (!ppd) return;
  ppdLocalize(ppd.get());
  for (const ppd_option_t* option = ppdFirstOption(ppd.get()); option != nullptr;
       option = ppdNextOption(ppd.get())) {
    if (std::string(option->keyword) == "PageRegion") continue;  // the same as PageSize
    std::printf("%s (%s):", option->keyword, option->text);
    for (int i = 0; i < option->num_choices; ++i) {
      std::printf(" %s", shownChoice(option->choices[i].choice).c_str());
    }
    std::printf("\n");
  }
}

Result<void> SetupDialog::complete(const PrintSystem& system, const std::vector<Description>& all,
                                   QueuePlan* plan) const {
  Device device = {plan->uri, "", "", ""};
  if (plan->uri.empty()) {
    const Result<Device> chosen = chooseDevice(system, all);
    if (!chosen) return chosen.failure();
    device = chosen.value();
  }
  plan->uri = device.uri;
  if (plan->description.name.empty()) {
    const Result<Description> chosen = chooseDescription(device, all);
    if (!chosen) return chosen.failure();
    plan->description = chosen.value();
  }
  if (plan->name.empty()) plan->name = chooseName(system, *plan);
  return {};
}

Result<Device> SetupDialog::chooseDevice(const PrintSystem& system,
                                         const std::vector<Description>& all) const {
  if (hasUser_) std::printf("%s\n", translated("Looking for printers..."));
  std::vector<Device> ours, others;
  for (const Device& found : system.devices()) {
    (fitting(found, all).empty() ? others : ours).push_back(found);
  }
  if (!hasUser_ && ours.size() == 1) return ours[0];
  if (!hasUser_ && ours.empty()) {
    return Failure{
        translated("No Korvel printer was found; switch it on, or specify its address: "
                   "-v socket://ADDRESS")};
  }
  if (!hasUser_) {
    return Failure{
        translated("More than one Korvel printer was found; choose one with -v URI "
                   "(korvel-setup --list shows all).")};
  }
  // The printer is probably one of ours, or else none of the list.
  const size_t proposal = ours.empty() ? others.size() + 1 : 1;
  ours.insert(ours.end(), others.begin(), others.end());
  for (size_t i = 0; i < ours.size(); ++i) showNumbered(i + 1, whatItIs(ours[i]), ours[i].uri);
  showNumbered(ours.size() + 1, translated("another printer"), "socket://ADDRESS");
  const size_t number = askNumber(translated("Which printer?"), ours.size() + 1, proposal);
  if (number <= ours.size()) return ours[number - 1];
  return Device{ask(translated("Address of the printer?"), "socket://192.0.2.7"), "", "", ""};
}

Result<Description> SetupDialog::chooseDescription(const Device& device,
                                                   const std::vector<Description>& all) const {
  std::vector<Description> fit = fitting(device, all);
  if (!hasUser_ && fit.size() == 1) return fit[0];
  if (!hasUser_ && !fit.empty()) {
    return Failure{filled("More than one driver fits %s; choose one: %s", device.uri.c_str(),
                          asOptions(fit).c_str())};
  }
  if (!hasUser_) {
    return Failure{
        filled("The model of the printer at %s is unknown; choose a driver with -m MODEL "
               "(korvel-setup --list shows all).",
               device.uri.c_str())};
  }
  if (fit.empty()) {
    fit = all;
    const bool oneWay = linkOf(device.uri) == Link::kOneWay;
    std::stable_partition(fit.begin(), fit.end(), [oneWay](const Description& one) {
      return isOneWay(one.bareName()) == oneWay;
    });
  }
  for (size_t i = 0; i < fit.size(); ++i) {
    showNumbered(i + 1, fit[i].bareName(), fit[i].makeAndModel);
  }
  return fit[askNumber(translated("Which driver?"), fit.size(), 1) - 1];
}

std::string SetupDialog::chooseName(const PrintSystem& system, const QueuePlan& plan) const {
  const std::string first = proposedQueueName(plan.description.bareName());
  std::string name = first;
  for (int number = 2;; ++number) {
    const auto existing = system.queue(name);
    if (!existing || existing->uri == plan.uri) break;
    name = first + "-" + std::to_string(number);
  }
  return hasUser_ ? ask(translated("Name of the queue?"), name) : name;
}

bool agrees(const std::string& answer, const std::string& yes) {
  const std::string letter = firstLetter(answer);
  return strcasecmp(letter.c_str(), firstLetter(yes).c_str()) == 0 ||
         strcasecmp(letter.c_str(), "y") == 0;
}

bool agreesToChanges() {
  const std::string yes = translated("yes");
  return agrees(ask(translated("Make these changes?"), yes), yes);
}

bool wantsOneWay(const std::string& uri) {
  std::printf("%s\n", filled("The printer at %s does not answer. The one-way driver does not wait "
                             "for it (20 labels with tear-off: 25 s instead of 82 s), but reports "
                             "neither missing paper nor an open cover.",
                             uri.c_str())
                          .c_str());
  const std::string yes = translated("yes");
  return agrees(ask(translated("Use the one-way driver?"), yes), yes);
}

bool SetupDialog::wantsTestPage() const {
  const std::string yes = translated("yes");
  return agrees(ask(translated("Print a test page?"), yes), yes);
}

}  // namespace korvel
