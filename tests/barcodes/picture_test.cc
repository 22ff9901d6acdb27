// A picture that has as many pixels as a label has dots is printed pixel for dot, without an
// option. SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cmath>

#include "tests/barcodes/picture_files.h"
#include "tests/barcodes/printed_page.h"
#include "tests/ppd/descriptions.h"

namespace {

struct LabelDots {
  std::string name;
  int width;
  int height;
};

// The pixels that a program draws for a label: by the measure in the size's own name,
// "1.25x2.25Rotated" or "100x150mm", to the nearest dot, but 8 dots per millimetre at 203 dpi.
LabelDots labelDots(const std::string& name, unsigned dpi) {
  size_t read = 0;
  double width = std::stod(name, &read);
  double length = std::stod(name.substr(read + 1));
  if (name.ends_with("Rotated")) std::swap(width, length);
  const bool metric = name.find("mm") != std::string::npos;
  const double perUnit = !metric ? dpi : dpi == 203 ? 8 : dpi / 25.4;
  return {name, static_cast<int>(std::floor(width * perUnit + 0.5)),
          static_cast<int>(std::floor(length * perUnit + 0.5))};
}

std::vector<LabelDots> labels(unsigned dpi) {
  std::vector<LabelDots> all;
  const OpenPpd ppd = openPpd(description("label-" + std::to_string(dpi)));
  if (ppd == nullptr) return all;
  for (int i = 0; i < ppd->num_sizes; ++i) {
    const std::string name = ppd->sizes[i].name;
    if (name != "Custom") all.push_back(labelDots(name, dpi));
  }
  return all;
}

// The first pixel that differs, or nothing.
std::string difference(const DotPage& page, const PixelPicture& picture, int down) {
  for (int y = 0; y + down < page.height() && y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) {
      if (page.dot(x, y + down) != picture.at(x, y)) {
        return "pixel " + std::to_string(x) + ", " + std::to_string(y);
      }
    }
  }
  return "";
}

struct Case {
  PictureFormat format;
  unsigned dpi;
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.format.name << " " << c.dpi; }

std::vector<Case> cases() {
  std::vector<Case> all;
  for (const PictureFormat& format : pictureFormats()) {
    for (const unsigned dpi : {203U, 300U}) all.push_back({format, dpi});
  }
  return all;
}

class PictureOfALabelsSize : public testing::TestWithParam<Case> {};

INSTANTIATE_TEST_SUITE_P(, PictureOfALabelsSize, testing::ValuesIn(cases()), [](const auto& each) {
  return std::string(each.param.format.name) + "At" + std::to_string(each.param.dpi) + "Dpi";
});

TEST_P(PictureOfALabelsSize, IsPrintedPixelForDot) {
  const auto& [format, dpi] = GetParam();
  const std::vector<LabelDots> all = labels(dpi);
  EXPECT_EQ(all.size(), 41U);
  for (const LabelDots& label : all) {
    const PixelPicture picture = pattern(label.width, label.height);
    const std::vector<DotPage> pages = printed({"label-" + std::to_string(dpi),
                                                format.encode(picture, dpi),
                                                format.type,
                                                {"PageSize=" + label.name}});
    ASSERT_EQ(pages.size(), 1U) << label.name;
    EXPECT_EQ(pages[0].height(), label.height) << label.name;
    EXPECT_EQ(pages[0].width, (label.width + 7) / 8 * 8) << label.name;
    EXPECT_EQ(difference(pages[0], picture, 0), "") << label.name;
  }
}

}  // namespace
