// A label as a shop prints it: a black head, bars, a picture with greys, and which edge came first.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <string>

#include "sheets/barcode.h"
#include "sheets/pictures.h"
#include "sheets/sheets.h"

namespace korvel {
namespace {

constexpr double kEdge = 1.5;

std::string upper(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return text;
}

// An arrow to the edge that leaves the printer first, in a corner of the head.
void drawArrow(SheetPage* page, Point top, double size) {
  const double thick = size * 0.18;
  page->line(top, {top.x, top.y + size}, thick, 0);
  page->line(top, {top.x - size * 0.35, top.y + size * 0.4}, thick, 0);
  page->line(top, {top.x + size * 0.35, top.y + size * 0.4}, thick, 0);
}

double drawHead(SheetPage* page, const Box& room) {
  const double high = std::clamp(room.height * 0.17, 5.0, 17.0);
  page->fill({room.left, room.top, room.width, high});
  const double arrow = high * 0.56;
  const double textRoom = room.width - arrow - high * 0.6;
  page->text({room.left + high * 0.22, room.top + high * 0.3}, "TEST LABEL",
             {high * 0.4, 1.5, 0, textRoom});
  drawArrow(page, {room.right() - high * 0.22 - arrow * 0.35, room.top + high * 0.22}, arrow);
  return high;
}

// Dots per module: about half a millimetre, or the most that fit; 0 when two do not.
int moduleOf(const SheetPage& page, const Barcode& barcode, int width) {
  const int module = std::min(width / barcode.extent(1, 0).width, std::max(2, page.dots(0.5)));
  return module < 2 ? 0 : module;
}

// Returns the height that it takes, 0 where there is no room.
double drawCentred(SheetPage* page, const Box& room, Symbology symbology, int width, double bars) {
  const Barcode barcode = encode(symbology, upper(page->size().text));
  const int module = moduleOf(*page, barcode, width);
  if (module == 0) return 0;
  const Extent extent = barcode.extent(module, page->dots(bars));
  const int left = page->dots(room.left) + (page->dots(room.width) - extent.width) / 2;
  page->barcode(left, page->dots(room.top), barcode, {module, page->dots(bars)});
  return extent.height / page->exactDots(1);
}

// A square code, for labels that are too narrow for a linear one.
double drawSquareCode(SheetPage* page, const Box& room) {
  const int side = page->dots(std::min(room.width, room.height));
  return drawCentred(page, room, Symbology::kDataMatrix, side, 0);
}

double drawLinearCode(SheetPage* page, const Box& room, double high) {
  const double taken = drawCentred(page, room, Symbology::kCode128, page->dots(room.width), high);
  if (taken == 0) return 0;
  const std::string text = upper(page->size().text);
  const double cap = std::clamp(high * 0.16, 1.6, 3.2);
  page->textCentred({room.left + room.width / 2, room.top + high + 1}, text, {cap, 1.3});
  return high + 1 + cap;
}

void drawPicture(SheetPage* page, const Box& room) {
  if (room.height < 10 || room.width < 14) return;
  const double wide = std::min(room.width, room.height * 2.2);
  const Box box = {room.left + (room.width - wide) / 2, room.top, wide, room.height};
  page->canvas()->paste(paintSample(page->dots(box.width), page->dots(box.height)),
                        page->dots(box.left), page->dots(box.top));
}

}  // namespace

SheetPage drawTestLabel(const SheetSize& size) {
  SheetPage page(size);
  const Box outer = {kEdge, kEdge, page.widthMm() - 2 * kEdge, page.heightMm() - 2 * kEdge};
  page.frame(outer, 0.4);
  Box room = {outer.left + 1.2, outer.top + 1.2, outer.width - 2.4, outer.height - 2.4};
  const auto take = [&room](double high) {
    room.top += high;
    room.height -= high;
  };
  take(drawHead(&page, room) + 2);
  const std::string dots = std::to_string(size.dpi) + " dpi, " + std::to_string(size.width) +
                           " x " + std::to_string(size.height) + " dots";
  const double cap = std::clamp(page.heightMm() * 0.035, 1.8, 3.4);
  if (room.height > cap + 1) {
    take(page.textCentred({room.left + room.width / 2, room.top}, dots,
                          {cap, 1.2, 255, room.width - 2}) +
         2);
  }
  const double bars = std::clamp(room.height * 0.32, 5.0, 24.0);
  double taken = room.height > bars + 3 ? drawLinearCode(&page, room, bars) : 0;
  if (taken == 0) taken = drawSquareCode(&page, room);
  if (taken > 0) take(taken + 2.5);
  drawPicture(&page, room);
  return page;
}

}  // namespace korvel
