// Pages that are hard to halftone: one level, almost one level, two levels, a single dot. The
// stencil methods have no threshold for some of them and must end all the same.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cmath>

#include "tattoo/filters.h"
#include "tattoo/numeric.h"
#include "tests/hardening/hard_job.h"

namespace {

const char* const kStencilHalftones[] = {"Tattoo", "Tattoo_Z4"};

// They take a hundredth of a second per page at most.
void expectAllPrinted(const std::vector<std::string>& recipes, const std::string& options) {
  JobPlan plan = labelJob(recipes, options);
  plan.dumpFolder = false;
  plan.timeout = 250;
  const JobResult job = runJob(plan);
  ASSERT_EQ(disorderOf(job), "") << options;
  EXPECT_EQ(job.exitStatus, 0) << options;
  EXPECT_LT(job.processorSeconds, (1 + 0.1 * static_cast<double>(recipes.size())) * slowness());
  EXPECT_EQ(readStream(job.output).pictures.size(), recipes.size()) << options;
}

void expectAllPrintedByBoth(const std::vector<std::string>& recipes) {
  for (const char* name : kStencilHalftones) {
    expectAllPrinted(recipes, std::string("HalftoneType=") + name);
  }
}

std::vector<std::string> greyLevels(int step) {
  std::vector<std::string> recipes;
  for (int level = 0; level < 256; level += step) {
    recipes.push_back("24x16 300dpi picture=level:" + std::to_string(level));
  }
  return recipes;
}

std::vector<std::string> smallSizes(const std::vector<std::string>& pictures, int heights) {
  std::vector<std::string> recipes;
  for (const std::string& picture : pictures) {
    for (int height = 1; height <= heights; ++height) {
      for (int width = 1; width <= 33; ++width) {
        recipes.push_back(std::to_string(width) + "x" + std::to_string(height) +
                          " 300dpi picture=" + picture);
      }
    }
  }
  return recipes;
}

// Each seed is a page of almost one level, one of a few levels and one of two.
std::vector<std::string> fewLevels(int seeds) {
  std::vector<std::string> recipes;
  for (int seed = 0; seed < seeds; ++seed) {
    recipes.push_back("60x40 300dpi picture=almost:" + std::to_string(seed));
    recipes.push_back("16x9 300dpi picture=flat:" + std::to_string(seed));
    recipes.push_back("31x7 300dpi picture=text:" + std::to_string(seed));
  }
  return recipes;
}

TEST(HardPages, OneGreyLevelAloneIsPrinted) { expectAllPrintedByBoth(greyLevels(17)); }

TEST(HardPages, ADotAndALittleMoreIsPrinted) {
  expectAllPrintedByBoth(smallSizes({"checker:1"}, 2));
}

TEST(HardPages, AlmostSolidAndTwoLevelPagesArePrinted) { expectAllPrintedByBoth(fewLevels(15)); }

TEST(LongHardPages, EveryGreyLevelAloneIsPrinted) { expectAllPrintedByBoth(greyLevels(1)); }

TEST(LongHardPages, EverySizeFromOneDotIsPrinted) {
  expectAllPrintedByBoth(smallSizes({"black", "checker:1", "noise:3", "level:97"}, 8));
}

TEST(LongHardPages, AlmostSolidAndTwoLevelPagesArePrinted) {
  expectAllPrintedByBoth(fewLevels(400));
}

TEST(HardPages, ALargeSolidSheetIsPrinted) {
  for (const char* name : kStencilHalftones) {
    JobPlan plan = stencilJob({"1181x1394 300dpi size=Tattoo_A6 picture=level:200"},
                              std::string("AntiWrinkle=1 HalftoneType=") + name);
    plan.timeout = 250;
    const JobResult job = runJob(plan);
    EXPECT_EQ(disorderOf(job), "") << name;
    EXPECT_LT(job.processorSeconds, 10 * slowness()) << name;  // takes a third of a second
  }
}

// The threshold as it is defined, from a histogram; `exists` is false where the guard decides.
int definedThreshold(const int* histogram, int pixels, bool* exists) {
  float share[256];
  float m1 = 0.0f;
  float m2 = 0.0f;
  float m3 = 0.0f;
  for (int i = 0; i < 256; ++i) {
    share[i] = static_cast<float>(histogram[i]) / static_cast<float>(pixels);
    m1 += static_cast<float>(i) * share[i];
    m2 += static_cast<float>(i * i) * share[i];
    m3 += static_cast<float>(i * i * i) * share[i];
  }
  const float cd = m2 - m1 * m1;
  const float c0 = (-m2 * m2 + m1 * m3) / cd;
  const float c1 = (-m3 + m2 * m1) / cd;
  const auto disc =
      static_cast<float>(static_cast<double>(c1 * c1) - 4.0 * static_cast<double>(c0));
  *exists = std::isfinite(disc);
  if (!*exists || disc < 0.0f) return 128;
  const float root = my_sqrt(disc);
  const float z0 = 0.5f * (-c1 - root);
  const float z1 = 0.5f * (-c1 + root);
  const float p0 = (z1 - m1) / (z1 - z0);
  float sum = 0.0f;
  for (int i = 0; i < 256; ++i) {
    sum = share[i] + sum;
    if (sum > p0) return i;
  }
  return -1;
}

TEST(ThresholdGuard, ChangesNoPageThatNeedsNone) {
  int guarded = 0;
  int free = 0;
  for (int level = 0; level < 256; ++level) {
    for (int other = 0; other < 256; other += 3) {
      for (const int others : {0, 1, 2, 25, 600}) {
        std::vector<unsigned char> pixels(1200, static_cast<unsigned char>(level));
        for (int i = 0; i < others; ++i)
          pixels[static_cast<size_t>(i)] = static_cast<unsigned char>(other);
        int histogram[256] = {};
        for (const unsigned char pixel : pixels) ++histogram[pixel];
        bool exists = false;
        const int want = definedThreshold(histogram, 1200, &exists);
        const QMImage image(40, 30, QM_IMG_GRAY, pixels.data());
        ASSERT_EQ(thresh_global_moments(image), want)
            << others << " pixels of " << other << " on " << level;
        ++(exists ? free : guarded);
      }
    }
  }
  EXPECT_GT(guarded, 1000);
  EXPECT_GT(free, 10000);
}

}  // namespace
