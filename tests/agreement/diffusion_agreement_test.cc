// Every error kernel on every target against the reference implementation: the bits of whole pages.
// Pages are as tight as they can be, and results stand between bytes that nobody may touch.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

#include "image/cximage_reference.h"
#include "image/diffusion/diffusion_dispatch.h"
#include "image/dither_tables.h"

namespace {

using Bytes = std::vector<uint8_t>;

struct Kernel {
  const char* name;
  DitherMethod number;
  const DiffusionKernel& taps;
  DiffusionMethod DiffusionKernels::*method;
};

const Kernel kKernels[] = {
    {"Floyd-Steinberg", -1, kFloydSteinberg, &DiffusionKernels::floydSteinberg},
    {"Burkes", 2, kBurkes, &DiffusionKernels::burkes},
    {"Stucki", 3, kStucki, &DiffusionKernels::stucki},
    {"Jarvis-Judice-Ninke", 4, kJarvisJudiceNinke, &DiffusionKernels::jarvisJudiceNinke},
    {"Sierra", 5, kSierra, &DiffusionKernels::sierra},
    {"Stevenson-Arce", 6, kStevensonArce, &DiffusionKernels::stevensonArce},
};

// Rows `stride` bytes apart; nothing stands behind the last pixel.
struct GreyPage {
  size_t width;
  size_t height;
  size_t stride;
  Bytes grey;

  uint8_t& at(size_t x, size_t y) { return grey[y * stride + x]; }
};

GreyPage blankPage(size_t width, size_t height, size_t stride, uint8_t level) {
  return {width, height, stride, Bytes((height - 1) * stride + width, level)};
}

constexpr size_t kFence = 3;  // bytes behind the bits of each row
constexpr uint8_t kUntouched = 0xA5;

Bytes fencedRows(size_t width, size_t height, const std::function<const uint8_t*(size_t)>& rowAt) {
  const size_t bytes = (width + 7) / 8;
  Bytes rows;
  for (size_t y = 0; y < height; ++y) {
    rows.insert(rows.end(), rowAt(y), rowAt(y) + bytes);
    rows.insert(rows.end(), kFence, kUntouched);
  }
  return rows;
}

Bytes referenceBits(const GreyPage& page, const Kernel& kernel) {
  CxImage image;
  image.Create(static_cast<uint32_t>(page.width), static_cast<uint32_t>(page.height), 8, 0);
  for (size_t y = 0; y < page.height; ++y) {
    std::copy_n(page.grey.data() + y * page.stride, page.width,
                image.GetBits(static_cast<uint32_t>(y)));
  }
  reference::Dither(image, kernel.number);
  Bytes bits = fencedRows(page.width, page.height,
                          [&](size_t y) { return image.GetBits(static_cast<uint32_t>(y)); });
  image.Destroy();
  return bits;
}

Bytes fastBits(const GreyPage& page, const DiffusionMethod& method) {
  const size_t stride = (page.width + 7) / 8 + kFence;
  Bytes bits(stride * page.height, kUntouched);
  Bytes scratch(method.scratchBytes(page.width), kUntouched);
  method.halftone({page.grey.data(), page.stride, bits.data(), stride, page.width, page.height},
                  scratch.data());
  return bits;
}

void expectAgreement(const GreyPage& page, const Kernel& kernel, const std::string& what) {
  const Bytes want = referenceBits(page, kernel);
  for (const Target target : availableTargets()) {
    const Bytes have = fastBits(page, diffusionKernels(target).*kernel.method);
    const auto [differs, wanted] = std::mismatch(have.begin(), have.end(), want.begin());
    if (differs == have.end()) continue;
    const auto at = static_cast<size_t>(differs - have.begin());
    const size_t stride = have.size() / page.height;
    ADD_FAILURE() << kernel.name << " on " << nameOf(target) << ", " << what << ", " << page.width
                  << " x " << page.height << ": byte " << at % stride << " of row " << at / stride
                  << " is " << int{*differs} << ", want " << int{*wanted};
  }
}

// What a kernel may get wrong depends on the page: where sums are held at black and white, where
// nothing happens, where a row is decided by the one above.
struct Paint {
  const char* name;
  std::function<int(size_t x, size_t y, std::mt19937& random)> level;
};

const Paint kPaints[] = {
    {"noise", [](size_t, size_t, std::mt19937& random) { return static_cast<int>(random()); }},
    {"a ramp to the right", [](size_t x, size_t, std::mt19937&) { return static_cast<int>(x); }},
    {"a ramp upward", [](size_t, size_t y, std::mt19937&) { return static_cast<int>(y) * 3; }},
    {"almost white",
     [](size_t, size_t, std::mt19937& random) { return 255 - static_cast<int>(random() % 12); }},
    {"almost black",
     [](size_t, size_t, std::mt19937& random) { return static_cast<int>(random() % 12); }},
    {"almost middle grey",
     [](size_t, size_t, std::mt19937& random) { return 122 + static_cast<int>(random() % 13); }},
    {"letters",
     [](size_t x, size_t y, std::mt19937& random) {
       const bool ink = y % 24 < 15 && x % 11 < 8 && (x / 11 * 7 + y / 24 * 5 + x * y / 6) % 3 == 0;
       return ink ? static_cast<int>(random() % 40) : 255;
     }},
    {"all black", [](size_t, size_t, std::mt19937&) { return 0; }},
    {"all white", [](size_t, size_t, std::mt19937&) { return 255; }},
    {"the lightest black", [](size_t, size_t, std::mt19937&) { return 128; }},
    {"the darkest white", [](size_t, size_t, std::mt19937&) { return 129; }},
};

GreyPage paintedPage(size_t width, size_t height, size_t stride, const Paint& paint,
                     unsigned int seed) {
  std::mt19937 random(seed);
  GreyPage page = blankPage(width, height, stride, 0xEE);
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      page.at(x, y) = static_cast<uint8_t>(paint.level(x, y, random));
    }
  }
  return page;
}

