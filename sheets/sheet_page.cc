// Sizes from a description, and millimetres turned into dots.
// SPDX-License-Identifier: Apache-2.0
#include "sheets/sheet_page.h"

#include <cups/ppd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "tools/common/units.h"
#include "tools/description/option_check.h"

namespace korvel {
namespace {

constexpr double kLeastCap = 7;  // dots of a capital letter

const char* textOf(ppd_file_t* ppd, const char* size) {
  const ppd_choice_t* choice = ppdFindChoice(ppdFindOption(ppd, "PageSize"), size);
  return choice == nullptr ? size : choice->text;
}

}  // namespace

std::string readSheetSizes(const std::string& path, std::vector<SheetSize>* sizes) {
  ppd_file_t* ppd = ppdOpenFile(path.c_str());
  if (ppd == nullptr) return path + " is not a printer description (PPD)";
  const ppd_attr_t* resolution = ppdFindAttr(ppd, "DefaultResolution", nullptr);
  const auto dpi = static_cast<unsigned>(
      resolution == nullptr ? 0 : std::strtoul(resolution->value, nullptr, 10));
  for (int i = 0; i < ppd->num_sizes && dpi != 0; ++i) {
    const ppd_size_t& from = ppd->sizes[i];
    if (std::strcmp(from.name, kCustomChoice) == 0) continue;
    SheetSize size;
    size.name = from.name;
    size.text = textOf(ppd, from.name);
    size.dpi = dpi;
    size.widthPoints = static_cast<double>(from.width);
    size.lengthPoints = static_cast<double>(from.length);
    size.leftPoints = static_cast<double>(from.left);
    size.bottomPoints = static_cast<double>(from.bottom);
    const double width = static_cast<double>(from.right) - size.leftPoints;
    const double height = static_cast<double>(from.top) - size.bottomPoints;
    size.width = static_cast<int>(std::lround(width * dpi / kPointsPerInch));
    size.height = static_cast<int>(std::lround(height * dpi / kPointsPerInch));
    size.stencil = ppdFindOption(ppd, "AntiWrinkle") != nullptr;
    sizes->push_back(size);
  }
  ppdClose(ppd);
  return dpi == 0 ? path + " has no default resolution" : std::string();
}

int SheetPage::dots(double mm) const { return static_cast<int>(std::lround(mm * dotsPerMm_)); }

void SheetPage::fill(const Box& box, uint8_t ink) {
  const int left = dots(box.left);
  const int top = dots(box.top);
  canvas_.fill(left, top, dots(box.right()) - left, dots(box.bottom()) - top, ink);
}

void SheetPage::frame(const Box& box, double thickness, uint8_t ink) {
  const int left = dots(box.left);
  const int top = dots(box.top);
  canvas_.frame(left, top, dots(box.right()) - left, dots(box.bottom()) - top,
                std::max(1, dots(thickness)), ink);
}

void SheetPage::line(Point from, Point to, double thickness, uint8_t ink) {
  canvas_.line({exactDots(from.x), exactDots(from.y)}, {exactDots(to.x), exactDots(to.y)},
               std::max(1.0, exactDots(thickness)), ink);
}

TextStyle SheetPage::styleOf(const std::string& text, const Lettering& lettering) const {
  TextStyle style = {exactDots(lettering.cap), lettering.weight, lettering.ink};
  const double most = exactDots(lettering.most);
  // Small letters come in whole dots, so the width goes down in steps.
  while (textWidth(text, style) > most && style.capHeight > kLeastCap) style.capHeight *= 0.97;
  return style;
}

double SheetPage::text(Point at, const std::string& text, const Lettering& lettering) {
  const TextStyle style = styleOf(text, lettering);
  drawText(&canvas_, {exactDots(at.x), exactDots(at.y)}, text, style);
  return style.capHeight / dotsPerMm_;
}

double SheetPage::textCentred(Point at, const std::string& text, const Lettering& lettering) {
  const double half = widthOf(text, lettering) / 2;
  return this->text({at.x - half, at.y}, text, lettering);
}

double SheetPage::textRight(Point at, const std::string& text, const Lettering& lettering) {
  return this->text({at.x - widthOf(text, lettering), at.y}, text, lettering);
}

void SheetPage::barcode(int left, int top, const Barcode& barcode, const CodeSize& size) {
  const Extent extent = barcode.extent(size.module, size.barHeight);
  const int quiet = barcode.quietZone() * size.module;
  const bool linear = barcode.height == 1;
  drawBarcode(&canvas_, barcode, left + quiet, linear ? top : top + quiet, size.module,
              size.barHeight);
  codes_.push_back({barcode.symbology, barcode.text, left, top, extent.width, extent.height});
}

double SheetPage::widthOf(const std::string& text, const Lettering& lettering) const {
  return textWidth(text, styleOf(text, lettering)) / dotsPerMm_;
}

}  // namespace korvel
