// A question shows its proposal in brackets; an empty line takes it.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/setup_dialogue.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <iostream>

#include "tools/common/translation.h"
#include "tools/description/description_text.h"
#include "tools/setup/device_choice.h"

namespace korvel {

namespace {

// An answer, or the proposal; the proposal too when nobody is there any more.
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
    std::printf("%s\n", filled("Take a number from 1 to %zu.", count).c_str());
  }
}

// In UTF-8, where a letter of many languages is more than a byte.
std::string firstLetter(const std::string& text) {
  size_t end = 1;
  while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0u) == 0x80) ++end;
  return text.substr(0, end);
}

void showNumbered(size_t number, const std::string& name, const std::string& what) {
  std::printf("%3zu  %-28s  %s\n", number, name.c_str(), what.c_str());
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
    std::printf("  %s  %s%s%s\n", device.uri.c_str(), whatItIs(device).c_str(),
                fit.empty() ? "" : "  ", asOptions(fit).c_str());
  }
  if (devices.empty()) {
    std::printf("  %s\n", translated("None; switch the printer on, or give its address: -v "
                                     "socket://ADDRESS"));
  }
}

void showDescriptions(const std::vector<Description>& all) {
  std::printf("%s\n", translated("Descriptions:"));
  for (const Description& one : all) {
    std::printf("  %-24s  %s\n", one.bareName().c_str(), one.makeAndModel.c_str());
  }
}

void showOptions(const std::string& description) {
  ppd_file_t* ppd = openDescription(description);
  if (ppd == nullptr) return;
  ppdLocalize(ppd);
  for (const ppd_option_t* option = ppdFirstOption(ppd); option != nullptr;
       option = ppdNextOption(ppd)) {
    if (std::string(option->keyword) == "PageRegion") continue;  // PageSize once more
    std::printf("%s (%s):", option->keyword, option->text);
    for (int i = 0; i < option->num_choices; ++i) {
      std::printf(" %s", shownChoice(option->choices[i].choice).c_str());
    }
    std::printf("\n");
  }
  ppdClose(ppd);
}

std::string SetupDialogue::complete(const PrintSystem& system, const std::vector<Description>& all,
                                    QueuePlan* plan) const {
  Device device = {plan->uri, "", "", ""};
  std::string fault;
  if (plan->uri.empty()) fault = chooseDevice(system, all, &device);
  if (fault.empty() && plan->description.name.empty()) {
    fault = chooseDescription(device, all, &plan->description);
  }
  plan->uri = device.uri;
  return fault.empty() && plan->name.empty() ? chooseName(system, plan) : fault;
}

std::string SetupDialogue::chooseDevice(const PrintSystem& system,
                                        const std::vector<Description>& all, Device* device) const {
  if (talks_) std::printf("%s\n", translated("Looking for printers..."));
  std::vector<Device> ours, others;
  for (const Device& found : system.devices()) {
    (fitting(found, all).empty() ? others : ours).push_back(found);
  }
  if (!talks_ && ours.size() == 1) {
    *device = ours[0];
    return "";
  }
  if (!talks_) {
    return ours.empty() ? translated(
                              "No Korvel printer was found; switch it on, or tell its address: "
                              "-v socket://ADDRESS")
                        : translated(
                              "More than one Korvel printer was found; korvel-setup --list "
                              "shows them, -v URI takes one.");
  }
  // What is not ours is hardly the printer that is meant.
  const size_t proposal = ours.empty() ? others.size() + 1 : 1;
  ours.insert(ours.end(), others.begin(), others.end());
  for (size_t i = 0; i < ours.size(); ++i) showNumbered(i + 1, whatItIs(ours[i]), ours[i].uri);
  showNumbered(ours.size() + 1, translated("another"), "socket://ADDRESS");
  const size_t number = askNumber(translated("Which one is it?"), ours.size() + 1, proposal);
  if (number <= ours.size()) {
    *device = ours[number - 1];
    return "";
  }
  device->uri = ask(translated("Its address?"), "socket://192.0.2.7");
  return "";
}

std::string SetupDialogue::chooseDescription(const Device& device,
                                             const std::vector<Description>& all,
                                             Description* description) const {
  std::vector<Description> fit = fitting(device, all);
  if (!talks_ && fit.size() == 1) {
    *description = fit[0];
    return "";
  }
  if (!talks_ && !fit.empty()) {
    return filled("More than one description fits %s; take one: %s", device.uri.c_str(),
                  asOptions(fit).c_str());
  }
  if (!talks_) {
    return filled(
        "What printer is at %s cannot be told; korvel-setup --list shows the "
        "descriptions, -m MODEL takes one.",
        device.uri.c_str());
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
  *description = fit[askNumber(translated("Which description?"), fit.size(), 1) - 1];
  return "";
}

std::string SetupDialogue::chooseName(const PrintSystem& system, QueuePlan* plan) const {
  const std::string first = proposedQueueName(plan->description.bareName());
  std::string name = first;
  for (int number = 2;; ++number) {
    const auto taken = system.queue(name);
    if (!taken || taken->uri == plan->uri) break;
    name = first + "-" + std::to_string(number);
  }
  plan->name = talks_ ? ask(translated("The queue's name?"), name) : name;
  return "";
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

bool SetupDialogue::wantsTestPage() const {
  const std::string yes = translated("yes");
  return agrees(ask(translated("Print a test page?"), yes), yes);
}

}  // namespace korvel
