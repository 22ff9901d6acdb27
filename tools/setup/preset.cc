// The base queue's own defaults come first, so that a preset changes only what it names.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/preset.h"

#include <algorithm>
#include <cctype>

#include "tools/description/description_text.h"

namespace korvel {

namespace {

constexpr char kSocket[] = "socket://";
constexpr char kTurns[] = "korvel://";

std::string defaultOf(ppd_file_t* ppd, const char* option) {
  const ppd_option_t* found = ppd == nullptr ? nullptr : ppdFindOption(ppd, option);
  return found == nullptr ? "" : found->defchoice;
}

bool isRepeated(const std::string& option) {
  return option == "PageRegion" || option == "PaperDimension" || option == "ImageableArea";
}

}  // namespace

std::string presetQueueName(const std::string& queue, const std::string& preset) {
  std::string name = queue + "-";
  for (const char c : preset) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x80 || std::isalnum(byte) != 0) {
      name += static_cast<char>(std::tolower(byte));
    } else if (name.back() != '-') {
      name += '-';
    }
  }
  while (name.back() == '-') name.pop_back();
  return name;
}

std::string addressWithTurns(const std::string& uri) {
  return uri.starts_with(kSocket) ? kTurns + uri.substr(sizeof kSocket - 1) : uri;
}

std::string deviceOf(const std::string& uri) {
  std::string device = addressWithTurns(uri);
  if (!device.starts_with(kTurns)) return device;
  device.resize(std::min(device.size(), device.find_first_of("/?", sizeof kTurns - 1)));
  const bool hasPort = device.find(':', device.find_last_of("]/")) != std::string::npos;
  return hasPort ? device : device + ":9100";
}

Options ownDefaults(const std::string& description, const std::string& installed) {
  Options own;
  const Ppd mine = openDescription(description);
  const Ppd stock = openDescription(installed);
  for (int g = 0; mine != nullptr && g < mine->num_groups; ++g) {
    const ppd_group_t& group = mine->groups[g];
    for (int i = 0; i < group.num_options; ++i) {
      const ppd_option_t& option = group.options[i];
      if (isRepeated(option.keyword)) continue;
      if (option.defchoice == defaultOf(stock.get(), option.keyword)) continue;
      own.emplace_back(option.keyword, option.defchoice);
    }
  }
  return own;
}

QueuePlan planPreset(const PrintSystem& system, const Queue& base, const std::string& preset,
                     const Options& options) {
  QueuePlan plan;
  const std::string description = system.queueDescription(base.name);
  plan.name = presetQueueName(base.name, preset);
  plan.uri = addressWithTurns(base.uri);
  plan.description = system.installedFor(description);
  plan.info = preset;
  plan.location = base.location;
  plan.options = ownDefaults(description, system.installedDescription(plan.description.name));
  plan.options.insert(plan.options.end(), options.begin(), options.end());
  return plan;
}

}  // namespace korvel
