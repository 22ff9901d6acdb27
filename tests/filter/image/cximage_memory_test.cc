// What the palette image does when no memory is left for a block.
// Most operations keep the picture and tell why; turning, mirroring and centring lose it.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "image/diffusion/diffusion_dispatch.h"
#include "tests/filter/image/owned_image.h"
#include "tests/support/scarce_memory.h"

namespace {

constexpr char kNoMemory[] = "CxImage::Create can't allocate memory";

TEST(ImageMemory, LeavesTheNewFiguresWithoutABlock) {
  OwnedImage image;
  createSolid(image, 3, 2, 7);
  {
    const ScarceMemory scarce;
    EXPECT_EQ(image.Create(10, 5, 1, 0), nullptr);
    EXPECT_EQ(scarce.refusals(), 1);
  }
  EXPECT_STREQ(image.GetLastError(), kNoMemory);
  EXPECT_FALSE(image.IsValid());
  EXPECT_EQ(image.GetBits(0), nullptr);
  EXPECT_EQ(image.GetWidth(), 10u);
  EXPECT_EQ(image.GetHeight(), 5u);
  EXPECT_EQ(image.GetEffWidth(), 4u);
  EXPECT_EQ(image.GetNumColors(), 2u);
}

TEST(ImageMemory, FailsToReadAnArray) {
  const uint8_t array[4] = {1, 2, 3, 4};
  OwnedImage image;
  {
    const ScarceMemory scarce;
    EXPECT_FALSE(image.CreateFromArray(array, 2, 2, 8, 2, false));
  }
  EXPECT_STREQ(image.GetLastError(), kNoMemory);
  EXPECT_FALSE(image.IsValid());
  EXPECT_TRUE(image.CreateFromArray(array, 2, 2, 8, 2, false)) << "once there is memory";
  EXPECT_EQ(indices(image), "01 02 03 04");
}

struct Operation {
  const char* sentence;
  bool (*run)(CxImage& image);
};

TEST(ImageMemory, KeepsThePictureAndTellsWhy) {
  constexpr Operation kOperations[] = {
      {"threshold", [](CxImage& image) { return image.Dither(0); }},
      {"ordered", [](CxImage& image) { return image.Dither(1); }},
      {"Burkes", [](CxImage& image) { return image.Dither(2); }},
      {"Stevenson-Arce", [](CxImage& image) { return image.Dither(6); }},
      {"Bayer", [](CxImage& image) { return image.Dither(7); }},
      {"Floyd-Steinberg", [](CxImage& image) { return image.Dither(8); }},
      {"to 24 bits", [](CxImage& image) { return image.IncreaseBpp(24); }},
      {"a wider canvas", [](CxImage& image) { return image.Expand(1, 2, 3, 4, {}); }},
  };
  for (const Operation& operation : kOperations) {
    SCOPED_TRACE(operation.sentence);
    OwnedImage image;
    createGrey(image, 3, 2, "10 20 90  A0 B0 C0");
    const uint8_t* rows = image.GetBits(0);
    {
      const ScarceMemory scarce;
      EXPECT_FALSE(operation.run(image));
      EXPECT_EQ(scarce.refusals(), 1);
    }
    EXPECT_STREQ(image.GetLastError(), kNoMemory);
    EXPECT_EQ(image.GetBits(0), rows);
    EXPECT_EQ(indices(image), hexLine("10 20 90  A0 B0 C0"));
    EXPECT_EQ(image.GetNumColors(), 256u);
  }
}

// The halftone's own image is there, the room for the errors on their way is not.
TEST(ImageMemory, KeepsThePictureWhoseErrorsHaveNoRoom) {
  struct Case {
    const char* sentence;
    DitherMethod method;
    const DiffusionMethod& rows;
  };
  const DiffusionKernels& rows = diffusionKernels();
  const Case cases[] = {
      {"Burkes", 2, rows.burkes},
      {"Stucki", 3, rows.stucki},
      {"Jarvis-Judice-Ninke", 4, rows.jarvisJudiceNinke},
      {"Sierra", 5, rows.sierra},
      {"Stevenson-Arce", 6, rows.stevensonArce},
      {"Floyd-Steinberg", 8, rows.floydSteinberg},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.sentence);
    OwnedImage image;
    createGrey(image, 3, 2, "10 20 90  A0 B0 C0");
    {
      const ScarceMemory scarce(c.rows.scratchBytes(3));
      EXPECT_FALSE(image.Dither(c.method));
      EXPECT_EQ(scarce.refusals(), 1);
    }
    EXPECT_STREQ(image.GetLastError(), kNoMemory);
    EXPECT_EQ(indices(image), hexLine("10 20 90  A0 B0 C0"));
    EXPECT_TRUE(image.Dither(c.method)) << "once there is memory";
    EXPECT_EQ(storedDepth(image), 1);
  }
}

TEST(ImageMemory, KeepsAHalftoneThatCannotBeRaised) {
  OwnedImage image;
  createStored(image, 10, 1, 1, "A5 40 00 00");
  {
    const ScarceMemory scarce;
    EXPECT_FALSE(image.IncreaseBpp(8));
    EXPECT_STREQ(image.GetLastError(), kNoMemory);
    image.Dither(0);
    EXPECT_EQ(scarce.refusals(), 1) << "a halftone is not halftoned again";
  }
  EXPECT_EQ(storedBytes(image), "A5 40 00 00");
  EXPECT_EQ(storedDepth(image), 1);
}

TEST(ImageMemory, LosesThePictureWhereNobodyChecks) {
  constexpr Operation kOperations[] = {
      {"turned, and still true", [](CxImage& image) { return image.Rotate180(); }},
      {"mirrored", [](CxImage& image) { return image.Mirror(), true; }},
      {"centred", [](CxImage& image) { return image.MakeCenter(9), true; }},
  };
  for (const Operation& operation : kOperations) {
    SCOPED_TRACE(operation.sentence);
    OwnedImage image;
    createSolid(image, 3, 2, 7);
    {
      const ScarceMemory scarce;
      EXPECT_TRUE(operation.run(image));
      EXPECT_EQ(scarce.refusals(), 1);
    }
    EXPECT_FALSE(image.IsValid());
    EXPECT_EQ(image.GetPixelIndex(0, 0), 0);
  }
}

TEST(ImageMemory, LosesOnlyTheDestinationOfATurn) {
  OwnedImage image;
  createGrey(image, 3, 1, "01 02 03");
  OwnedImage destination;
  createSolid(destination, 2, 2, 9);
  {
    const ScarceMemory scarce;
    EXPECT_TRUE(image.Rotate180(&destination));
  }
  EXPECT_EQ(indices(image), "01 02 03");
  EXPECT_FALSE(destination.IsValid());
}

}  // namespace
