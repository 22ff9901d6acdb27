// Descriptions are read through the spooler's library, which the filter uses as well, so that both
// understand an option alike.
// SPDX-License-Identifier: Apache-2.0
#include "tools/description/printer_description.h"

#include <cups/cups.h>
#include <cups/file.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <regex>

#include "tools/common/translation.h"
#include "tools/description/description_text.h"

namespace korvel {
namespace {

constexpr char kOneWay[] = "-OneWay";

// Job options that the spooler's own filters read, whatever the printer.
constexpr const char* kStandardOptions[] = {"collate",
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
                                            "media",
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

bool isStandard(const std::string& name) {
  return name.starts_with("job-") ||
         std::any_of(std::begin(kStandardOptions), std::end(kStandardOptions),
                     [&name](const char* known) { return name == known; });
}

struct CupsFileCloser {
  void operator()(cups_file_t* file) const { cupsFileClose(file); }
};

// The line with the model's name gets the one-way twin's.
std::string oneWayLine(const std::string& line) {
  static const std::regex kModel("^(\\*ModelName: *\")([^\"]*)(\".*)$");
  std::smatch parts;
  if (!std::regex_match(line, parts, kModel) || parts[2].str().ends_with(kOneWay)) return line;
  return parts[1].str() + parts[2].str() + kOneWay + parts[3].str();
}

class Destination {
 public:
  explicit Destination(const std::string& queue)
      : dest_(cupsGetNamedDest(CUPS_HTTP_DEFAULT, queue.c_str(), nullptr)) {}
  Destination(const Destination&) = delete;
  Destination& operator=(const Destination&) = delete;
  ~Destination() { cupsFreeDests(dest_ == nullptr ? 0 : 1, dest_); }
  const cups_dest_t* get() const { return dest_; }

 private:
  cups_dest_t* dest_;
};

// The queue's options that the description at `path` has.
std::string knownDefaults(const std::string& queue, const std::string& path) {
  const Destination destination(queue);
  ppd_file_t* ppd = ppdOpenFile(path.c_str());
  std::string text;
  for (int i = 0; destination.get() != nullptr && i < destination.get()->num_options; ++i) {
    const cups_option_t& option = destination.get()->options[i];
    if (ppdFindOption(ppd, option.name) == nullptr) continue;
    text += (text.empty() ? "" : " ") + std::string(option.name) + "=" + option.value;
  }
  ppdClose(ppd);
  return text;
}

std::string queueFault(const std::string& queue) {
  if (cupsLastError() == IPP_STATUS_ERROR_NOT_FOUND) {
    return filled("the spooler has no queue %s; lpstat -e lists those there are", queue.c_str());
  }
  return filled(
      "the spooler does not answer for queue %s; start it, or name a printer description with -p "
      "instead",
      queue.c_str());
}

}  // namespace

std::string fetchQueue(const std::string& queue, const std::string& target, std::string* defaults) {
  const char* fetched = cupsGetPPD2(CUPS_HTTP_DEFAULT, queue.c_str());
  if (fetched == nullptr) return queueFault(queue);
  const std::string path = fetched;
  std::string fault = copyDescription(path, target, true);
  unlink(path.c_str());
  if (fault.empty()) *defaults = knownDefaults(queue, target);
  return fault;
}

std::string copyDescription(const std::string& path, const std::string& target, bool oneWay) {
  const std::unique_ptr<cups_file_t, CupsFileCloser> from(cupsFileOpen(path.c_str(), "r"));
  if (!from) {
    return filled("cannot read the printer description %s: %s", path.c_str(), std::strerror(errno));
  }
  std::ofstream to(target, std::ios::binary);
  char line[4096];
  while (cupsFileGets(from.get(), line, sizeof line) != nullptr) {
    to << (oneWay ? oneWayLine(line) : std::string(line)) << '\n';
  }
  to.close();
  return to ? std::string() : filled("cannot write %s", target.c_str());
}

std::string PrinterDescription::open(const std::string& path, const std::string& shownAs) {
  ppd_.reset(ppdOpenFile(path.c_str()));
  if (!ppd_) return filled("%s is not a printer description (PPD)", shownAs.c_str());
  for (const char* keyword : {"cupsFilter2", "cupsFilter"}) {
    for (const ppd_attr_t* attribute = ppdFindAttr(ppd_.get(), keyword, nullptr);
         attribute != nullptr; attribute = ppdFindNextAttr(ppd_.get(), keyword, nullptr)) {
      if (std::strstr(attribute->value, "rastertokorvel") != nullptr) return std::string();
    }
  }
  return filled("%s is not of a Korvel printer: it does not print with rastertokorvel",
                shownAs.c_str());
}

std::string PrinterDescription::mark(const std::string& options) {
  ppdMarkDefaults(ppd_.get());
  cups_option_t* list = nullptr;
  const int count = cupsParseOptions(options.c_str(), 0, &list);
  std::string fault;
  for (int i = 0; i < count && fault.empty(); ++i) fault = check(list[i].name, list[i].value);
  cupsMarkOptions(ppd_.get(), count, list);
  cupsFreeOptions(count, list);
  return fault;
}

std::string PrinterDescription::check(const std::string& name, const std::string& value) const {
  const std::string keyword = strcasecmp(name.c_str(), "media") == 0 ? "PageSize" : name;
  ppd_option_t* option = ppdFindOption(ppd_.get(), keyword.c_str());
  if (option == nullptr) {
    return isStandard(name) ? std::string() : filled("unknown option %s", name.c_str());
  }
  const bool custom = value.starts_with("Custom.");
  if (custom && ppd_->variable_sizes != 0 && keyword == "PageSize" && isCustomSize(value)) {
    return std::string();
  }
  if (!custom && ppdFindChoice(option, value.c_str()) != nullptr) return std::string();
  std::string offered;
  for (int i = 0; i < option->num_choices; ++i) {
    if (strcasecmp(option->choices[i].choice, "Custom") == 0) continue;
    offered += (offered.empty() ? "" : " ") + std::string(option->choices[i].choice);
  }
  if (value.empty()) {
    return filled("the option %s wants a value, one of %s", name.c_str(), offered.c_str());
  }
  return filled("the printer description offers no %s=%s, only %s", name.c_str(), value.c_str(),
                offered.c_str());
}

std::string PrinterDescription::name() const {
  const std::string name = ppd_->nickname == nullptr ? "" : ppd_->nickname;
  return name.substr(0, name.rfind(", "));
}

std::string PrinterDescription::choice(const std::string& option) const {
  const ppd_choice_t* marked = ppdFindMarkedChoice(ppd_.get(), option.c_str());
  return marked == nullptr ? std::string() : std::string(marked->choice);
}

unsigned PrinterDescription::dpi() const {
  std::string text = choice("Resolution");
  const ppd_attr_t* standard = ppdFindAttr(ppd_.get(), "DefaultResolution", nullptr);
  if (text.empty() && standard != nullptr) text = standard->value;
  return static_cast<unsigned>(std::strtoul(text.c_str(), nullptr, 10));
}

Media PrinterDescription::media() const {
  if (!choice("AntiWrinkle").empty()) return Media::kSheet;
  return choice("PaperType") == "LabelMark" ? Media::kMark : Media::kGap;
}

}  // namespace korvel
