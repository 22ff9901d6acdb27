// What the palette image's operations refuse, and what is left then, in the filter and in the
// reference implementation.
// The answers are written down; without memory most keep the picture, turn and mirror lose it.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "image/cximage_reference.h"
#include "tests/filter/image/owned_image.h"
#include "tests/support/scarce_memory.h"

namespace {

// Both forms of an operation; one that returns nothing counts as done.
struct Operation {
  bool (*fast)(CxImage& image);
  bool (*reference)(CxImage& image);
};

template <DitherMethod kMethod>
constexpr Operation kDither = {[](CxImage& image) { return image.Dither(kMethod); },
                               [](CxImage& image) { return reference::Dither(image, kMethod); }};

template <uint32_t kDepth>
constexpr Operation kIncrease = {
    [](CxImage& image) { return image.IncreaseBpp(kDepth); },
    [](CxImage& image) { return reference::IncreaseBpp(image, kDepth); }};

constexpr Operation kLookUpInNothing = {
    [](CxImage& image) { return image.Lut(nullptr); },
    [](CxImage& image) { return reference::Lut(image, nullptr); }};

constexpr uint8_t kTable[256] = {};

constexpr Operation kLookUp = {[](CxImage& image) { return image.Lut(kTable); },
                               [](CxImage& image) { return reference::Lut(image, kTable); }};

constexpr Operation kNegative = {[](CxImage& image) { return image.Negative(), true; },
                                 [](CxImage& image) { return reference::Negative(image), true; }};

constexpr Operation kTurn = {[](CxImage& image) { return image.Rotate180(); },
                             [](CxImage& image) { return reference::Rotate180(image); }};

constexpr Operation kMirror = {[](CxImage& image) { return image.Mirror(), true; },
                               [](CxImage& image) { return reference::Mirror(image), true; }};

struct Case {
  const char* sentence;
  Operation operation;
  uint32_t bpp;      // 0: an image without a block
  const char* rows;  // of three pixels
  bool want;
  const char* after;  // all stored bytes; empty: there is no picture any more
};

void createCase(CxImage& image, const Case& c) {
  if (c.bpp != 0) createStored(image, 3, 1, c.bpp, c.rows);
}

std::string picture(CxImage& image) { return image.IsValid() ? storedBytes(image) : ""; }

TEST(RefusalAgreement, HoldsForWhatCannotBeDone) {
  const Case cases[] = {
      {"threshold of nothing", kDither<0>, 0, "", false, ""},
      {"Burkes of nothing", kDither<2>, 0, "", false, ""},
      {"a halftone is one already", kDither<0>, 1, "A0 00 00 00", true, "A0 00 00 00"},
      {"it is not diffused again", kDither<3>, 1, "A0 00 00 00", true, "A0 00 00 00"},
      {"no depth for nothing", kIncrease<8>, 0, "", false, ""},
      {"there is no depth of 16", kIncrease<16>, 8, "01 02 03 00", false, "01 02 03 00"},
      {"one bit is no increase", kIncrease<1>, 1, "A0 00 00 00", false, "A0 00 00 00"},
      {"four bits are fewer", kIncrease<4>, 8, "01 02 03 00", false, "01 02 03 00"},
      {"the depth it has", kIncrease<8>, 8, "01 02 03 00", true, "01 02 03 00"},
      {"no look-up in nothing", kLookUp, 0, "", false, ""},
      {"no table", kLookUpInNothing, 8, "01 02 03 00", false, "01 02 03 00"},
      {"no negative of nothing", kNegative, 0, "", true, ""},
      {"nothing cannot turn", kTurn, 0, "", false, ""},
      {"nothing is its mirror", kMirror, 0, "", true, ""},
      {"nibbles are not mirrored", kMirror, 4, "12 30 00 00", true, "12 30 00 00"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.sentence);
    for (const auto run : {c.operation.fast, c.operation.reference}) {
      OwnedImage image;
      createCase(image, c);
      EXPECT_EQ(run(image), c.want);
      EXPECT_EQ(picture(image), c.after);
    }
  }
}

TEST(RefusalAgreement, HoldsWithoutMemory) {
  const Case cases[] = {
      {"threshold", kDither<0>, 8, "10 90 C0 00", false, "10 90 C0 00"},
      {"Stucki", kDither<3>, 8, "10 90 C0 00", false, "10 90 C0 00"},
      {"one bit to eight", kIncrease<8>, 1, "A0 00 00 00", false, "A0 00 00 00"},
      {"eight bits to 24", kIncrease<24>, 8, "10 90 C0 00", false, "10 90 C0 00"},
      {"turned, and still true", kTurn, 8, "10 90 C0 00", true, ""},
      {"mirrored", kMirror, 8, "10 90 C0 00", true, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.sentence);
    for (const auto run : {c.operation.fast, c.operation.reference}) {
      OwnedImage image;
      createCase(image, c);
      {
        const ScarceMemory scarce;
        EXPECT_EQ(run(image), c.want);
        EXPECT_EQ(scarce.refusals(), 1);
      }
      if (!c.want) {
        EXPECT_STREQ(image.GetLastError(), "CxImage::Create can't allocate memory");
      }
      EXPECT_EQ(picture(image), c.after);
    }
  }
}

}  // namespace
