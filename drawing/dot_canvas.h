// A grey page to draw on, one byte per dot: 0 is paper, 255 black, as in the raster of a page.
// Lengths are dots; y grows downwards. What is outside of the canvas is not drawn.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_DRAWING_DOT_CANVAS_H
#define KORVEL_DRAWING_DOT_CANVAS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace korvel {

struct Point {
  double x;
  double y;
};

class DotCanvas {
 public:
  DotCanvas(int width, int height)
      : width_(width),
        height_(height),
        dots_(static_cast<size_t>(width) * static_cast<size_t>(height)) {}

  int width() const { return width_; }
  int height() const { return height_; }
  uint8_t at(int x, int y) const { return dots_[index(x, y)]; }  // inside the canvas only
  const std::vector<uint8_t>& dots() const { return dots_; }     // rows without gaps

  void set(int x, int y, uint8_t ink = 255);
  void fill(int left, int top, int width, int height, uint8_t ink = 255);
  void frame(int left, int top, int width, int height, int thickness, uint8_t ink = 255);
  void paste(const DotCanvas& picture, int left, int top);

  // A stroke with round ends.
  void line(Point from, Point to, double thickness, uint8_t ink = 255);
  void ring(Point centre, double radius, double thickness, uint8_t ink = 255);

 private:
  size_t index(int x, int y) const {
    return static_cast<size_t>(y) * static_cast<size_t>(width_) + static_cast<size_t>(x);
  }

  int width_;
  int height_;
  std::vector<uint8_t> dots_;
};

// Letters are as high as `capHeight`, the descenders a quarter more.
struct TextStyle {
  double capHeight;
  double weight = 1;  // of the strokes; 1 is regular, 1.5 bold
  uint8_t ink = 255;
};

double textWidth(const std::string& text, const TextStyle& style);
void drawText(DotCanvas* canvas, Point topLeft, const std::string& text, const TextStyle& style);
// Text centred at `centre.x`, and text that ends at `topRight.x`.
void drawTextCentred(DotCanvas* canvas, Point centre, const std::string& text,
                     const TextStyle& style);
void drawTextRight(DotCanvas* canvas, Point topRight, const std::string& text,
                   const TextStyle& style);

}  // namespace korvel

#endif
