// Orders from JSON and from a query, checked for kind and range. Whether the printer offers a
// choice is checked by its driver. SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <limits>

#include "studio/api.h"
#include "studio/parse_number.h"

namespace korvel {
namespace {

using nlohmann::json;

constexpr size_t kMostChoices = 64;
constexpr size_t kMostText = 127;  // of a name or a value
constexpr double kMostScale = 100;
constexpr double kLeastScale = 0.01;
constexpr double kMostShift = 5000;  // mm
constexpr double kMostTurn = 3600;   // degrees
constexpr unsigned kMostPages = 500;
constexpr int kMostCopies = 100;

bool isShort(const std::string& text) { return !text.empty() && text.size() <= kMostText; }

bool within(double value, double least, double most) {
  return std::isfinite(value) && value >= least && value <= most;
}

bool parseFit(const std::string& word, Fit* fit) {
  constexpr std::pair<const char*, Fit> kWords[] = {
      {"fit", Fit::kFit}, {"fill", Fit::kFill}, {"true", Fit::kTrueSize}, {"own", Fit::kOwn}};
  for (const auto& [name, value] : kWords) {
    if (word != name) continue;
    *fit = value;
    return true;
  }
  return false;
}

bool isInRange(const PrintOrder& order) {
  const Placement& placement = order.placement;
  if (order.choices.size() > kMostChoices || !isShort(order.queue) || !isShort(order.view)) {
    return false;
  }
  for (const auto& [name, value] : order.choices) {
    if (!isShort(name) || !isShort(value)) return false;
  }
  return within(placement.scale, kLeastScale, kMostScale) &&
         within(placement.right, -kMostShift, kMostShift) &&
         within(placement.down, -kMostShift, kMostShift) &&
         within(placement.turn, -kMostTurn, kMostTurn) && order.page >= 1 &&
         order.page <= kMostPages && order.copies >= 1 && order.copies <= kMostCopies;
}

Result<PrintOrder> checked(const PrintOrder& order) {
  if (!isInRange(order)) return Failure{kBadRequest.english};
  return order;
}

}  // namespace

Result<PrintOrder> orderFromJson(const std::string& text) {
  const json body = json::parse(text, nullptr, false);
  if (!body.is_object()) return Failure{kBadRequest.english};
  try {
    PrintOrder order;
    order.queue = body.at("queue").get<std::string>();
    order.view = body.value("view", order.view);
    order.page = body.value("page", order.page);
    order.copies = body.value("copies", order.copies);
    const json options = body.value("options", json::object());
    if (!options.is_object()) return Failure{kBadRequest.english};
    for (const auto& [name, value] : options.items()) {
      order.choices[name] = value.get<std::string>();
    }
    const json placement = body.value("placement", json::object());
    if (!parseFit(placement.value("fit", "fit"), &order.placement.fit)) {
      return Failure{kBadRequest.english};
    }
    order.placement.scale = placement.value("scale", 1.0);
    order.placement.right = placement.value("right", 0.0);
    order.placement.down = placement.value("down", 0.0);
    order.placement.turn = placement.value("turn", 0.0);
    return checked(order);
  } catch (const json::exception&) {
    return Failure{kBadRequest.english};
  }
}

Result<PrintOrder> orderFromQuery(const std::map<std::string, std::string>& query) {
  PrintOrder order;
  int page = 1;
  for (const auto& [name, value] : query) {
    bool good = true;
    if (name == "queue")
      order.queue = value;
    else if (name == "fit")
      good = parseFit(value, &order.placement.fit);
    else if (name == "scale")
      good = parseNumber(value, &order.placement.scale);
    else if (name == "right")
      good = parseNumber(value, &order.placement.right);
    else if (name == "down")
      good = parseNumber(value, &order.placement.down);
    else if (name == "turn")
      good = parseNumber(value, &order.placement.turn);
    else if (name == "page")
      good = parseCount(value, &page);
    else if (name == "copies")
      good = parseCount(value, &order.copies);
    else if (name != "title")
      order.choices[name] = value;
    if (!good) return Failure{kBadRequest.english};
  }
  order.page = static_cast<unsigned>(page);
  return checked(order);
}

}  // namespace korvel
