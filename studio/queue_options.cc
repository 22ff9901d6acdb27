// Read through the spooler's library; translations by hand, since the library knows the language of
// the process only.
// SPDX-License-Identifier: Apache-2.0
#include "studio/queue_options.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <regex>
#include <sstream>
#include <utility>

#include "studio/sentences.h"
#include "tools/common/units.h"
#include "tools/description/description_text.h"
#include "tools/description/option_check.h"

namespace korvel {
namespace {

double mm(double points) { return std::max(0.0, points) / kPointsPerMm; }

bool isSizeOption(const ppd_option_t& option) {
  return std::strcmp(option.keyword, "PageRegion") == 0;
}

// "*de.PageSize 4x6/4 x 6 Zoll: ..." becomes "de.PageSize 4x6" -> "4 x 6 Zoll". Translations of an
// option's own name have the choice's place taken by it: "*de.Translation PageSize/Medienformat: ".
std::map<std::string, std::string> collectTexts(const std::string& text) {
  std::map<std::string, std::string> texts;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    const size_t dot = line.find('.');
    const size_t slash = line.find('/');
    const size_t colon = line.find(':', slash == std::string::npos ? 0 : slash);
    const bool isText = line.starts_with('*') && dot <= 6 && dot >= 3 &&
                        slash != std::string::npos && dot < slash && colon != std::string::npos;
    if (isText) texts[line.substr(1, slash - 1)] = line.substr(slash + 1, colon - slash - 1);
  }
  return texts;
}

// "Custom.50x80mm" and the like: two numbers and perhaps a unit.
bool isCustomSize(const std::string& value) {
  static const std::regex kCustomSize(
      "Custom\\.[0-9]{1,5}(\\.[0-9]{1,4})?x[0-9]{1,5}(\\.[0-9]{1,4})?(pt|in|cm|mm|m|ft)?");
  return std::regex_match(value, kCustomSize);
}

bool offers(const ppd_file_t& ppd, ppd_option_t* option, const std::string& value) {
  const bool custom = value.starts_with("Custom.");
  if (custom) {
    return std::strcmp(option->keyword, "PageSize") == 0 && ppd.variable_sizes != 0 &&
           isCustomSize(value);
  }
  return value != kCustomChoice && ppdFindChoice(option, value.c_str()) != nullptr;
}

template <typename Visit>
void forEachOption(ppd_file_t* ppd, Visit visit) {
  for (ppd_option_t* option = ppdFirstOption(ppd); option != nullptr; option = ppdNextOption(ppd)) {
    if (!isSizeOption(*option)) visit(option);
  }
}

nlohmann::json describeSize(const ppd_size_t& size) {
  return {
      {"width", mm(size.width)},
      {"height", mm(size.length)},
      {"margins",
       {mm(size.left), mm(size.length - size.top), mm(size.width - size.right), mm(size.bottom)}}};
}

}  // namespace

Result<std::shared_ptr<const QueueDriver>> QueueDriver::open(const std::string& text) {
  auto driver = std::make_shared<QueueDriver>();
  driver->ppd_ = openDescription(text);
  if (!driver->ppd_) return Failure{kNoQueue.english};
  driver->text_ = text;
  driver->texts_ = collectTexts(text);
  return std::shared_ptr<const QueueDriver>(std::move(driver));
}

std::string QueueDriver::inLanguage(const std::string& language, const std::string& keyword,
                                    const std::string& english) const {
  const auto found = texts_.find(language + "." + keyword);
  return found == texts_.end() ? english : found->second;
}

nlohmann::json QueueDriver::describeOption(const ppd_option_t& option,
                                           const std::string& language) const {
  const std::string keyword = option.keyword;
  nlohmann::json choices = nlohmann::json::array();
  for (int i = 0; i < option.num_choices; ++i) {
    const ppd_choice_t& choice = option.choices[i];
    if (std::strcmp(choice.choice, kCustomChoice) == 0) continue;
    choices.push_back(
        {{"value", choice.choice},
         {"label", inLanguage(language, keyword + " " + choice.choice, choice.text)}});
  }
  return {{"name", keyword},
          {"label", inLanguage(language, "Translation " + keyword, option.text)},
          {"default", option.defchoice},
          {"choices", choices}};
}

