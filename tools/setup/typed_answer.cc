// Sizes are compared in points, so that "4 x 3 in" finds a choice with another name.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/typed_answer.h"

#include <cups/ppd.h>
#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <regex>

#include "tools/common/units.h"
#include "tools/description/description_text.h"
#include "tools/description/option_check.h"
#include "tools/setup/device_choice.h"

namespace korvel {

namespace {

constexpr double kSamePoints = 1.5;  // half a millimetre; no two sizes are so close
constexpr size_t kFewSizes = 8;

constexpr const char* kCommon[] = {"4x6",        "100x150mm",        "4x4",
                                   "4x8",        "1.25x2.25Rotated", "1x2Rotated",
                                   "2x4Rotated", "40x60mmRotated",   "30x50mmRotated"};

bool isCommon(const std::string& choice) {
  return std::any_of(std::begin(kCommon), std::end(kCommon),
                     [&choice](const char* one) { return choice == one; });
}

double pointsPerUnit(std::string unit) {
  std::transform(unit.begin(), unit.end(), unit.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (unit == "mm") return kPointsPerMm;
  if (unit == "cm") return 10 * kPointsPerMm;
  return kPointsPerInch;
}

double numberIn(std::string text) {
  std::replace(text.begin(), text.end(), ',', '.');
  double value = 0;
  double fraction = 0;
  for (const char c : text) {
    if (c == '.') {
      fraction = 1;
      continue;
    }
    value = value * 10 + (c - '0');
    fraction *= 10;
  }
  return fraction > 0 ? value / fraction : value;
}

struct Size {
  double width = 0, height = 0;  // in points
};

// Width and height with a unit; zero when the answer is something else.
Size sizeIn(std::string answer) {
  for (const std::string sign : {"×", "*"}) {
    const size_t at = answer.find(sign);
    if (at != std::string::npos) answer.replace(at, sign.size(), "x");
  }
  static const std::regex kSize(
      R"re(\s*(\d{1,4}([.,]\d{1,3})?)\s*(mm|cm|in|inch|inches|")?\s*x\s*)re"
      R"re((\d{1,4}([.,]\d{1,3})?)\s*(mm|cm|in|inch|inches|")\s*)re",
      std::regex::icase);
  std::smatch found;
  if (!std::regex_match(answer, found, kSize)) return {};
  const double second = pointsPerUnit(found[6].str());
  const double first = found[3].matched ? pointsPerUnit(found[3].str()) : second;
  return {numberIn(found[1].str()) * first, numberIn(found[4].str()) * second};
}

std::string customSize(const ppd_file_t& ppd, const Size& size) {
  const bool fits = size.width >= ppd.custom_min[0] && size.width <= ppd.custom_max[0] &&
                    size.height >= ppd.custom_min[1] && size.height <= ppd.custom_max[1];
  if (ppd.variable_sizes == 0 || !fits) return "";
  // Whole micrometres, written without the locale's decimal sign.
  const auto inMm = [](double points) {
    const long thousandths = std::lround(points / kPointsPerMm * 1000);
    char text[32];
    std::snprintf(text, sizeof text, "%ld.%03ld", thousandths / 1000, thousandths % 1000);
    std::string number = text;
    number.erase(number.find_last_not_of('0') + 1);
    if (number.back() == '.') number.pop_back();
    return number;
  };
  return std::string(kCustomChoice) + "." + inMm(size.width) + "x" + inMm(size.height) + "mm";
}

}  // namespace

std::string deviceUri(const std::string& answer) {
  if (linkOf(answer) != Link::kUnknown || answer.find("://") != std::string::npos) return answer;
  static const std::regex kHost(R"([A-Za-z0-9]([A-Za-z0-9.-]*[A-Za-z0-9])?(:\d{1,5})?)");
  static const std::regex kBareIpv6(R"([0-9A-Fa-f]*:[0-9A-Fa-f:.]*:[0-9A-Fa-f.]*)");
  if (std::regex_match(answer, kHost)) return "socket://" + answer;
  if (std::regex_match(answer, kBareIpv6)) return "socket://[" + answer + "]";
  return "";
}

std::vector<SizeChoice> commonSizes(const std::string& description) {
  const Ppd ppd = openDescription(description);
  if (!ppd) return {};
  ppdLocalize(ppd.get());
  const ppd_option_t* sizes = ppdFindOption(ppd.get(), "PageSize");
  if (sizes == nullptr) return {};
  std::vector<SizeChoice> common;
  for (int i = 0; i < sizes->num_choices; ++i) {
    const std::string choice = sizes->choices[i].choice;
    if (choice == kCustomChoice) continue;
    const bool isDefault = choice == sizes->defchoice;
    const bool few = static_cast<size_t>(sizes->num_choices) <= kFewSizes;
    if (!few && !isDefault && !isCommon(choice)) continue;
    common.insert(isDefault ? common.begin() : common.end(), {choice, sizes->choices[i].text});
  }
  return common;
}

std::string pageSize(const std::string& description, const std::string& answer) {
  const Ppd ppd = openDescription(description);
  if (!ppd) return "";
  const Size size = sizeIn(answer);
  for (int i = 0; i < ppd->num_sizes; ++i) {
    const ppd_size_t& one = ppd->sizes[i];
    const std::string name = one.name;
    if (name == kCustomChoice) continue;
    if (strcasecmp(name.c_str(), answer.c_str()) == 0) return name;
    if (std::abs(static_cast<double>(one.width) - size.width) < kSamePoints &&
        std::abs(static_cast<double>(one.length) - size.height) < kSamePoints) {
      return name;
    }
  }
  return customSize(*ppd, size);
}

Options optionsFor(Content content) {
  if (content == Content::kBarcodesAndText) return {{"HalftoneType", "None"}};
  if (content == Content::kPictures) return {{"Contrast", "0"}};
  return {};
}

}  // namespace korvel
