// What a queue's driver offers, for the page: options, sizes, texts in the visitor's language; and
// the check of what the visitor chose. SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_QUEUE_OPTIONS_H
#define KORVEL_STUDIO_QUEUE_OPTIONS_H

#include <cups/ppd.h>

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "studio/placement.h"
#include "tools/common/result.h"
#include "tools/description/description_text.h"
#include "tools/stream/feed_commands.h"

namespace korvel {

using Choices = std::map<std::string, std::string>;  // option -> choice

class QueueDriver {
 public:
  // `text` is the whole printer description (PPD).
  static Result<std::shared_ptr<const QueueDriver>> open(const std::string& text);

  // {"dpi", "options": [...], "sizes": [...], "custom": {...} or null, "conflicts": [...], "feeds":
  // [...]: how the media can be moved without printing, of "edge", "back" and "cut"}. Lengths
  // are millimetres. `language` as in de or zh_CN; English where a text is missing.
  nlohmann::json describe(const std::string& language) const;

  // Every option of the driver, with the queue's defaults where `chosen` has none. Refuses unknown
  // options and choices, and combinations that the driver forbids.
  Result<Choices> complete(const Choices& chosen) const;

  // The printer's commands for one of the feeds; `choices` are complete.
  Result<std::string> feedJob(const std::string& feed, const Choices& choices) const;

  // Of a size that complete() has let through.
  PageGeometry geometry(const std::string& pageSize) const;

  unsigned dpi() const;

 private:
  std::string inLanguage(const std::string& language, const std::string& keyword,
                         const std::string& english) const;
  nlohmann::json describeOption(const ppd_option_t& option, const std::string& language) const;
  std::map<std::string, Feed> feeds() const;
  nlohmann::json describeSizes(const std::string& language) const;

  std::string text_;
  std::map<std::string, std::string> texts_;  // "de.PageSize 4x6" -> text
  Ppd ppd_;
};

// "PageSize=4x6 Darkness=Dark", in the options' order.
std::string optionText(const Choices& choices);

}  // namespace korvel

#endif
