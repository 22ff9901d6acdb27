// Shapes and letters, dot by dot.
// SPDX-License-Identifier: Apache-2.0
#include "drawing/dot_canvas.h"

#include <gtest/gtest.h>

#include <functional>

#include "drawing/dot_font.h"
#include "tests/support/character_picture.h"

namespace {

using korvel::DotCanvas;

std::string shown(const DotCanvas& canvas) {
  return markedPicture(canvas.dots().data(), static_cast<size_t>(canvas.width()),
                       static_cast<size_t>(canvas.height()), static_cast<size_t>(canvas.width()),
                       255);
}

TEST(DotCanvas, DrawsWhatFallsOnIt) {
  const struct {
    const char* sentence;
    std::function<void(DotCanvas*)> draw;
    PictureRows want;
  } kCases[] = {
      {"a field over the edges",
       [](DotCanvas* canvas) { canvas->fill(-2, 3, 5, 9); },
       {"........", "........", "........", "###.....", "###....."}},
      {"a frame",
       [](DotCanvas* canvas) { canvas->frame(1, 0, 6, 5, 1); },
       {".######.", ".#....#.", ".#....#.", ".#....#.", ".######."}},
      {"a stroke of one dot through the middles of dots",
       [](DotCanvas* canvas) {
         canvas->line({0.5, 0.5}, {4.5, 4.5}, 1);
       },
       {"#.......", ".#......", "..#.....", "...#....", "....#..."}},
      {"a stroke with round ends",
       [](DotCanvas* canvas) {
         canvas->line({2.5, 2.5}, {5.5, 2.5}, 3.2);
       },
       {"........", ".######.", ".######.", ".######.", "........"}},
      {"a ring",
       [](DotCanvas* canvas) {
         canvas->ring({3.5, 2.5}, 2, 1);
       },
       {"..###...", ".#...#..", ".#...#..", ".#...#..", "..###..."}},
      {"another canvas",
       [](DotCanvas* canvas) {
         DotCanvas black(3, 2);
         black.fill(0, 0, 3, 2);
         canvas->fill(0, 0, 8, 5);
         black.set(1, 0, 0);
         canvas->paste(black, 6, -1);
         canvas->paste(DotCanvas(2, 2), 0, 3);
       },
       {"########", "########", "########", "..######", "..######"}},
  };
  for (const auto& c : kCases) {
    DotCanvas canvas(8, 5);
    c.draw(&canvas);
    EXPECT_EQ(shown(canvas), pictureText(c.want)) << c.sentence;
  }
}

TEST(DotCanvas, WritesSmallLettersDotByDot) {
  DotCanvas canvas(12, 10);
  drawText(&canvas, {0, 0}, "Ag", {7});
  EXPECT_EQ(shown(canvas),
            pictureText({"..#.........", ".#.#........", "#...#..####.", "#...#.#...#.",
                         "#####.#...#.", "#...#.#...#.", "#...#..####.", "..........#.",
                         ".......###..", "............"}));
  EXPECT_EQ(korvel::textWidth("Ag", {7}), 11);
  EXPECT_EQ(korvel::textWidth("Ag", {14}), 22);
  EXPECT_EQ(korvel::textWidth("", {7}), 0);
}

// At four dots a row the strokes of an N are joined, its diagonal too.
TEST(DotCanvas, JoinsTheDotsOfLargeLetters) {
  DotCanvas canvas(20, 28);
  drawText(&canvas, {0, 0}, "N", {28});
  for (int y = 2; y < 26; ++y) {
    EXPECT_EQ(canvas.at(1, y), 255) << y;
    EXPECT_EQ(canvas.at(18, y), 255) << y;
  }
  for (int i = 6; i <= 14; ++i) EXPECT_EQ(canvas.at(i, i + 4), 255) << i;
  EXPECT_EQ(canvas.at(10, 2), 0);
}

TEST(DotCanvas, EveryLetterHasItsOwnShape) {
  std::string seen;
  for (char letter = korvel::kFirstGlyph; letter <= korvel::kLastGlyph; ++letter) {
    DotCanvas canvas(6, 9);
    drawText(&canvas, {0, 0}, std::string(1, letter), {7});
    const std::string shape = shown(canvas) + "\n";
    EXPECT_EQ(seen.find(shape), std::string::npos) << letter;
    EXPECT_EQ(shape.find('#') == std::string::npos, letter == ' ') << letter;
    seen += shape;
  }
  DotCanvas canvas(6, 9);
  drawText(&canvas, {0, 0}, "\xc3", {7});
  EXPECT_EQ(shown(canvas).find('#'), std::string::npos);
}

}  // namespace
