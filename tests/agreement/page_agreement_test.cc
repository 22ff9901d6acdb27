// The palette image's and the printer's operations against the reference implementation, padding
// included. KORVEL_TARGET chooses the kernels, so this program runs once for each SIMD target.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

#include "image/cximage.h"
#include "image/cximage_reference.h"
#include "printer/page_reference.h"
#include "printer/pellam_printer.h"
#include "tests/support/captured_stderr.h"

namespace {

using Bytes = std::vector<uint8_t>;

struct OwnedImage : CxImage {
  ~OwnedImage() { Destroy(); }
};

struct Size {
  uint32_t width;
  uint32_t height;
};

// Every width at a few heights, every height at a few widths, and lines of real pages.
std::vector<Size> sizes() {
  std::vector<Size> all;
  for (uint32_t width = 1; width <= 140; ++width) {
    for (const uint32_t height : {1u, 2u, 5u}) all.push_back({width, height});
  }
  for (uint32_t height = 1; height <= 40; ++height) {
    for (const uint32_t width : {1u, 7u, 33u, 132u}) all.push_back({width, height});
  }
  for (const uint32_t width : {812u, 1181u, 2361u, 2480u}) all.push_back({width, 5});
  return all;
}

// An image of noise, in the padding of its rows too.
void paint(CxImage& image, Size size, uint32_t depth, unsigned int seed) {
  std::mt19937 random(seed);
  image.Create(size.width, size.height, depth, 3);
  image.SetGrayPalette();
  uint8_t* rows = image.GetBits(0);
  for (size_t i = 0; i < size_t{image.GetEffWidth()} * size.height; ++i) {
    rows[i] = static_cast<uint8_t>(random());
  }
}

// The whole block: header, palette and rows.
Bytes blockOf(CxImage& image) {
  if (!image.IsValid()) return {};
  const uint8_t* block = image.GetBits(0) - image.GetPaletteSize() - sizeof(DibHeader);
  return {block, block + image.GetSize()};
}

struct Operation {
  const char* name;
  std::vector<uint32_t> depths;
  std::function<void(CxImage&)> fast;
  std::function<void(CxImage&)> reference;
};

Operation dither(const char* name, DitherMethod method) {
  return {name,
          {1, 4, 8, 24},
          [method](CxImage& image) { image.Dither(method); },
          [method](CxImage& image) { reference::Dither(image, method); }};
}

Operation increase(const char* name, uint32_t depth) {
  return {name,
          {1, 4, 8, 24},
          [depth](CxImage& image) { image.IncreaseBpp(depth); },
          [depth](CxImage& image) { reference::IncreaseBpp(image, depth); }};
}

const uint8_t* someTable() {
  static const Bytes table = [] {
    Bytes values(256);
    for (size_t v = 0; v < 256; ++v) values[v] = static_cast<uint8_t>(v * 59 + 7);
    return values;
  }();
  return table.data();
}

std::vector<Operation> operations() {
  return {
      dither("threshold", 0),
      dither("ordered", 1),
      dither("Bayer", 7),
      dither("Floyd-Steinberg", 8),
      dither("Burkes", 2),
      dither("Stucki", 3),
      dither("Jarvis-Judice-Ninke", 4),
      dither("Sierra", 5),
      dither("Stevenson-Arce", 6),
      increase("to 4 bits", 4),
      increase("to 8 bits", 8),
      increase("to 24 bits", 24),
      {"look-up",
       {1, 4, 8, 24},
       [](CxImage& image) { image.Lut(someTable()); },
       [](CxImage& image) { reference::Lut(image, someTable()); }},
      {"negative",
       {1, 4, 8, 24},
       [](CxImage& image) { image.Negative(); },
       [](CxImage& image) { reference::Negative(image); }},
      {"turn",
       {1, 4, 8, 24},
       [](CxImage& image) { image.Rotate180(); },
       [](CxImage& image) { reference::Rotate180(image); }},
      {"mirror",
       {1, 4, 8, 24},
       [](CxImage& image) { image.Mirror(); },
       [](CxImage& image) { reference::Mirror(image); }},
  };
}

TEST(ImageOperations, AgreeWithTheReference) {
  unsigned int seed = std::random_device{}();
  for (const Operation& operation : operations()) {
    for (const uint32_t depth : operation.depths) {
      for (const Size& size : sizes()) {
        ++seed;
        OwnedImage fast;
        OwnedImage want;
        paint(fast, size, depth, seed);
        paint(want, size, depth, seed);
        operation.fast(fast);
        operation.reference(want);
        ASSERT_EQ(blockOf(fast), blockOf(want))
            << operation.name << " from " << depth << " bits, " << size.width << " x "
            << size.height << ", seed " << seed;
      }
    }
  }
}

// With rows of every length, and what the bytes after the last pixel become.
TEST(ImageOperations, HalftoneAnArrayAsInThreeSteps) {
  unsigned int seed = std::random_device{}();
  for (const DitherMethod method : {0, 1, 2, 3, 4, 5, 6, 7, 8}) {
    for (const Size& size : sizes()) {
      std::mt19937 random(++seed);
      const uint32_t distance = size.width + static_cast<uint32_t>(random() % 7);
      Bytes array(size_t{distance} * size.height);
      for (uint8_t& byte : array) byte = static_cast<uint8_t>(random());
      OwnedImage have;
      OwnedImage want;
      ASSERT_TRUE(have.CreateHalftone(array.data(), size.width, size.height, distance, method));
      want.CreateFromArray(array.data(), size.width, size.height, 8, distance, false);
      reference::Dither(want, method);
      reference::IncreaseBpp(want, 8);
      ASSERT_EQ(blockOf(have), blockOf(want))
          << "method " << method << ", " << size.width << " x " << size.height << ", seed " << seed;
    }
  }
}

// Each level on each of the sixteen places.
TEST(ImageOperations, CompareEveryLevelOnEveryPlace) {
  Bytes levels(256 * 4 * 4);
  for (size_t i = 0; i < levels.size(); ++i) levels[i] = static_cast<uint8_t>(i % 1024 / 4);
  for (const DitherMethod method : {0, 1, 7}) {
    OwnedImage fast;
    OwnedImage want;
    fast.CreateFromArray(levels.data(), 1024, 4, 8, 1024, false);
    want.CreateFromArray(levels.data(), 1024, 4, 8, 1024, false);
    fast.Dither(method);
    reference::Dither(want, method);
    EXPECT_EQ(blockOf(fast), blockOf(want)) << "method " << method;
  }
}

// Products and sums of single precision fit into double, so that each step rounds once.
uint8_t toned(int level, int brightness, int contrast) {
  const double factor = static_cast<float>(double(contrast + 100) / 100.0);
  const double spread = static_cast<float>((level - 128) * factor);
  const double shifted = static_cast<float>(spread + (brightness + 128));
  const double rounded = static_cast<float>(shifted + 0.5);
  return static_cast<uint8_t>(std::clamp(std::trunc(rounded), 0.0, 255.0));
}

TEST(ImageOperations, ToneAllLevelsUnderAllSettings) {
  Bytes levels(256);
  for (size_t v = 0; v < 256; ++v) levels[v] = static_cast<uint8_t>(v);
  OwnedImage image;
  for (int brightness = -500; brightness <= 500; brightness += 5) {
    for (int contrast = -200; contrast <= 200; contrast += 2) {
      image.CreateFromArray(levels.data(), 256, 1, 8, 256, false);
      image.Light(brightness, contrast);
      for (int v = 0; v < 256; ++v) {
        ASSERT_EQ(image.GetBits(0)[v], toned(v, brightness, contrast))
            << "level " << v << ", brightness " << brightness << ", contrast " << contrast;
      }
    }
  }
}

// Rows longer than wide, and rows that do not reach the image's stride.
TEST(ImageOperations, ReadArraysWithAnyDistanceOfRows) {
  std::mt19937 random(7);
  for (uint32_t width = 1; width <= 70; ++width) {
    for (const uint32_t distance : {width, width + 1, width + 5, width / 2 + 1}) {
      Bytes array(distance * 3);
      for (uint8_t& byte : array) byte = static_cast<uint8_t>(random());
      OwnedImage image;
      ASSERT_TRUE(image.CreateFromArray(array.data(), width, 3, 8, distance, false));
      const uint32_t stride = (width + 3) / 4 * 4;
      Bytes want(stride * 3, 0);
      for (uint32_t i = 0; i < want.size(); ++i) {
        if (i % stride < distance) want[i] = array[i / stride * distance + i % stride];
      }
      ASSERT_EQ(Bytes(image.GetBits(0), image.GetBits(0) + stride * 3), want)
          << width << " pixels, rows " << distance << " apart";
    }
  }
}

class QuietPrinter : public PellamPrinter {
 public:
  void doPrintImage(const unsigned char*, size_t, size_t, size_t) override {}
};

Bytes sparseBytes(size_t count, std::mt19937& random) {
  constexpr uint8_t kFew[] = {0, 0, 0, 1, 255, 128, 2, 254};
  Bytes bytes(count);
  for (uint8_t& byte : bytes) byte = kFew[random() % 8];
  return bytes;
}

TEST(PagePacking, AgreesWithTheReference) {
  const unsigned int seed = std::random_device{}();
  std::mt19937 random(seed);
  CapturedStderr quiet;
  for (int stride = 0; stride <= 140; ++stride) {
    for (const int height : {0, 1, 2, 3, 40}) {
      for (const int skip : {0, 1, 7, stride - 1, stride, stride + 3}) {
        if (skip < 0) continue;
        const int pixels = stride * height;
        const Bytes page = sparseBytes(static_cast<size_t>(pixels) + 3, random);
        Bytes fast = page;
        Bytes want = page;
        QuietPrinter printer;
        printer.setSkipRightPixels(static_cast<uint64_t>(skip));
        const int have = printer.GrayToMono(stride, height, fast.data());
        const int packed =
            reference::GrayToMono(stride, height, static_cast<uint64_t>(skip), want.data());
        ASSERT_EQ(have, packed);
        ASSERT_EQ(fast, want) << stride << " x " << height << ", skip " << skip << ", seed "
                              << seed;
      }
    }
  }
}

TEST(PageCopies, AgreeWithTheReference) {
  unsigned int seed = std::random_device{}();
  QuietPrinter printer;
  for (const uint32_t depth : {1u, 4u, 8u, 24u}) {
    for (const Size& size : sizes()) {
      OwnedImage image;
      paint(image, size, depth, ++seed);
      const auto width = static_cast<int>(size.width);
      const auto height = static_cast<int>(size.height);
      for (const int stride : {width, width + 1, static_cast<int>(image.GetEffWidth())}) {
        const int needed = stride * height + width;
        const auto bytes = static_cast<size_t>(needed);
        Bytes fast(bytes, 0xA5);
        Bytes want(bytes, 0xA5);
        printer.copyPixels(image, fast.data(), width, height, stride);
        reference::copyPixels(image, want.data(), width, height, stride);
        ASSERT_EQ(fast, want) << depth << " bits, " << width << " x " << height << ", seed "
                              << seed;
        for (const bool negative : {false, true}) {
          printer.setNegativePrint(negative);
          for (const size_t capacity : {size_t{0}, bytes / 2, bytes}) {
            printer.copyProcessedPixels(&image, fast.data(), width, height, stride, capacity);
            reference::copyProcessedPixels(&image, want.data(), width, height, stride, negative,
                                           capacity);
            ASSERT_EQ(fast, want) << depth << " bits, " << width << " x " << height << ", capacity "
                                  << capacity << ", seed " << seed;
          }
        }
      }
    }
  }
}

// Neither an image without a block nor pixels beside the image may stop a copy.
TEST(PageCopies, AgreeOutsideTheImage) {
  QuietPrinter printer;
  OwnedImage image;
  for (const bool painted : {false, true}) {
    if (painted) paint(image, {9, 3}, 8, 1);
    Bytes fast(16 * 5, 0xA5);
    Bytes want(16 * 5, 0xA5);
    printer.copyPixels(image, fast.data(), 13, 5, 16);
    reference::copyPixels(image, want.data(), 13, 5, 16);
    EXPECT_EQ(fast, want) << painted;
  }
}

}  // namespace
