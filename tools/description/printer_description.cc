// PPDs are read with the spooler's library, as in the filter, so that both understand them equally.
// SPDX-License-Identifier: Apache-2.0
#include "tools/description/printer_description.h"

#include <cups/cups.h>
#include <cups/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <regex>

#include "tools/common/translation.h"
#include "tools/description/option_check.h"

namespace korvel {
namespace {

constexpr char kOneWay[] = "-OneWay";

struct CupsFileCloser {
  void operator()(cups_file_t* file) const { cupsFileClose(file); }
};

// The line with the model's name gets that of the one-way variant.
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

// The queue's options that the PPD at `path` has.
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

// Of a size in points, fractions cut off.
DotSize dotsOf(float width, float height, unsigned dpi) {
  const double dotsPerPoint = dpi / 72.0;
  constexpr double kRounding = 0.001;  // sizes are single precision
  return {static_cast<int>(width * dotsPerPoint + kRounding),
          static_cast<int>(height * dotsPerPoint + kRounding)};
}

Failure noQueue(const std::string& queue) {
  if (cupsLastError() == IPP_STATUS_ERROR_NOT_FOUND) {
    return {filled("There is no queue %s. Show all queues: lpstat -e", queue.c_str())};
  }
  return {filled("The print service does not answer for queue %s; start it, or name a PPD with -p.",
                 queue.c_str())};
}

}  // namespace

Result<std::string> fetchQueue(const std::string& queue, const std::string& target) {
  const char* fetched = cupsGetPPD2(CUPS_HTTP_DEFAULT, queue.c_str());
  if (fetched == nullptr) return noQueue(queue);
  const std::string path = fetched;
  const Result<void> copied = copyDescription(path, target, true);
  unlink(path.c_str());
  if (!copied) return copied.failure();
  return knownDefaults(queue, target);
}

Result<void> copyDescription(const std::string& path, const std::string& target, bool oneWay) {
  const std::unique_ptr<cups_file_t, CupsFileCloser> from(cupsFileOpen(path.c_str(), "r"));
  if (!from) return Failure{filled("Cannot read %s: %s.", path.c_str(), std::strerror(errno))};
  std::ofstream to(target, std::ios::binary);
  char line[4096];
  while (cupsFileGets(from.get(), line, sizeof line) != nullptr) {
    to << (oneWay ? oneWayLine(line) : std::string(line)) << '\n';
  }
  to.close();
  if (to) return {};
  return Failure{filled("Cannot write %s: %s.", target.c_str(), std::strerror(errno))};
}

Result<void> PrinterDescription::open(const std::string& path, const std::string& shownAs) {
  ppd_.reset(ppdOpenFile(path.c_str()));
  if (!ppd_) return Failure{filled("%s is not a PPD.", shownAs.c_str())};
  for (const char* keyword : {"cupsFilter2", "cupsFilter"}) {
    for (const ppd_attr_t* attribute = ppdFindAttr(ppd_.get(), keyword, nullptr);
         attribute != nullptr; attribute = ppdFindNextAttr(ppd_.get(), keyword, nullptr)) {
      if (std::strstr(attribute->value, "rastertokorvel") != nullptr) return {};
    }
  }
  return Failure{
      filled("%s is not for a Korvel printer: it does not use the filter rastertokorvel.",
             shownAs.c_str())};
}

Result<void> PrinterDescription::mark(const std::string& options) {
  const Result<void> checked = checkOptions(ppd_.get(), parseOptions(options), OptionScope::kJob);
  if (!checked) return checked;
  ppdMarkDefaults(ppd_.get());
  cups_option_t* list = nullptr;
  const int count = cupsParseOptions(options.c_str(), 0, &list);
  cupsMarkOptions(ppd_.get(), count, list);
  cupsFreeOptions(count, list);
  return {};
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

DotSize PrinterDescription::printableDots() const {
  const ppd_size_t* size = ppdPageSize(ppd_.get(), nullptr);
  if (size == nullptr) return {};
  return dotsOf(size->right - size->left, size->top - size->bottom, dpi());
}

DotSize PrinterDescription::paperDots() const {
  const ppd_size_t* size = ppdPageSize(ppd_.get(), nullptr);
  if (size == nullptr || media() != Media::kSheet) return printableDots();
  return dotsOf(size->width, size->length, dpi());
}

Media PrinterDescription::media() const {
  if (!choice("AntiWrinkle").empty()) return Media::kSheet;
  return choice("PaperType") == "LabelMark" ? Media::kMark : Media::kGap;
}

}  // namespace korvel
