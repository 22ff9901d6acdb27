// The elements of a printed row are its runs of equal dots. When there are as many as the symbol
// has, each is compared with its own; otherwise elements have run together or vanished.
// SPDX-License-Identifier: Apache-2.0
#include "tests/barcodes/bar_growth.h"

#include <algorithm>
#include <cmath>

namespace {

struct Element {
  bool dark;
  double width;
};

std::vector<Element> drawn(const std::string& modules, double module) {
  std::vector<Element> elements;
  for (const char kind : modules) {
    const bool dark = kind == '1';
    if (elements.empty() || elements.back().dark != dark) elements.push_back({dark, 0});
    elements.back().width += module;
  }
  return elements;
}

std::vector<Element> printedAt(const DotPage& page, const PlacedSymbol& placed, int y) {
  const int from = static_cast<int>(placed.left - placed.quiet() / 2);
  const int to = static_cast<int>(placed.left + placed.width() + placed.quiet() / 2);
  std::vector<Element> elements;
  for (int x = from; x < to; ++x) {
    const bool dark = page.dot(x, y);
    if (elements.empty() || elements.back().dark != dark) elements.push_back({dark, 0});
    elements.back().width += 1;
  }
  return elements;
}

// The quiet zone, and light modules that merge with it.
void trim(std::vector<Element>* elements) {
  if (!elements->empty() && !elements->back().dark) elements->pop_back();
  if (!elements->empty() && !elements->front().dark) elements->erase(elements->begin());
}

void compare(std::vector<Element> have, std::vector<Element> want, Growth* growth) {
  trim(&have);
  trim(&want);
  if (have.size() != want.size()) {
    ++growth->merged;
    return;
  }
  for (size_t i = 0; i < want.size(); ++i) {
    const double difference = have[i].width - want[i].width;
    growth->worst = std::max(growth->worst, std::abs(difference));
    if (want[i].dark) growth->add(difference);
  }
}

}  // namespace

void Growth::add(double darkGrowth) {
  least = elements == 0 ? darkGrowth : std::min(least, darkGrowth);
  most = elements == 0 ? darkGrowth : std::max(most, darkGrowth);
  sum += darkGrowth;
  ++elements;
}

void measure(const DotPage& page, const PlacedSymbol& placed, Growth* growth) {
  const std::vector<std::string>& rows = placed.symbol->rows;
  const double rowHeight = placed.height() / static_cast<double>(rows.size());
  for (size_t i = 0; i < rows.size(); ++i) {
    const double middle = placed.top + (static_cast<double>(i) + 0.5) * rowHeight;
    compare(printedAt(page, placed, static_cast<int>(middle)), drawn(rows[i], placed.module),
            growth);
  }
}
