// The stencil image: channels by layout, pixels of its own, deep copies.
// Every copy is changed afterwards to see that the other side stays.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/filter/tattoo/grey_image.h"

namespace {

TEST(StencilImage, HasTheChannelsOfItsLayout) {
  struct Case {
    QM_IMG_COLOR color;
    int number, channels;
  };
  constexpr Case kCases[] = {
      {QM_IMG_GRAY, 0, 1},
      {QM_IMG_BGR, 1, 3},
      {QM_IMG_RGB, 2, 3},
      {QM_IMG_BGRA, 3, 4},
      {QM_IMG_RGBA, 4, 4},
      {static_cast<QM_IMG_COLOR>(5), 5, 4},
      {static_cast<QM_IMG_COLOR>(7), 7, 4},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.number);
    EXPECT_EQ(static_cast<int>(c.color), c.number);
    const QMImage image(3, 2, c.color);
    EXPECT_EQ(image.width, 3);
    EXPECT_EQ(image.height, 2);
    EXPECT_EQ(image.channels, c.channels);
    EXPECT_EQ(image.color, c.color);
    ASSERT_NE(image.data, nullptr);
  }
}

TEST(StencilImage, CopiesTheCallersPixels) {
  std::vector<uint8_t> pixels = hexBytes("01 02 03  04 05 06");
  const QMImage image(2, 1, QM_IMG_BGR, pixels.data());
  EXPECT_NE(image.data, pixels.data());
  pixels.assign(6, 0xEE);
  pixels.clear();
  pixels.shrink_to_fit();
  EXPECT_EQ(pixelBytes(image), "01 02 03 04 05 06");
}

TEST(StencilImage, IsCopiedDeeply) {
  QMImage source = greyImage(3, 1, "01 02 03");
  const QMImage copy(source);
  source.data[1] = 0xEE;
  EXPECT_EQ(pixelBytes(copy), "01 02 03");
  EXPECT_EQ(copy.width, 3);
  EXPECT_EQ(copy.height, 1);
  EXPECT_EQ(copy.channels, 1);
  EXPECT_EQ(copy.color, QM_IMG_GRAY);
}

TEST(StencilImage, CopiesTheChannelsAsTheyAre) {
  QMImage source = imageOf(2, 1, QM_IMG_BGR, "01 02 03 04 05 06");
  source.color = QM_IMG_RGBA;  // which by itself would mean four
  const QMImage copy(source);
  EXPECT_EQ(copy.channels, 3);
  EXPECT_EQ(copy.color, QM_IMG_RGBA);
  EXPECT_EQ(pixelBytes(copy), "01 02 03 04 05 06");
  QMImage target = solidGrey(1, 1, 9);
  target = source;
  EXPECT_EQ(target.channels, 3);
  EXPECT_EQ(target.color, QM_IMG_RGBA);
}

TEST(StencilImage, IsAssignedDeeply) {
  QMImage source = imageOf(2, 1, QM_IMG_RGB, "01 02 03 04 05 06");
  QMImage target = solidGrey(5, 5, 9);
  QMImage& result = (target = source);
  EXPECT_EQ(&result, &target);
  source.data[0] = 0xEE;
  EXPECT_EQ(target.width, 2);
  EXPECT_EQ(target.height, 1);
  EXPECT_EQ(target.channels, 3);
  EXPECT_EQ(target.color, QM_IMG_RGB);
  EXPECT_EQ(pixelBytes(target), "01 02 03 04 05 06");
}

}  // namespace
