// The page size is special: it may have two names, PageSize and media, and any width and height.
// SPDX-License-Identifier: Apache-2.0
#include "tools/description/option_check.h"

#include <cups/cups.h>
#include <strings.h>

#include <algorithm>
#include <regex>

#include "tools/common/suggestions.h"
#include "tools/common/translation.h"

namespace korvel {
namespace {

constexpr char kAnySize[] = "Custom.WIDTHxHEIGHTmm";
constexpr char kPageSize[] = "PageSize";
constexpr const char* kSwitchValues[] = {"true", "on", "yes", "false", "off", "no"};

// Job options that the spooler's own filters read, whatever the printer.
constexpr const char* kJobOptions[] = {"center-of-pixel",
                                       "collate",
                                       "columns",
                                       "copies",
                                       "cpi",
                                       "crop-to-fit",
                                       "fill",
                                       "fit-to-page",
                                       "fitplot",
                                       "gamma",
                                       "hue",
                                       "landscape",
                                       "lpi",
                                       "mirror",
                                       "natural-scaling",
                                       "nowrap",
                                       "number-up",
                                       "number-up-layout",
                                       "orientation-requested",
                                       "output-order",
                                       "outputorder",
                                       "page-border",
                                       "page-bottom",
                                       "page-left",
                                       "page-ranges",
                                       "page-right",
                                       "page-set",
                                       "page-top",
                                       "position",
                                       "ppi",
                                       "prettyprint",
                                       "print-color-mode",
                                       "print-quality",
                                       "print-scaling",
                                       "saturation",
                                       "scaling",
                                       "sides",
                                       "wrap"};

bool isJobOption(const std::string& name) {
  return name.starts_with("job-") ||
         std::any_of(std::begin(kJobOptions), std::end(kJobOptions),
                     [&name](const char* known) { return name == known; });
}

bool isQueueAttribute(const std::string& name) {
  return name.ends_with("-default") || name.starts_with("printer-") || name.starts_with("job-");
}

bool isWithoutPpd(const std::string& name, OptionScope scope) {
  return scope == OptionScope::kJob ? isJobOption(name) : isQueueAttribute(name);
}

bool isCustom(const std::string& value) {
  return strncasecmp(value.c_str(), kCustomChoice, sizeof kCustomChoice - 1) == 0;
}

// "Custom.50x80mm" and the like: two numbers and perhaps a unit. Only this spelling of Custom
// prints: the library finds the choice in any case, but the size in this case only.
bool isCustomSize(const std::string& value) {
  static const std::regex kCustomSize(
      "Custom\\.[0-9]+(\\.[0-9]+)?x[0-9]+(\\.[0-9]+)?(pt|in|cm|mm|m|ft)?");
  return std::regex_match(value, kCustomSize);
}

// The rasteriser reads this switch itself, and knows more words for it than the PPD has choices.
bool isRasteriserSwitch(const ppd_option_t* option, const std::string& value) {
  if (std::string(option->keyword) != "CenterOfPixel") return false;
  return std::any_of(std::begin(kSwitchValues), std::end(kSwitchValues),
                     [&value](const char* known) { return strcasecmp(value.c_str(), known) == 0; });
}

bool hasChoice(ppd_file_t* ppd, ppd_option_t* option, const std::string& value) {
  if (isRasteriserSwitch(option, value)) return true;
  if (!isCustom(value)) return ppdFindChoice(option, value.c_str()) != nullptr;
  return ppd->variable_sizes != 0 && std::string(option->keyword) == kPageSize &&
         isCustomSize(value);
}

std::vector<std::string> choicesOf(const ppd_option_t* option) {
  std::vector<std::string> choices;
  for (int i = 0; i < option->num_choices; ++i) {
    if (!isCustom(option->choices[i].choice)) choices.emplace_back(option->choices[i].choice);
  }
  return choices;
}

std::vector<std::string> optionsOf(ppd_file_t* ppd) {
  std::vector<std::string> names;
  for (const ppd_option_t* option = ppdFirstOption(ppd); option != nullptr;
       option = ppdNextOption(ppd)) {
    names.emplace_back(option->keyword);
  }
  return names;
}

Failure noSuchOption(ppd_file_t* ppd, const std::string& name) {
  const std::vector<std::string> nearest = nearestNames(name, optionsOf(ppd));
  if (!nearest.empty()) {
    return {filled("There is no option %s. Nearest options: %s.", name.c_str(),
                   listed(nearest).c_str())};
  }
  return {filled("There is no option %s. Show all options: korvel-setup --list -m MODEL",
                 name.c_str())};
}

Failure noSuchChoice(const ppd_file_t* ppd, const ppd_option_t* option, const std::string& name,
                     const std::string& value) {
  const std::vector<std::string> choices = choicesOf(option);
  const bool anySize = ppd->variable_sizes != 0 && std::string(option->keyword) == kPageSize;
  std::vector<std::string> nearest = nearestNames(value, choices);
  const bool few = choices.size() <= kMostSuggestions && !anySize;
  if (few) nearest = choices;
  if (anySize) nearest.emplace_back(kAnySize);
  const std::string shown = listed(nearest);
  if (few) {
    return {filled("There is no choice %s=%s. All choices: %s.", name.c_str(), value.c_str(),
                   shown.c_str())};
  }
  if (!nearest.empty()) {
    return {filled("There is no choice %s=%s. Nearest choices: %s.", name.c_str(), value.c_str(),
                   shown.c_str())};
  }
  return {filled("There is no choice %s=%s. Show all choices: korvel-setup --list -m MODEL",
                 name.c_str(), value.c_str())};
}

Result<void> checkOption(ppd_file_t* ppd, const std::string& name, const std::string& value,
                         OptionScope scope) {
  const bool isMedia = strcasecmp(name.c_str(), "media") == 0;
  ppd_option_t* option = ppdFindOption(ppd, isMedia ? kPageSize : name.c_str());
  if (option == nullptr && isWithoutPpd(name, scope)) return {};
  if (option == nullptr) return noSuchOption(ppd, name);
  if (hasChoice(ppd, option, value)) return {};
  return noSuchChoice(ppd, option, name, value);
}

}  // namespace

Options parseOptions(const std::string& text) {
  cups_option_t* parsed = nullptr;
  const int count = cupsParseOptions(text.c_str(), 0, &parsed);
  Options options;
  for (int i = 0; i < count; ++i) options.emplace_back(parsed[i].name, parsed[i].value);
  cupsFreeOptions(count, parsed);
  return options;
}

Result<void> checkOptions(ppd_file_t* ppd, const Options& options, OptionScope scope) {
  for (const auto& [name, value] : options) {
    const Result<void> checked = checkOption(ppd, name, value, scope);
    if (!checked) return checked;
  }
  return {};
}

std::string shownChoice(const std::string& choice) {
  return choice == kCustomChoice ? kAnySize : choice;
}

}  // namespace korvel
