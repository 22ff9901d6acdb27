// The anti-wrinkle frame: bands of dots around the printable canvas of a stencil sheet, so that
// the media is heated evenly at its edges.
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>

#include "printer/log.h"
#include "printer/pellam_printer.h"

namespace {

// Printable size of a sheet, in hundredths of a millimetre.
struct Sheet {
  const char* name;
  uint32_t width;
  uint32_t height;
};

constexpr Sheet kSheets[] = {
    {"A4", 20000, 27500},
    {"Letter", 21000, 25700},
    {"Tattoo_A5", 20000, 11800},
    {"Tattoo_A6", 10000, 11800},
};

// Lengths in dots; unsigned, and they wrap: level -1 makes side bands of a million dots.
struct Frame {
  uint32_t line_h = 0;  // thickness of the top and bottom bands
  uint32_t line_v = 0;  // thickness of the left and right bands
  uint32_t canvasWidth = 0;
  uint32_t canvasHeight = 0;
};

// `length` is in hundredths of a millimetre at `resolution` dots per inch, rounded to dots.
uint32_t dotsOf(uint32_t resolution, uint32_t length) {
  return (resolution * length / 254 + 5) / 10;
}

// The header's name may fill its field without a terminating NUL.
bool hasPageSizeName(const cups_page_header2_s& header, const char* name) {
  return std::strncmp(header.cupsPageSizeName, name, sizeof header.cupsPageSizeName) == 0;
}

void logCanvas(const Sheet& sheet, const Frame& frame) {
  pellamLogCommon(0, "EnableAntiWrink: Page size is %s, CanvasWidth: %d, CanvasHeight: %d",
                  sheet.name, static_cast<int>(frame.canvasWidth),
                  static_cast<int>(frame.canvasHeight));
}

Frame frameFor(const cups_page_header2_s& header, uint32_t resolution, uint32_t level) {
  Frame frame;
  frame.line_h = dotsOf(resolution, 100);
  frame.line_v = (level * 100 * resolution / 254 + 5) / 10;
  pellamLogCommon(
      0, "EnableAntiWrink: AntiWrinkle level: %d, line_v: %d points, line_h: %d points.",
      static_cast<int>(level), static_cast<int>(frame.line_v), static_cast<int>(frame.line_h));
  for (const Sheet& sheet : kSheets) {
    if (!hasPageSizeName(header, sheet.name)) continue;
    frame.canvasWidth = dotsOf(resolution, sheet.width) + 2 * frame.line_v;
    frame.canvasHeight = dotsOf(resolution, sheet.height) + 2 * frame.line_h;
    logCanvas(sheet, frame);
    break;
  }
  return frame;
}

int halfOfMissing(int length, uint32_t canvas) {
  const auto wanted = static_cast<int>(canvas);
  return length < wanted ? (wanted - length) / 2 : 0;
}

// Widens the image to the canvas where it is smaller. Returns false when it cannot.
bool widenToCanvas(CxImage& image, const Frame& frame) {
  const int exPoints = halfOfMissing(static_cast<int>(image.GetWidth()), frame.canvasWidth);
  const int eyPoints = halfOfMissing(static_cast<int>(image.GetHeight()), frame.canvasHeight);
  if (static_cast<int>(image.GetWidth()) < static_cast<int>(frame.canvasWidth)) {
    pellamLogCommon(0, "EnableAntiWrink: Image width is less than canvas width, exPoints: %d",
                    exPoints);
  }
  if (static_cast<int>(image.GetHeight()) < static_cast<int>(frame.canvasHeight)) {
    pellamLogCommon(0, "EnableAntiWrink: Image height is less than canvas height, eyPoints: %d",
                    eyPoints);
  }
  if (exPoints == 0 && eyPoints == 0) return true;
  constexpr tagRGBQUAD kWhite{255, 255, 255, 0};
  if (!image.Expand(exPoints, eyPoints, exPoints, eyPoints, kWhite)) {
    pellamLogCommon(0, "EnableAntiWrink: Failed to expand image, returning.");
    return false;
  }
  pellamLogCommon(0, "EnableAntiWrink: Image expanded successfully.");
  return true;
}

int wrappingSum(int a, uint32_t b) { return static_cast<int>(static_cast<uint32_t>(a) + b); }

// Where the canvas begins on a larger image; the difference wraps like the lengths.
int originOf(int length, uint32_t canvas) {
  return length > static_cast<int>(canvas) ? wrappingSum(length, 0 - canvas) / 2 : 0;
}

// A half-open rectangle of dots.
struct Band {
  int x0;
  int y0;
  int x1;
  int y1;
};

// Sets the dots from column `left` up to `right` of one row, both inside the image. Whole runs of
// bytes where a dot is one: a band may hold hundreds of millions of them.
void fillRow(CxImage& image, int row, int left, int right) {
  constexpr uint8_t kFrameIndex = 255;
  if (image.GetNumColors() == 256) {
    uint8_t* dots = image.GetBits(static_cast<uint32_t>(row));
    std::memset(dots + left, kFrameIndex, static_cast<size_t>(right - left));
    return;
  }
  for (int column = left; column < right; ++column) image.SetPixelIndex(column, row, kFrameIndex);
}

// Sets the band's dots and moves the counters to where loops over the whole band leave them: the
// band may be far larger than the image. `x` stays where it was when the band has no rows.
void drawBand(CxImage& image, const Band& band, int& x, int& y) {
  const int left = std::max(band.x0, 0);
  const int right = std::min(band.x1, static_cast<int>(image.GetWidth()));
  const int bottom = std::min(band.y1, static_cast<int>(image.GetHeight()));
  for (int row = std::max(band.y0, 0); left < right && row < bottom; ++row) {
    fillRow(image, row, left, right);
  }
  if (band.y0 < band.y1) x = std::max(band.x0, band.x1);
  y = std::max(band.y0, band.y1);
}

void drawFrame(CxImage& image, const Frame& frame, int ox, int oy) {
  const int left = wrappingSum(ox, frame.line_v);
  const int top = wrappingSum(oy, frame.line_h);
  const int xEnd = wrappingSum(ox, frame.canvasWidth);
  const int yEnd = wrappingSum(oy, frame.canvasHeight);
  const int right = wrappingSum(xEnd, 0 - frame.line_v);
  const int bottom = wrappingSum(yEnd, 0 - frame.line_h);
  int x = 0;  // one column counter for all four bands
  int y = 0;

  drawBand(image, {ox, oy, left, yEnd}, x, y);
  pellamLogCommon(0, "EnableAntiWrink: Drawing left line. point(%d, %d, %d, %d)", ox, oy, x, y);
  drawBand(image, {ox, oy, xEnd, top}, x, y);
  pellamLogCommon(0, "EnableAntiWrink: Drawing top line. point(%d, %d, %d, %d)", ox, oy, x, y);
  drawBand(image, {right, oy, xEnd, yEnd}, x, y);
  pellamLogCommon(0, "EnableAntiWrink: Drawing right line. point(%d, %d, %d, %d)", right, oy, x, y);
  drawBand(image, {ox, bottom, xEnd, yEnd}, x, y);
  pellamLogCommon(0, "EnableAntiWrink: Drawing bottom line. point(%d, %d, %d, %d)", ox, bottom, x,
                  y);
}

}  // namespace

void PellamPrinter::EnableAntiWrink(CxImage& image) {
  if (!image.IsValid() || pageHdr_ == nullptr) {
    pellamLogCommon(0, "EnableAntiWrink: Image or pageHdr_ is not valid, returning.");
    return;
  }
  const Frame frame =
      frameFor(*pageHdr_, static_cast<uint32_t>(resolution_), static_cast<uint32_t>(antiWrinkle_));
  if (!widenToCanvas(image, frame)) return;

  const int ox = originOf(static_cast<int>(image.GetWidth()), frame.canvasWidth);
  const int oy = originOf(static_cast<int>(image.GetHeight()), frame.canvasHeight);
  if (static_cast<int>(image.GetWidth()) > static_cast<int>(frame.canvasWidth)) {
    pellamLogCommon(0, "EnableAntiWrink: Image width is greater than canvas width, offset.x: %d",
                    ox);
  }
  if (static_cast<int>(image.GetHeight()) > static_cast<int>(frame.canvasHeight)) {
    pellamLogCommon(0, "EnableAntiWrink: Image height is greater than canvas height, offset.y: %d",
                    oy);
  }
  drawFrame(image, frame, ox, oy);
}