nlohmann::json QueueDriver::describeSizes(const std::string& language) const {
  nlohmann::json sizes = nlohmann::json::array();
  ppd_option_t* option = ppdFindOption(ppd_.get(), "PageSize");
  for (int i = 0; i < ppd_->num_sizes; ++i) {
    const ppd_size_t& size = ppd_->sizes[i];
    ppd_choice_t* choice = option == nullptr ? nullptr : ppdFindChoice(option, size.name);
    if (choice == nullptr || std::strcmp(size.name, kCustomChoice) == 0) continue;
    nlohmann::json described = describeSize(size);
    described["value"] = size.name;
    described["label"] = inLanguage(language, std::string("PageSize ") + size.name, choice->text);
    sizes.push_back(described);
  }
  return sizes;
}

nlohmann::json QueueDriver::describe(const std::string& language) const {
  nlohmann::json described = {{"dpi", dpi()},
                              {"options", nlohmann::json::array()},
                              {"sizes", describeSizes(language)},
                              {"custom", nullptr},
                              {"conflicts", nlohmann::json::array()},
                              {"feeds", nlohmann::json::array()}};
  forEachOption(ppd_.get(), [&](const ppd_option_t* option) {
    described["options"].push_back(describeOption(*option, language));
  });
  if (ppd_->variable_sizes != 0) {
    described["custom"] = {{"width", {mm(ppd_->custom_min[0]), mm(ppd_->custom_max[0])}},
                           {"height", {mm(ppd_->custom_min[1]), mm(ppd_->custom_max[1])}}};
  }
  for (int i = 0; i < ppd_->num_consts; ++i) {
    const ppd_const_t& conflict = ppd_->consts[i];
    described["conflicts"].push_back(
        {conflict.option1, conflict.choice1, conflict.option2, conflict.choice2});
  }
  for (const auto& [name, feed] : feeds()) described["feeds"].push_back(name);
  return described;
}

// Single sheets are not fed; only some models have a cutter.
std::map<std::string, Feed> QueueDriver::feeds() const {
  if (takesSingleSheets(text_)) return {};
  std::map<std::string, Feed> feeds = {{"edge", Feed::kToEdge}, {"back", Feed::kBack}};
  if (hasCutter(text_)) feeds["cut"] = Feed::kCut;
  return feeds;
}

Result<std::string> QueueDriver::feedJob(const std::string& feed, const Choices& choices) const {
  const std::map<std::string, Feed> offered = feeds();
  const auto found = offered.find(feed);
  if (found == offered.end()) return Failure{kBadSetting.english};
  const auto paper = choices.find("PaperType");
  return feedCommands(found->second, paper != choices.end() && paper->second == "LabelMark");
}

// Marks are kept in the description itself, so a check opens one of its own.
Result<Choices> QueueDriver::complete(const Choices& chosen) const {
  const Ppd ppd = openDescription(text_);
  if (!ppd) return Failure{kNoQueue.english};
  ppdMarkDefaults(ppd.get());
  for (const auto& [name, value] : chosen) {
    ppd_option_t* option = ppdFindOption(ppd.get(), name.c_str());
    if (option == nullptr || name != option->keyword || isSizeOption(*option) ||
        !offers(*ppd, option, value)) {
      return Failure{kBadSetting.english};
    }
    ppdMarkOption(ppd.get(), name.c_str(), value.c_str());
  }
  if (ppdConflicts(ppd.get()) > 0) return Failure{kConflict.english};
  Choices complete;
  forEachOption(ppd.get(), [&](const ppd_option_t* option) {
    const auto asked = chosen.find(option->keyword);
    complete[option->keyword] = asked == chosen.end() ? option->defchoice : asked->second;
  });
  return complete;
}

PageGeometry QueueDriver::geometry(const std::string& pageSize) const {
  const Ppd ppd = openDescription(text_);
  PageGeometry page;
  const ppd_size_t* size = ppd ? ppdPageSize(ppd.get(), pageSize.c_str()) : nullptr;
  if (size == nullptr) return page;
  page.width = static_cast<double>(size->width);
  page.height = static_cast<double>(size->length);
  page.left = static_cast<double>(size->left);
  page.bottom = static_cast<double>(size->bottom);
  page.right = page.width - static_cast<double>(size->right);
  page.top = page.height - static_cast<double>(size->top);
  page.dpi = dpi();
  return page;
}

unsigned QueueDriver::dpi() const {
  return static_cast<unsigned>(
      std::strtoul(keyword(text_, "DefaultResolution").c_str(), nullptr, 10));
}

std::string optionText(const Choices& choices) {
  std::string text;
  for (const auto& [name, value] : choices) text += (text.empty() ? "" : " ") + name + "=" + value;
  return text;
}

}  // namespace korvel