struct Size {
  size_t width;
  size_t height;
};

void expectAgreementOn(const std::vector<Size>& sizes, std::span<const Paint> paints) {
  unsigned int seed = std::random_device{}();
  for (const Kernel& kernel : kKernels) {
    for (const Size& size : sizes) {
      ++seed;
      const Paint& paint = paints[seed % paints.size()];
      const size_t stride = size.width + seed % 5;
      expectAgreement(paintedPage(size.width, size.height, stride, paint, seed), kernel,
                      paint.name + std::string(", seed ") + std::to_string(seed));
    }
  }
}

TEST(DiffusionAgreement, HoldsForEveryWidth) {
  std::vector<Size> sizes;
  for (size_t width = 1; width <= 140; ++width) {
    for (const size_t height : {1u, 2u, 37u}) sizes.push_back({width, height});
  }
  // Where rows stop being widened, on either size of vector, and the numbers of blocks around it.
  for (size_t width = 250; width <= 285; ++width) sizes.push_back({width, 20});
  for (size_t width = 505; width <= 545; ++width) sizes.push_back({width, 36});
  expectAgreementOn(sizes, {kPaints, 6});
}

TEST(DiffusionAgreement, HoldsForEveryHeight) {
  std::vector<Size> sizes;
  for (size_t height = 1; height <= 40; ++height) {
    for (const size_t width : {1u, 7u, 33u, 132u, 600u}) sizes.push_back({width, height});
  }
  for (const size_t height : {255u, 256u, 257u, 1218u, 3508u}) {
    for (const size_t width : {1u, 8u}) sizes.push_back({width, height});
  }
  expectAgreementOn(sizes, {kPaints, 6});
}

TEST(DiffusionAgreement, HoldsForEveryKindOfPage) {
  for (const Paint& paint : kPaints) {
    for (const size_t width : {812u, 2361u}) expectAgreementOn({{width, 40}}, {&paint, 1});
  }
}

TEST(DiffusionAgreement, HoldsForWholePages) {
  expectAgreementOn({{1218, 406}}, {kPaints + 6, 1});
  expectAgreementOn({{2480, 130}}, {kPaints + 3, 1});
  expectAgreementOn({{20001, 4}}, {kPaints, 1});
}

// One pixel of every level on black, and where each tap leads a neighbour that one level more or
// less of the pixel's share turns. Between such pairs all error dies away.
TEST(DiffusionAgreement, HoldsForEveryShareOfEveryError) {
  constexpr size_t kTileWidth = 16;
  constexpr size_t kTileHeight = 6;
  constexpr int kAround = 3;
  for (const Kernel& kernel : kKernels) {
    for (const DiffusionTap& tap : kernel.taps.taps) {
      GreyPage page =
          blankPage(256 * kTileWidth, (2 * kAround + 1) * kTileHeight, 256 * kTileWidth, 0);
      for (int level = 0; level < 256; ++level) {
        const int error = level > 128 ? level - 255 : level;
        const int turns = 129 - error * tap.weight / kernel.taps.divisor;
        for (int i = 0; i <= 2 * kAround; ++i) {
          const size_t x = static_cast<size_t>(level) * kTileWidth + 5;
          const size_t y = static_cast<size_t>(i) * kTileHeight;
          page.at(x, y) = static_cast<uint8_t>(level);
          page.at(x + static_cast<size_t>(tap.dx), y + static_cast<size_t>(tap.dy)) =
              static_cast<uint8_t>(turns - kAround + i);
        }
      }
      expectAgreement(page, kernel, "the share " + std::to_string(tap.weight));
    }
  }
}

}  // namespace
