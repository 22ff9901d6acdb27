// Models are known by the names of their drivers: "Korvel K220 203 dpi one-way, 1.0".
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/device_choice.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>

#include "tools/description/driver_names.h"

namespace korvel {

namespace {

constexpr char kOneWay[] = "-oneway";
constexpr char kOurs[] = "korvel";

// Runs of letters and digits, in lower case.
std::set<std::string> wordsOf(const std::string& text) {
  std::set<std::string> words;
  std::string word;
  for (const char c : text + " ") {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) != 0) {
      word += static_cast<char>(std::tolower(byte));
    } else if (!word.empty()) {
      words.insert(word);
      word.clear();
    }
  }
  return words;
}

struct Model {
  std::string name;        // "k220"
  std::string resolution;  // "203"
};

Model modelOf(const Description& description) {
  std::istringstream in(description.makeAndModel);
  std::string make;
  Model model;
  in >> make >> model.name >> model.resolution;
  for (char& c : model.name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return model;
}

// "Label" and "Stencil" are models for any printer of their kind, and common words too.
bool isGeneric(const std::string& model) {
  return model.find_first_of("0123456789") == std::string::npos;
}

// The models that the device may be; none when it names no known one.
std::set<std::string> modelsNamed(const std::set<std::string>& words,
                                  const std::vector<Description>& all) {
  std::set<std::string> named, generic;
  for (const Description& one : all) {
    const std::string name = modelOf(one).name;
    if (words.contains(name)) (isGeneric(name) ? generic : named).insert(name);
  }
  return named.empty() ? generic : named;
}

bool startsWithAny(const std::string& text, std::initializer_list<const char*> beginnings) {
  return std::any_of(beginnings.begin(), beginnings.end(),
                     [&text](const char* beginning) { return text.starts_with(beginning); });
}

}  // namespace

Link linkOf(const std::string& uri) {
  const bool discovered = uri.starts_with("dnssd:");
  if (startsWithAny(uri, {"usb:", "socket:", "korvel:", "serial:", "parallel:"}))
    return Link::kTwoWay;
  if (discovered && uri.find("_pdl-datastream._tcp") != std::string::npos) return Link::kTwoWay;
  if (discovered ||
      startsWithAny(uri, {"lpd:", "ipp:", "ipps:", "http:", "https:", "smb:", "file:"})) {
    return Link::kOneWay;
  }
  return Link::kUnknown;
}

bool isOneWay(const std::string& bareName) { return bareName.ends_with(kOneWay); }

std::string oneWayTwin(const std::string& bareName) {
  return isOneWay(bareName) ? bareName : bareName + kOneWay;
}

std::vector<Description> fitting(const Device& device, const std::vector<Description>& all) {
  const std::set<std::string> words =
      wordsOf(device.id + " " + device.makeAndModel + " " + device.info + " " + device.uri);
  if (!words.contains(kOurs)) return {};
  std::set<std::string> names;
  for (const Description& one : all) names.insert(one.bareName());
  const std::set<std::string> models = modelsNamed(words, all);
  const bool oneWay = linkOf(device.uri) == Link::kOneWay;
  std::vector<Description> fit;
  for (const Description& one : all) {
    if (!models.empty() && !models.contains(modelOf(one).name)) continue;
    const bool hasTwin = names.contains(oneWayTwin(one.bareName()));
    if (hasTwin && isOneWay(one.bareName()) != oneWay) continue;
    fit.push_back(one);
  }
  std::stable_partition(fit.begin(), fit.end(), [&words](const Description& one) {
    return words.contains(modelOf(one).resolution) ||
           words.contains(modelOf(one).resolution + "dpi");
  });
  return fit;
}

const Description* meant(const std::string& name, const std::vector<Description>& all) {
  for (const Description& one : all) {
    const std::string bare = one.bareName();
    if (name == one.name || meansDriver(name, bare)) return &one;
  }
  return nullptr;
}

std::string proposedQueueName(const std::string& bareName) {
  const size_t from = bareName.find('-');
  if (from == std::string::npos) return bareName;
  return bareName.substr(from + 1, bareName.find('-', from + 1) - from - 1);
}

}  // namespace korvel
