// The stencil halftones and their filters against the reference implementation, byte for byte.
// KORVEL_TARGET chooses the kernels, so this program runs once for each SIMD target.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "tattoo/blur.h"
#include "tattoo/filters.h"
#include "tattoo/pipelines.h"
#include "tattoo/tattoo_kernels.h"
#include "tattoo/tattoo_reference.h"
#include "tests/agreement/tattoo_pages.h"
#include "tests/filter/tattoo/whole_images.h"

namespace {

// A test's random numbers. The seed differs in every run unless KORVEL_SEED gives one, and every
// failure reports it.
class TattooAgreement : public testing::Test {
 protected:
  static unsigned int chosenSeed() {
    const char* given = std::getenv("KORVEL_SEED");
    return given != nullptr ? static_cast<unsigned int>(std::strtoul(given, nullptr, 10))
                            : std::random_device{}();
  }

  const unsigned int seed_ = chosenSeed();
  const testing::ScopedTrace trace_{__FILE__, __LINE__, "KORVEL_SEED=" + std::to_string(seed_)};
  std::mt19937 random_{seed_};
};

TEST_F(TattooAgreement, RunsOnTheTargetThatIsAskedFor) {
  const char* asked = std::getenv("KORVEL_TARGET");
  if (asked == nullptr) GTEST_SKIP() << "no target asked for: the widest one runs";
  const auto targets = availableTargets();
  const bool isThere = std::any_of(targets.begin(), targets.end(), [asked](Target target) {
    return std::string(nameOf(target)) == asked;
  });
  if (!isThere) GTEST_SKIP() << "this machine does not run " << asked;
  EXPECT_STREQ(nameOf(chosenTarget()), asked);
}

TEST_F(TattooAgreement, DiffusesEverySmallPage) {
  for (int width = 0; width <= 140; ++width) {
    for (int height = width % 2; height <= 40; height += 2) {
      const Look look = kLooks[random_() % std::size(kLooks)];
      const int threshold = static_cast<int>(random_() % 257) - 1;
      const QMImage page = pageOf(look, width, height, random_);
      ASSERT_EQ(difference(diffused(page, threshold), reference::edf_cus(page, threshold)), "")
          << "threshold " << threshold << ", look " << static_cast<int>(look);
    }
  }
}

TEST_F(TattooAgreement, DiffusesAtEveryThreshold) {
  for (int threshold = -1; threshold <= 255; ++threshold) {
    for (const Look look : {Look::kNoise, Look::kRamp, Look::kNearFlat}) {
      const QMImage page = pageOf(look, 133, 21, random_);
      ASSERT_EQ(difference(diffused(page, threshold), reference::edf_cus(page, threshold)), "")
          << "threshold " << threshold << ", look " << static_cast<int>(look);
    }
  }
}

// Every kind of kernel that a blur may have, fast or not.
std::vector<std::vector<double>> kernels() {
  std::vector<std::vector<double>> all;
  for (int size = 1; size <= 31; size += 2) {
    for (const double sigma : {0.3, 0.5, 1.0, 2.0, 3.0, 7.0}) {
      all.emplace_back(static_cast<size_t>(size));
      generateGaussianKernel1D(size, sigma, all.back().data());
    }
  }
  all.push_back({0.25, 0.5, 0.25});  // many sums end in exactly a half
  all.push_back({0.125, 0.125, 0.5, 0.125, 0.125});
  all.push_back({0.5, 0.0, 0.5});
  all.push_back({0.0, 0.0, 0.0});
  all.push_back({0x1p-40, 0x1p-30, 0x1p-40});
  all.push_back({0.2, 0.3, 0.5});          // not symmetric
  all.push_back({-0.25, 1.5, -0.25});      // overshoots on either side, low 8 bits
  all.push_back({1.0, 1.0, 1.0});          // not normalised
  all.push_back({0.2504, 0.5, 0.2504});    // hardly normalised
  all.push_back({0.25025, 0.5, 0.25025});  // a bit less
  all.push_back(std::vector<double>(41, 1.0 / 41.0));
  all.push_back(std::vector<double>(1003, 1.0 / 1003.0));
  return all;
}

TEST_F(TattooAgreement, ConvolvesWithEveryKernel) {
  for (const std::vector<double>& kernel : kernels()) {
    const int size = static_cast<int>(kernel.size());
    for (const Look look : {Look::kNoise, Look::kFewLevels, Look::kText}) {
      const int width = 1 + static_cast<int>(random_() % 140);
      const int height = 1 + static_cast<int>(random_() % 40);
      const QMImage page = pageOf(look, width, height, random_);
      for (const bool across : {true, false}) {
        ASSERT_EQ(difference(convolved(page, kernel, across),
                             reference::convolve1D(page, kernel.data(), size, across)),
                  "")
            << size << " taps, middle " << kernel[kernel.size() / 2] << ", across " << across;
      }
    }
  }
}

// Three taps see every pair of levels above and below, with three kinds of level between.
TEST_F(TattooAgreement, ConvolvesEveryTriple) {
  QMImage page(65536, 3, QM_IMG_GRAY);
  for (const int kind : {0, 1, 2}) {
    for (int x = 0; x < page.width; ++x) {
      const int above = x / 256;
      const int below = x % 256;
      const int between[] = {0, above, (above * 7 + below * 13) % 256};
      page.data[x] = static_cast<uint8_t>(above);
      page.data[x + page.width] = static_cast<uint8_t>(between[kind]);
      page.data[x + 2 * page.width] = static_cast<uint8_t>(below);
    }
    for (const std::vector<double>& kernel : kernels()) {
      if (kernel.size() != 3) continue;
      ASSERT_EQ(difference(convolved(page, kernel, false),
                           reference::convolve1D(page, kernel.data(), 3, false)),
                "")
          << "middle " << kernel[1] << ", kind " << kind;
    }
  }
}

// Levels of one window, changed step by step until their sum is as near to a half as steps go.
std::vector<uint8_t> nearlyHalf(const std::vector<double>& kernel, std::mt19937& random) {
  std::vector<uint8_t> levels(kernel.size());
  for (uint8_t& level : levels) level = static_cast<uint8_t>(random());
  const auto miss = [&] {
    double sum = 0.0;
    for (size_t k = 0; k < kernel.size(); ++k) sum += levels[k] * kernel[k];
    return std::abs(sum - std::floor(sum) - 0.5);
  };
  double least = miss();
  for (int trial = 0; trial < 600; ++trial) {
    const size_t one = random() % kernel.size();
    const size_t other = random() % kernel.size();
    const uint8_t kept[] = {levels[one], levels[other]};
    levels[one] = static_cast<uint8_t>(random());
    levels[other] = static_cast<uint8_t>(random());
    if (miss() <= least) {
      least = miss();
    } else {
      levels[other] = kept[1];
      levels[one] = kept[0];
    }
  }
  return levels;
}

TEST_F(TattooAgreement, ConvolvesSumsNextToAHalf) {
  for (const std::vector<double>& kernel : kernels()) {
    if (kernel.size() < 5 || kernel.size() > 31) continue;
    const int size = static_cast<int>(kernel.size());
    QMImage page(size, 40, QM_IMG_GRAY);  // one window per row; the middle column sees all of it
    for (int y = 0; y < page.height; ++y) {
      const std::vector<uint8_t> window = nearlyHalf(kernel, random_);
      std::copy(window.begin(), window.end(), page.data + y * size);
    }
    ASSERT_EQ(difference(convolved(page, kernel, true),
                         reference::convolve1D(page, kernel.data(), size, true)),
              "")
        << size << " taps, middle " << kernel[kernel.size() / 2];
  }
}

// The bound that the estimate claims, against the sum in double, on windows that press against it:
// white where a step is too large, or where it is too small.
TEST_F(TattooAgreement, EstimatesABlurWithinItsBound) {
  for (const std::vector<double>& kernel : kernels()) {
    const BlurKernel blur(kernel.data(), static_cast<int>(kernel.size()));
    const BlurWeights weights = blur.weights();
    if (weights.steps == nullptr) continue;
    const double one = std::ldexp(1.0, weights.shift);
    for (const bool tooLarge : {true, false}) {
      double estimate = 0.0;
      double sum = 0.0;
      for (size_t k = 0; k < kernel.size(); ++k) {
        const int step = weights.steps[std::min(k, kernel.size() - 1 - k)];
        if ((step > kernel[k] * one) != tooLarge) continue;
        estimate += 255.0 * step;
        sum += 255.0 * kernel[k] * one;
      }
      EXPECT_LE(std::abs(estimate - sum) + one * 0x1p-16, weights.doubt / 2)
          << kernel.size() << " taps, middle " << kernel[kernel.size() / 2];
    }
  }
}

TEST_F(TattooAgreement, IsFastForSmoothKernelsOnly) {
  struct Case {
    const char* sentence;
    std::vector<double> taps;
    bool isFast;
  };
  const Case cases[] = {
      {"normalised", {0.25, 0.5, 0.25}, true},
      {"one tap", {1.0}, true},
      {"no weight at all", {0.0, 0.0, 0.0}, true},
      {"sum a little above 1", {0.2501, 0.5, 0.2501}, true},
      {"sum too far above 1", {0.26, 0.5, 0.26}, false},
      {"not symmetric", {0.25, 0.5, 0.2499}, false},
      {"a negative tap", {-0.1, 1.2, -0.1}, false},
      {"not a number", {NAN, 0.5, NAN}, false},
      {"infinite", {0.1, INFINITY, 0.1}, false},
  };
  for (const Case& c : cases) {
    const BlurKernel kernel(c.taps.data(), static_cast<int>(c.taps.size()));
    EXPECT_EQ(kernel.weights().steps != nullptr, c.isFast) << c.sentence;
  }
}

TEST_F(TattooAgreement, SharpensEverySmallPage) {
  for (int width = 0; width <= 140; ++width) {
    for (const int height : {0, 1, 2, 5, 6, 11, 12, 40}) {
      const Look look = kLooks[random_() % std::size(kLooks)];
      const QMImage page = pageOf(look, width, height, random_);
      const int size = width % 4 == 0 ? 1 + 2 * static_cast<int>(random_() % 16) : 11;
      const float amount = width % 3 == 0 ? static_cast<float>(random_() % 1000) - 250.5f : 300.0f;
      ASSERT_EQ(difference(sharpened(page, amount, size),
                           reference::enh_unsharp_mask(page, amount, size)),
                "")
          << size << " taps, " << amount << " percent, look " << static_cast<int>(look);
      std::vector<double> taps(static_cast<size_t>(size));
      generateGaussianKernel1D(size, 2.0, taps.data());
      const BlurKernel kernel(taps.data(), size);
      ASSERT_EQ(difference(blurred(page, kernel, kernel),
                           reference::enh_gaussian_filter_fast(page, size, 2.0)),
                "")
          << size << " taps, look " << static_cast<int>(look);
    }
  }
}

TEST_F(TattooAgreement, WeighsEveryPairOfLevels) {
  QMImage own(256, 256, QM_IMG_GRAY);
  QMImage blur(256, 256, QM_IMG_GRAY);
  for (size_t i = 0; i < own.size(); ++i) {
    own.data[i] = static_cast<uint8_t>(i / 256);
    blur.data[i] = static_cast<uint8_t>(i % 256);
  }
  for (const float amount : {3.0f, 0.0f, 1.0f, -1.0f, -2.0f, 0.1f, 0.33f, 0.5f, -0.5f, 2.5f, 62.0f,
                             63.0f, 64.0f, -64.0f, -65.0f, 300.0f, 1e-30f, 12345.678f, 4e6f}) {
    EXPECT_EQ(difference(weighed(own, blur, amount), reference::add_Weighted(own, blur, amount)),
              "")
        << amount;
  }
}

TEST_F(TattooAgreement, TonesEveryLength) {
  uint8_t levels[256];
  for (uint8_t& level : levels) level = static_cast<uint8_t>(random_());
  for (int width = 1; width <= 140; ++width) {
    for (const Look look : kLooks) {
      const QMImage row = pageOf(look, width, 1, random_);
      std::vector<uint16_t> want(static_cast<size_t>(width) + 1, 0xA5A5);
      std::vector<uint16_t> have = want;
      std::transform(row.data, row.data + width, want.begin(),
                     [&](uint8_t level) { return levels[level]; });
      tattooKernels().tone(row.data, static_cast<size_t>(width), levels, have.data());
      ASSERT_EQ(have, want) << width << " pixels, look " << static_cast<int>(look);
    }
  }
}

TEST_F(TattooAgreement, WeighsEveryLength) {
  for (int width = 0; width <= 140; ++width) {
    const QMImage own = pageOf(Look::kNoise, width, 9, random_);
    const QMImage blur = pageOf(Look::kNoise, width, 9, random_);
    for (const float amount : {3.0f, 0.7f}) {
      ASSERT_EQ(difference(weighed(own, blur, amount), reference::add_Weighted(own, blur, amount)),
                "")
          << amount;
    }
  }
}

TEST_F(TattooAgreement, FindsTheThresholdOfEveryKindOfPage) {
  for (int trial = 0; trial < 4000; ++trial) {
    const Look look = kLooks[random_() % std::size(kLooks)];
    const int width = 1 + static_cast<int>(random_() % 140);
    const int height = 1 + static_cast<int>(random_() % 40);
    const QMImage page = pageOf(look, width, height, random_);
    ASSERT_EQ(thresh_global_moments(page), reference::thresh_global_moments(page))
        << width << " x " << height << ", look " << static_cast<int>(look);
  }
}

void expectSameStencils(const QMImage& page, Look look) {
  ASSERT_EQ(difference(qmTattooDithering(page), reference::qmTattooDithering(page)), "")
      << "look " << static_cast<int>(look);
  ASSERT_EQ(difference(qmTattooDitheringZ4(page), reference::qmTattooDitheringZ4(page)), "")
      << "Z4, look " << static_cast<int>(look);
}

TEST_F(TattooAgreement, HalftonesEverySmallPage) {
  for (int width = 0; width <= 140; ++width) {
    for (const int height : {0, 1, 16, 35}) {
      const Look look = kLooks[random_() % std::size(kLooks)];
      expectSameStencils(pageOf(look, width, height, random_), look);
      if (HasFatalFailure()) return;
    }
  }
  for (int height = 0; height <= 40; ++height) {
    const Look look = kLooks[random_() % std::size(kLooks)];
    expectSameStencils(pageOf(look, 61, height, random_), look);
    if (HasFatalFailure()) return;
  }
}

TEST_F(TattooAgreement, HalftonesLinesOfRealPages) {
  for (const Look look : kLooks) {
    for (const int width : {608, 812, 1181, 2361, 2480}) {
      expectSameStencils(pageOf(look, width, 19, random_), look);
      if (HasFatalFailure()) return;
    }
    expectSameStencils(pageOf(look, 33, 1218, random_), look);
    if (HasFatalFailure()) return;
  }
}

TEST_F(TattooAgreement, HalftonesColourPages) {
  for (const QM_IMG_COLOR color : {QM_IMG_BGR, QM_IMG_RGBA}) {
    QMImage page(101, 33, color);
    std::generate_n(page.data, page.size(), [&] { return static_cast<uint8_t>(random_()); });
    expectSameStencils(page, Look::kNoise);
  }
}

}  // namespace
