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
#include "tools/setup/printer_probe.h"
#include "tools/setup/typed_answer.h"

namespace korvel {

namespace {

// The answer, or the proposal if there is no answer or no more input.
std::string ask(const std::string& question, const std::string& proposal) {
  std::printf("%s ", question.c_str());
  if (!proposal.empty()) std::printf("[%s] ", proposal.c_str());
  std::fflush(stdout);
  std::string answer;
  std::getline(std::cin, answer);
  return answer.empty() ? proposal : answer;
}

// Zero when the answer is no number.
size_t numberIn(const std::string& answer) {
  const bool digits = !answer.empty() && answer.size() < 6 &&
                      answer.find_first_not_of("0123456789") == std::string::npos;
  return digits ? std::stoul(answer) : 0;
}

// One of the numbers 1 to `count`.
size_t askNumber(const std::string& question, size_t count, size_t proposal) {
  for (;;) {
    const std::string answer = ask(question, std::to_string(proposal));
    const size_t number = numberIn(answer);
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

bool has(const Options& options, const std::string& name) {
  return std::any_of(options.begin(), options.end(),
                     [&name](const auto& option) { return option.first == name; });
}

// Tries an address that was typed. One that cannot be reached is used only if the user insists.
bool isConfirmed(const std::string& uri) {
  if (!canBeAsked(uri)) return true;
  std::printf(
      "%s\n",
      filled("Asking the printer at %s (at most %d s)...", uri.c_str(), kProbeSeconds).c_str());
  std::fflush(stdout);
  if (askPrinter(uri).answer != PrinterAnswer::kNotReached) return true;
  std::printf("%s\n", filled("No printer can be reached at %s.", uri.c_str()).c_str());
  const std::string yes = translated("yes");
  return agrees(ask(translated("Use this address all the same?"), translated("no")), yes);
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
  if (hasUser_) {
    const std::string text = system.installedDescription(plan->description.name);
    chooseSize(text, plan);
    chooseContent(text, plan);
  }
  if (plan->name.empty()) plan->name = chooseName(system, *plan);
  return {};
}

Result<Device> SetupDialog::chooseDevice(const PrintSystem& system,
                                         const std::vector<Description>& all) const {
  if (hasUser_) std::printf("%s\n", translated("Looking for printers..."));
  std::vector<Device> ours, others;
  for (const Device& found : system.devices()) {
    if (linkOf(found.uri) == Link::kUnknown) continue;  // fax, braille and the like
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
  return askForDevice(ours, proposal);
}

Result<Device> SetupDialog::askForDevice(const std::vector<Device>& devices,
                                         size_t proposal) const {
  for (size_t i = 0; i < devices.size(); ++i) {
    showNumbered(i + 1, whatItIs(devices[i]), devices[i].uri);
  }
  const size_t another = devices.size() + 1;
  showNumbered(another, translated("another printer"), translated("by its address"));
  showNumbered(another + 1, translated("emulated printer"), kEmulatedUri);
  std::string answer =
      ask(translated("Which printer? Number or address:"), std::to_string(proposal));
  for (;;) {
    const size_t number = numberIn(answer);
    if (number >= 1 && number < another) return devices[number - 1];
    if (number == another + 1 || answer == kEmulatedUri) return Device{kEmulatedUri, "", "", ""};
    const std::string uri = number == 0 ? deviceUri(answer) : "";
    if (!uri.empty() && isConfirmed(uri)) return Device{uri, "", "", ""};
    if (!std::cin) return Failure{translated("No printer was chosen; specify one with -v URI.")};
    answer = ask(translated("Address of the printer, such as a host name, an IP address or a URI:"),
                 uri);
  }
}

void SetupDialog::chooseSize(const std::string& description, QueuePlan* plan) const {
  const std::vector<SizeChoice> sizes = commonSizes(description);
  if (sizes.empty() || has(plan->options, "PageSize")) return;
  for (size_t i = 0; i < sizes.size(); ++i) showNumbered(i + 1, sizes[i].text, sizes[i].choice);
  for (;;) {
    const std::string answer = ask(
        translated("Size of the labels or sheets? Number, or width x height in mm or in:"), "1");
    const size_t number = numberIn(answer);
    const std::string size = number >= 1 && number <= sizes.size() ? sizes[number - 1].choice
                                                                   : pageSize(description, answer);
    if (!size.empty()) {
      plan->options.emplace_back("PageSize", size);
      return;
    }
    std::printf("%s\n", translated("The driver does not support this size. Enter a number of the "
                                   "list, or a size such as 57 x 32 mm."));
  }
}

// Only drivers of label printers have a contrast of their own for barcodes.
void SetupDialog::chooseContent(const std::string& description, QueuePlan* plan) const {
  if (keyword(description, "DefaultCenterOfPixel").empty()) return;
  if (has(plan->options, "HalftoneType") || has(plan->options, "Contrast")) return;
  const char* contents[] = {translated("barcodes and text"), translated("pictures"),
                            translated("both")};
  for (size_t i = 0; i < std::size(contents); ++i) std::printf("%3zu  %s\n", i + 1, contents[i]);
  const size_t number =
      askNumber(translated("What will be printed?"), std::size(contents), std::size(contents));
  for (const auto& option : optionsFor(static_cast<Content>(number))) {
    plan->options.push_back(option);
  }
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

bool wantsTestPage() {
  const std::string yes = translated("yes");
  return agrees(ask(translated("Print a test page?"), yes), yes);
}

bool wantsSharing() {
  const std::string no = translated("no");
  return agrees(ask(translated("Let tablets and phones of the local network print on it?"), no),
                translated("yes"));
}

void waitForTearOff() {
  ask(translated("Tear off the media, then press Enter to take it back to the print position:"),
      "");
}

}  // namespace korvel
