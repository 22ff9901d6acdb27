// Which pictures are printed pixel for dot, and the sizes of the others on the page.
// SPDX-License-Identifier: Apache-2.0
#include "tools/preview/picture_scaling.h"

#include <gtest/gtest.h>

namespace korvel {

void PrintTo(const DotSize& size, std::ostream* out) { *out << size.width << "x" << size.height; }

namespace {

TEST(PictureOnPage, IsScaledUnlessItFillsThePage) {
  constexpr DotSize kPage = {812, 1218};
  const struct {
    const char* sentence;
    DotSize picture;
    const char* options;
    DotSize want;
  } kCases[] = {
      {"as large as the page", {812, 1218}, "", {812, 1218}},
      {"lying", {1218, 812}, "", {1218, 812}},
      {"as wide as the page, but larger when turned", {812, 300}, "", {1218, 450}},
      {"as wide as the page, and nearly as high", {812, 1200}, "", {812, 1200}},
      {"as high as the page", {800, 1218}, "", {800, 1218}},
      {"too small in both directions", {400, 600}, "", {812, 1218}},
      {"too large", {1624, 2436}, "", {812, 1218}},
      {"a dot too large", {813, 1218}, "", {812, 1216}},
      {"fit-to-page changes nothing", {812, 1218}, "fit-to-page", {812, 1218}},
      {"the whole page", {812, 1218}, "scaling=100", {812, 1218}},
      {"half the page", {812, 1218}, "scaling=50", {406, 609}},
      {"by the density in the file", {400, 600}, "natural-scaling=100", {400, 600}},
      {"not scaled to the page", {400, 600}, "print-scaling=none", {400, 600}},
      {"no picture", {0, 0}, "", {0, 0}},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(sizeOnPage(c.picture, kPage, parseOptions(c.options)), c.want) << c.sentence;
  }
}

TEST(PictureOnPage, IsTurnedWhenItFitsBetterLying) {
  constexpr DotSize kPage = {812, 1218};
  const struct {
    const char* sentence;
    DotSize picture;
    const char* options;
    bool want;
  } kCases[] = {
      {"as large as the page", {812, 1218}, "", false},
      {"lying", {1218, 812}, "", true},
      {"small and upright", {400, 600}, "", false},
      {"small and lying", {600, 400}, "", true},
      {"a square", {500, 500}, "", false},
      {"by the density in the file", {1218, 812}, "print-scaling=none", false},
      {"as the user wants it", {1218, 812}, "orientation-requested=3", false},
      {"lying as the user wants it", {1218, 812}, "landscape", false},
      {"no picture", {0, 0}, "", false},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(isTurnedOnPage(c.picture, kPage, parseOptions(c.options)), c.want) << c.sentence;
  }
}

}  // namespace
}  // namespace korvel
