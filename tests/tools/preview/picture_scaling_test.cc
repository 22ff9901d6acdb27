// Which pictures are printed pixel for dot, and the sizes of the others.
// SPDX-License-Identifier: Apache-2.0
#include "tools/preview/picture_scaling.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"

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

TEST(PictureSize, IsReadFromTheFile) {
  const std::string png("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\x03\x2c\0\0\x04\xc2", 24);
  const std::string start("\xFF\xD8\xFF\xE0\0\x04JF\xFF\xC4\0\x03T", 13);
  const std::string frame("\xFF\xC0\0\x0b\x08\x04\xc2\x03\x2c\x01\x01\x11\0", 13);
  const struct {
    const char* sentence;
    std::string content;
    DotSize want;
  } kCases[] = {
      {"PNG", png, {812, 1218}},
      {"a PNG that ends early", png.substr(0, 20), {0, 0}},
      {"JPEG, its frame after other segments", start + frame, {812, 1218}},
      {"a JPEG without a frame", start, {0, 0}},
      {"text", "812 x 1218", {0, 0}},
  };
  const TemporaryFolder folder;
  for (const auto& c : kCases) {
    DotSize have = pictureSize(folder.write("picture", c.content));
    if (have.width == 0 || have.height == 0) have = {};
    EXPECT_EQ(have, c.want) << c.sentence;
  }
}

}  // namespace
}  // namespace korvel
