// A sheet that helps: a page of one size of a printer description, drawn in millimetres.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_SHEETS_SHEET_PAGE_H_
#define KORVEL_SHEETS_SHEET_PAGE_H_

#include <cstddef>
#include <string>
#include <vector>

#include "drawing/dot_canvas.h"
#include "sheets/barcode.h"
#include "tools/common/units.h"

namespace korvel {

struct SheetSize {
  std::string name;  // "4x6"
  std::string text;  // "4 x 6 in"
  unsigned dpi = 0;
  int width = 0;   // dots that the rasteriser makes of it
  int height = 0;  // dot lines
  double widthPoints = 0;
  double lengthPoints = 0;
  double leftPoints = 0;  // margins of the printable area
  double bottomPoints = 0;
  bool stencil = false;
};

// All sizes that the description offers, custom ones left out. Returns an empty text, or one
// sentence.
std::string readSheetSizes(const std::string& ppd, std::vector<SheetSize>* sizes);

// Millimetres, from the page's upper left corner.
struct Box {
  double left;
  double top;
  double width;
  double height;
  double right() const { return left + width; }
  double bottom() const { return top + height; }
};

// A barcode on a sheet: the rectangle in dots, its quiet zone included.
struct SheetCode {
  Symbology symbology;
  std::string text;
  int left;
  int top;
  int width;
  int height;
};

class SheetPage {
 public:
  explicit SheetPage(const SheetSize& size)
      : size_(size), dotsPerMm_(size.dpi / kMmPerInch), canvas_(size.width, size.height) {}

  const SheetSize& size() const { return size_; }
  DotCanvas* canvas() { return &canvas_; }
  const DotCanvas& canvas() const { return canvas_; }
  double widthMm() const { return size_.width / dotsPerMm_; }
  double heightMm() const { return size_.height / dotsPerMm_; }
  int dots(double mm) const;  // to the nearest
  double exactDots(double mm) const { return mm * dotsPerMm_; }

  void fill(const Box& box, uint8_t ink = 255);
  void frame(const Box& box, double thickness, uint8_t ink = 255);
  void line(Point fromMm, Point toMm, double thickness, uint8_t ink = 255);

  // Capitals of `cap` millimetres, less where the text would be wider than `most`; returns the
  // height taken. `weight` 1 is regular.
  struct Lettering {
    double cap;
    double weight = 1.2;
    uint8_t ink = 255;
    double most = 1e6;
  };
  double text(Point topLeftMm, const std::string& text, const Lettering& lettering);
  double textCentred(Point topMiddleMm, const std::string& text, const Lettering& lettering);
  double textRight(Point topRightMm, const std::string& text, const Lettering& lettering);
  double widthOf(const std::string& text, const Lettering& lettering) const;

  // Draws a barcode of `module` dots per module. The quiet zone's upper left corner is at dots
  // `left`, `top`; `barHeight`, in dots, is the height of a linear code and unused for others.
  struct CodeSize {
    int module;
    int barHeight = 0;
  };
  void barcode(int left, int top, const Barcode& barcode, const CodeSize& size);
  const std::vector<SheetCode>& codes() const { return codes_; }

 private:
  TextStyle styleOf(const std::string& text, const Lettering& lettering) const;

  SheetSize size_;
  double dotsPerMm_;
  DotCanvas canvas_;
  std::vector<SheetCode> codes_;
};

}  // namespace korvel

#endif
