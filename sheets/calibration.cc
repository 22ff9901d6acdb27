// Blocks are stacked from the top while there is room; the square takes what is left.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <string>

#include "sheets/sheets.h"

namespace korvel {
namespace {

constexpr double kRuler = 9;   // of the rulers' band, numbers included
constexpr double kMargin = 3;  // at the edges without ruler
constexpr double kGap = 2.5;   // between blocks
constexpr double kThin = 0.25;
constexpr double kLinesHeight = 18;  // of the block of lines

double tickLength(int mm) {
  if (mm % 10 == 0) return 4;
  return mm % 5 == 0 ? 2.8 : 1.6;
}

// Millimetres from the very edge, which the frame shows.
void drawRulers(SheetPage* page) {
  const SheetPage::Lettering numbers = {1.8, 1.2};
  const double wide = page->widthMm();
  const double high = page->heightMm();
  const int thin = std::max(1, page->dots(0.13));
  for (int mm = 1; mm < wide; ++mm) {
    page->canvas()->fill(page->dots(mm) - thin / 2, 0, thin, page->dots(tickLength(mm)));
    if (mm % 10 == 0 && mm + 4 < wide) {
      page->textCentred({static_cast<double>(mm), 4.7}, std::to_string(mm), numbers);
    }
  }
  for (int mm = 1; mm < high; ++mm) {
    page->canvas()->fill(0, page->dots(mm) - thin / 2, page->dots(tickLength(mm)), thin);
    if (mm % 10 == 0 && mm + 3 < high) {
      page->text({4.7, mm - 0.9}, std::to_string(mm), numbers);
    }
  }
}

constexpr double kCorners = 11.5;  // from the lower right edges to their far ends

// Corners one inside the other, a millimetre apart: those that are missing have been cut off.
void drawCorners(SheetPage* page) {
  page->frame({0, 0, page->widthMm(), page->heightMm()}, kThin);
  if (std::min(page->widthMm(), page->heightMm()) < 35) return;
  for (int mm = 1; mm <= 4; ++mm) {
    const double right = page->widthMm() - mm;
    const double bottom = page->heightMm() - mm;
    page->fill({right - 7, bottom - kThin, 7, kThin});
    page->fill({right - kThin, bottom - 7, kThin, 7});
  }
}

// Whether something that ends at `right` and `bottom` would touch them.
bool reachesCorners(const SheetPage& page, double right, double bottom) {
  return right > page.widthMm() - kCorners && bottom > page.heightMm() - kCorners;
}

double drawTitle(SheetPage* page, const Box& room) {
  const SheetSize& size = page->size();
  double top = room.top;
  top += page->text({room.left, top}, "Calibration", {4, 1.5, 255, room.width}) + 1.6;
  const std::string note = size.text + ", " + std::to_string(size.dpi) + " dpi";
  top += page->text({room.left, top}, note, {2.2, 1.2, 255, room.width}) + 1.2;
  const std::string dots =
      std::to_string(size.width) + " x " + std::to_string(size.height) + " dots";
  top += page->text({room.left, top}, dots, {2.2, 1.2, 255, room.width});
  return top - room.top;
}

// Lines of one dot and more, as wide as the gaps between them, both ways.
double drawLines(SheetPage* page, const Box& room) {
  constexpr int kWidths[] = {1, 2, 3, 4, 6, 8};
  constexpr double kField = 7;
  double left = room.left;
  for (const int wide : kWidths) {
    if (left + kField > room.right()) break;
    const int x = page->dots(left);
    const int y = page->dots(room.top + 3);
    const int below = page->dots(room.top + 3 + kField + 1);
    const int side =
        (page->dots(kField) + wide) / (2 * wide) * (2 * wide) - wide;  // ends on a line
    for (int at = 0; at < side; at += 2 * wide) {
      page->canvas()->fill(x + at, y, wide, side);
      page->canvas()->fill(x, below + at, side, wide);
    }
    page->text({left, room.top}, std::to_string(wide), {1.8, 1.2, 255, kField});
    left += kField + 2;
  }
  return 3 + 2 * kField + 1;
}

struct CodeSample {
  Symbology symbology;
  int module;  // dots
  const char* name;
};

// The narrow codes first, so that a small sheet has at least one of them.
constexpr CodeSample kCodeSamples[] = {
    {Symbology::kDataMatrix, 2, "DM"},    {Symbology::kDataMatrix, 3, "DM"},
    {Symbology::kDataMatrix, 4, "DM"},    {Symbology::kQrCode, 2, "QR"},
    {Symbology::kQrCode, 3, "QR"},        {Symbology::kQrCode, 4, "QR"},
    {Symbology::kCode128, 2, "Code 128"}, {Symbology::kCode128, 3, "Code 128"},
    {Symbology::kCode128, 4, "Code 128"},
};

constexpr double kBars = 8;        // the height of a linear code
constexpr double kCodeHead = 2.7;  // above each code
constexpr SheetPage::Lettering kCodeName = {1.7, 1.2};

std::string nameOf(const CodeSample& sample) {
  return std::string(sample.name) + " " + std::to_string(sample.module);
}

// With the name above it.
Box boxOf(const SheetPage& page, const CodeSample& sample, const Barcode& barcode) {
  const Extent extent = barcode.extent(sample.module, page.dots(kBars));
  const double wide = extent.width / page.exactDots(1);
  return {0, 0, std::max(wide, page.widthOf(nameOf(sample), kCodeName)),
          kCodeHead + extent.height / page.exactDots(1)};
}

void drawCode(SheetPage* page, const CodeSample& sample, const Barcode& barcode, Point at) {
  page->text(at, nameOf(sample), kCodeName);
  page->barcode(page->dots(at.x), page->dots(at.y + kCodeHead), barcode,
                {sample.module, page->dots(kBars)});
}

// Codes of 2, 3 and 4 dots per module, which is the number after each name: those that scan show
// how small a code may be. From left to right and from top to bottom, as many as leave room for
// the lines below them.
double drawCodes(SheetPage* page, const Box& whole) {
  Box room = whole;
  if (room.height > kLinesHeight + 12) room.height -= kLinesHeight + kGap;
  Point at = {room.left, room.top};
  double bottom = room.top;
  for (const CodeSample& sample : kCodeSamples) {
    const Barcode barcode = encode(sample.symbology, calibrationCode(sample.module));
    const Box box = boxOf(*page, sample, barcode);
    if (at.x > room.left && at.x + box.width > room.right()) at = {room.left, bottom + 1.5};
    if (box.width > room.width || at.y + box.height > room.bottom()) continue;
    if (reachesCorners(*page, at.x + box.width, at.y + box.height)) continue;
    drawCode(page, sample, barcode, at);
    at.x += box.width + 2;
    bottom = std::max(bottom, at.y + box.height);
  }
  return bottom - room.top;
}

// The largest DataMatrix of the series that fits, without a name.
void drawOneCode(SheetPage* page, const Box& room) {
  for (const int module : {4, 3, 2}) {
    const Barcode barcode = encode(Symbology::kDataMatrix, calibrationCode(module));
    const Extent extent = barcode.extent(module, 0);
    if (extent.width > page->dots(room.width) || extent.height > page->dots(room.height)) continue;
    page->barcode(page->dots(room.left), page->dots(room.top), barcode, {module});
    return;
  }
}

// Greys of 0 to 100 percent, in dots that grow: 4 x 4 fields filled in a fixed order.
double drawGreys(SheetPage* page, const Box& room) {
  constexpr int kOrder[4][4] = {{6, 8, 4, 14}, {10, 0, 2, 12}, {5, 15, 7, 9}, {3, 13, 11, 1}};
  constexpr int kSteps = 9;  // of two sixteenths each, the first is paper
  const double wide = std::min(room.width / kSteps, 11.0);
  const int side = page->dots(wide) / 4 * 4;
  const int high = page->dots(9) / 4 * 4;
  const int top = page->dots(room.top + 2.6);
  for (int step = 0; step < kSteps; ++step) {
    const int left = page->dots(room.left) + step * side;
    for (int y = 0; y < high; ++y) {
      for (int x = 0; x < side; ++x) {
        if (kOrder[y % 4][x % 4] < step * 2) page->canvas()->set(left + x, top + y);
      }
    }
    const int percent = (step * 200 + 8) / 16;
    page->text({room.left + step * side / page->exactDots(1), room.top}, std::to_string(percent),
               {1.6, 1.2, 255, wide - 0.8});
  }
  page->canvas()->frame(page->dots(room.left), top, kSteps * side, high, page->dots(0.13));
  return 2.6 + 9;
}

// Letters cut out of black fill up when the head is too hot.
double drawCutOut(SheetPage* page, const Box& room) {
  const double wide = std::min(room.width, 75.0);
  page->fill({room.left, room.top, wide, 7});
  double left = room.left + 2;
  for (const double cap : {1.4, 1.8, 2.4, 3.2}) {
    const std::string text = "Kg 8";
    const double next = left + page->widthOf(text, {cap, 1.0}) + 3;
    if (next - 2 > room.left + wide) break;
    page->text({left, room.top + 3.4 - cap / 2}, text, {cap, 1.0, 0});
    left = next;
  }
  return 7;
}

double drawAdvice(SheetPage* page, const Box& room) {
  double top = room.top;
  for (const char* line : {"Good: one-dot lines are whole, with paper between.",
                           "Codes: use the smallest number that your scanner reads.",
                           "Broken lines, pale black: choose Darkness=Dark.",
                           "Gaps and small letters filled up: choose Darkness=Light."}) {
    top += page->text({room.left, top}, line, {1.9, 1.1, 255, room.width}) + 1.5;
  }
  return top - 1.5 - room.top;
}

// A square of whole centimetres with circles inside: is a length a length, and round round?
void drawSquare(SheetPage* page, const Box& room) {
  const double most = std::min(room.width, room.height - 3.5);
  const double side = most >= 20 ? std::floor(most / 10) * 10 : std::floor(most / 5) * 5;
  if (side < 10) return;
  const Box square = {room.left + (room.width - side) / 2, room.top, side, side};
  page->frame(square, kThin);
  const Point middle = {square.left + side / 2, square.top + side / 2};
  page->line({square.left, square.top}, {square.right(), square.bottom()}, 0.13);
  page->line({square.right(), square.top}, {square.left, square.bottom()}, 0.13);
  page->line({middle.x, square.top}, {middle.x, square.bottom()}, 0.13);
  page->line({square.left, middle.y}, {square.right(), middle.y}, 0.13);
  for (int radius = 5; radius <= side / 2; radius += 5) {
    page->canvas()->ring({page->exactDots(middle.x), page->exactDots(middle.y)},
                         page->exactDots(radius), page->exactDots(kThin));
  }
  const std::string length = std::to_string(static_cast<int>(side));
  page->textCentred({middle.x, square.bottom() + 1.2},
                    side >= 30 ? "each side " + length + " mm" : length + " mm", {1.9});
}

// Too small for more than a code.
bool isTiny(const Box& room) { return std::min(room.width, room.height) < 25; }

struct Block {
  double (*draw)(SheetPage*, const Box&);
  double least;  // millimetres of height that it needs
};

constexpr Block kBlocks[] = {{drawTitle, 10},   {drawCodes, 9},  {drawLines, kLinesHeight},
                             {drawGreys, 11.6}, {drawCutOut, 7}, {drawAdvice, 12.6}};

// Returns what is left of the room.
Box drawBlocks(SheetPage* page, Box room) {
  for (const Block& block : kBlocks) {
    if (block.least > room.height) break;
    const double taken = block.draw(page, room) + kGap;
    room.top += taken;
    room.height -= taken;
  }
  return room;
}

}  // namespace

std::string calibrationCode(int module) { return "KORVEL " + std::to_string(module); }

SheetPage drawCalibration(const SheetSize& size) {
  SheetPage page(size);
  drawRulers(&page);
  drawCorners(&page);
  Box room = {kRuler + 1, kRuler + 1, page.widthMm() - kRuler - 1 - kMargin,
              page.heightMm() - kRuler - 1 - kMargin};
  if (isTiny(room)) {
    drawOneCode(&page, room);
    return page;
  }
  // On a wide sheet the square is beside the blocks.
  const bool wide = room.width > 85 && room.width > room.height;
  Box blocks = room;
  if (wide) blocks.width = std::max(60.0, room.width - room.height - 4);
  blocks = drawBlocks(&page, blocks);
  if (wide) {
    const double left = blocks.left + blocks.width + 4;
    drawSquare(&page, {left, room.top, room.right() - left - 5, room.height - 5});
  } else {
    drawSquare(&page, {blocks.left, blocks.top + 1, blocks.width, blocks.height - 1});
  }
  return page;
}

}  // namespace korvel
