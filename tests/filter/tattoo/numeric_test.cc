// The approximations bit by bit: single-precision results as hex floats.
// Each was worked out apart, one rounding an operation.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/numeric.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

namespace {

std::string hexFloat(float x) {
  char text[40];
  std::snprintf(text, sizeof text, "%a", static_cast<double>(x));
  return text;
}

// Equal to the bit, the sign of zero included.
void expectSame(float have, float want, const std::string& sentence) {
  EXPECT_EQ(std::bit_cast<uint32_t>(have), std::bit_cast<uint32_t>(want))
      << sentence << ": have " << hexFloat(have) << ", want " << hexFloat(want);
}

struct Case {
  const char* sentence;
  float x, want;
};

TEST(MyAbs, TurnsOnlyNumbersBelowZero) {
  constexpr Case kCases[] = {
      {"positive", 1.5f, 1.5f},
      {"negative", -1.5f, 1.5f},
      {"zero", 0.0f, 0.0f},
      {"minus zero is not below zero", -0.0f, -0.0f},
      {"the smallest", -0x1p-149f, 0x1p-149f},
  };
  for (const Case& c : kCases) expectSame(myabs(c.x), c.want, c.sentence);
}

TEST(MySqrt, ReturnsTheEstimateBeforeTheLastStep) {
  constexpr Case kCases[] = {
      {"zero", 0x0p+0f, 0x0p+0f},
      {"below zero is an error", -0x1p+0f, -0x1p+0f},
      {"a little below zero", -0x1.4484cp-100f, -0x1p+0f},
      {"4 meets the tolerance at once", 0x1p+2f, 0x1p+1f},
      {"the root of two", 0x1p+1f, 0x1.6a09e6p+0f},
      {"of a half", 0x1p-1f, 0x1.6a09e6p-1f},
      {"of three", 0x1.8p+1f, 0x1.bb67bp+0f},
      {"of one", 0x1p+0f, 0x1p+0f},
      {"of a tenth", 0x1.99999ap-4f, 0x1.43d136p-2f},
      {"of a hundred", 0x1.9p+6f, 0x1.4p+3f},
      {"of two pi", 0x1.921fb6p+2f, 0x1.40d934p+1f},
      {"of white", 0x1.fep+7f, 0x1.feffcp+3f},
      {"of white squared", 0x1.fc02p+15f, 0x1.fep+7f},
      {"just below that", 0x1.fc01fep+15f, 0x1.fep+7f},
      {"of a large number", 0x1p+24f, 0x1p+12f},
      {"of a ten-thousandth", 0x1.a36e2ep-14f, 0x1.47b412p-7f},
      {"of a millionth of a tenth, where the tolerance is coarse", 0x1.ad7f2ap-24f,
       0x1.4b9c1cp-12f},
      {"of less than the tolerance", 0x1.197998p-40f, 0x1.170992p-19f},
      {"of a tiny number: the first half stays", 0x1.92a738p-20f, 0x1.411674p-10f},
      {"a discriminant", 0x1.5553f4p+14f, 0x1.2799dcp+7f},
      {"another", 0x1.61bp+5f, 0x1.a98b5cp+2f},
  };
  for (const Case& c : kCases) expectSame(my_sqrt(c.x), c.want, c.sentence);
}

TEST(MyExp, SumsTwentyTermsAtMost) {
  constexpr Case kCases[] = {
      {"zero ends at once", 0x0p+0f, 0x1p+0f},
      {"minus zero", -0x0p+0f, 0x1p+0f},
      {"one", 0x1p+0f, 0x1.5bf0aap+1f},
      {"minus one is divided in double", -0x1p+0f, 0x1.78b562p-2f},
      {"a half", 0x1p-1f, 0x1.a6129ap+0f},
      {"minus a half", -0x1p-1f, 0x1.368b2ep-1f},
      {"two", 0x1p+1f, 0x1.d8e64ep+2f},
      {"minus two", -0x1p+1f, 0x1.152aa8p-3f},
      {"a tenth", 0x1.99999ap-4f, 0x1.1aec7cp+0f},
      {"minus a tenth", -0x1.99999ap-4f, 0x1.cf46d8p-1f},
      {"less than the tolerance still counts", 0x1.ad7f2ap-24f, 0x1.000002p+0f},
      {"a thousandth", 0x1.0624dep-10f, 0x1.004192p+0f},
      {"ln 2", 0x1.62e43p-1f, 0x1p+1f},
      {"minus ln 10", -0x1.26bb1cp+1f, 0x1.99999ap-4f},
      {"five", 0x1.4p+2f, 0x1.28d388p+7f},
      {"minus five", -0x1.4p+2f, 0x1.b994p-8f},
      {"minus 4.5, a kernel's exponent", -0x1.2p+2f, 0x1.6c0506p-7f},
      {"minus 12.5 over 9", -0x1.638e38p+0f, 0x1.feac66p-3f},
      {"nine", 0x1.2p+3f, 0x1.fa3862p+12f},
      {"ten falls short", 0x1.4p+3f, 0x1.579decp+14f},
      {"minus ten is too large", -0x1.4p+3f, 0x1.7d72b6p-15f},
      {"twenty falls shorter", 0x1.4p+4f, 0x1.02afb4p+28f},
      {"thirty", 0x1.ep+4f, 0x1.5f2c0cp+38f},
      {"minus thirty", -0x1.ep+4f, 0x1.753dd6p-39f},
      {"ninety", 0x1.68p+6f, 0x1.158b58p+69f},
      {"minus a hundred", -0x1.9p+6f, 0x1.d804ccp-73f},
  };
  for (const Case& c : kCases) expectSame(my_exp(c.x), c.want, c.sentence);
}

TEST(MyLn, ReturnsTheEstimateBeforeTheLastStep) {
  constexpr Case kCases[] = {
      {"one starts at the answer", 0x1p+0f, 0x0p+0f},
      {"zero is an error", 0x0p+0f, -0x1p+0f},
      {"minus zero too", -0x0p+0f, -0x1p+0f},
      {"below zero too", -0x1p+1f, -0x1p+0f},
      {"two", 0x1p+1f, 0x1.62e43p-1f},
      {"a half", 0x1p-1f, -0x1.62e432p-1f},
      {"three", 0x1.8p+1f, 0x1.193ea8p+0f},
      {"ten", 0x1.4p+3f, 0x1.26bb1cp+1f},
      {"a tenth", 0x1.99999ap-4f, -0x1.26bb1ap+1f},
      {"a hundred", 0x1.9p+6f, 0x1.26bb1ap+2f},
      {"a thousand", 0x1.f4p+9f, 0x1.ba18dcp+2f},
      {"nine tenths", 0x1.ccccccp-1f, -0x1.af8e82p-4f},
      {"just below one", 0x1.fffffep-1f, -0x1p-25f},
      {"just above one", 0x1.000002p+0f, 0x1p-24f},
      {"1 / 255, the darkest step", 0x1.010102p-8f, -0x1.62a412p+2f},
      {"1 / 64", 0x1p-6f, -0x1.0a2b24p+2f},
      {"63 / 64", 0x1.f8p-1f, -0x1.0205d2p-6f},
      {"1 / 191", 0x1.571ed4p-8f, -0x1.50254p+2f},
      {"190 / 191", 0x1.fd51c2p-1f, -0x1.580656p-8f},
      {"1 / 2, of 127", 0x1.020408p-1f, -0x1.5ee028p-1f},
      {"a ten-thousandth", 0x1.a36e2ep-14f, -0x1.26bfecp+3f},
  };
  for (const Case& c : kCases) expectSame(my_ln(c.x), c.want, c.sentence);
}

TEST(MyPow, HasItsOwnIdeaOfNegativeBases) {
  struct PowCase {
    const char* sentence;
    float base, exponent, want;
  };
  constexpr PowCase kCases[] = {
      {"0 to the 0", 0x0p+0f, 0x0p+0f, 0x1p+0f},
      {"0 to a positive power", 0x0p+0f, 0x1p+1f, 0x0p+0f},
      {"0 to a negative power is an error", 0x0p+0f, -0x1p+0f, -0x1p+0f},
      {"minus zero is zero", -0x0p+0f, 0x1p+1f, 0x0p+0f},
      {"1 to any power", 0x1p+0f, 0x1.cp+2f, 0x1p+0f},
      {"a negative base, fractional power", -0x1p+1f, 0x1p-1f, -0x1p+0f},
      {"a negative base, negative fraction", -0x1p+1f, -0x1.8p+0f, -0x1p+0f},
      {"a negative base, integral power is e to its negative", -0x1p+1f, 0x1p+1f, 0x1.152aa8p-3f},
      {"even for the power 0", -0x1p+1f, 0x0p+0f, 0x1p+0f},
      {"and for a negative one", -0x1p+1f, -0x1.8p+1f, 0x1.415e5ep+4f},
      {"2 squared", 0x1p+1f, 0x1p+1f, 0x1p+2f},
      {"2 to the 0", 0x1p+1f, 0x0p+0f, 0x1p+0f},
      {"2 to the -1", 0x1p+1f, -0x1p+0f, 0x1p-1f},
      {"2 to a half", 0x1p+1f, 0x1p-1f, 0x1.6a09e8p+0f},
      {"a half to 0.85", 0x1p-1f, 0x1.b33334p-1f, 0x1.1c0cbep-1f},
      {"a half to 0.7", 0x1p-1f, 0x1.666666p-1f, 0x1.3b2c46p-1f},
      {"1 / 64 to 0.85", 0x1p-6f, 0x1.b33334p-1f, 0x1.ddb67ep-6f},
      {"63 / 64 to 0.85", 0x1.f8p-1f, 0x1.b33334p-1f, 0x1.f9312p-1f},
      {"1 / 191 to 0.7", 0x1.571ed4p-8f, 0x1.666666p-1f, 0x1.9eaa0cp-6f},
      {"190 / 191 to 0.7", 0x1.fd51c2p-1f, 0x1.666666p-1f, 0x1.fe1f3ep-1f},
      {"1 / 255 to a half", 0x1.010102p-8f, 0x1p-1f, 0x1.00805ep-4f},
      {"1 / 255 to 1.5", 0x1.010102p-8f, 0x1.8p+0f, 0x1.018c28p-12f},
      {"100 / 127 to 1.5", 0x1.93264cp-1f, 0x1.8p+0f, 0x1.65bcc6p-1f},
      {"10 to 3", 0x1.4p+3f, 0x1.8p+1f, 0x1.f3fe78p+9f},
  };
  for (const PowCase& c : kCases) expectSame(my_pow(c.base, c.exponent), c.want, c.sentence);
}

TEST(MyRound, GoesAwayFromZeroByTruncation) {
  struct RoundCase {
    const char* sentence;
    float x;
    int want;
  };
  constexpr RoundCase kCases[] = {
      {"zero", 0.0f, 0},
      {"minus zero", -0.0f, 0},
      {"a half up", 0.5f, 1},
      {"a half down", -0.5f, -1},
      {"2.5", 2.5f, 3},
      {"-2.5", -2.5f, -3},
      {"3.5", 3.5f, 4},
      {"less than a half", 0.4f, 0},
      {"less than a half below zero", -0.4f, 0},
      {"just below 2.5", 0x1.3ffffep+1f, 2},
      {"just below a half, where the sum is rounded up to 1", 0x1.fffffep-2f, 1},
      {"the same below zero", -0x1.fffffep-2f, -1},
      {"just above a half", 0x1.000002p-1f, 1},
      {"white", 255.0f, 255},
      {"254.5", 254.5f, 255},
      {"500", 500.0f, 500},
      {"an odd number whose half cannot be held goes to the even one", 8388609.0f, 8388610},
      {"the same below zero", -8388609.0f, -8388610},
      {"16777216", 16777216.0f, 16777216},
      {"-200", -200.0f, -200},
  };
  for (const RoundCase& c : kCases) EXPECT_EQ(my_round(c.x), c.want) << c.sentence;
}

TEST(MyClamp, TestsTheLowEndFirst) {
  struct ClampCase {
    const char* sentence;
    int value, low, high, want;
  };
  constexpr ClampCase kCases[] = {
      {"inside", 7, 0, 255, 7},
      {"above", 300, 0, 255, 255},
      {"below", -5, 0, 255, 0},
      {"at the high end", 255, 0, 255, 255},
      {"at the low end", 0, 0, 255, 0},
      {"one below the high end", 254, 0, 255, 254},
      {"ends crossed, value below the low one", 4, 5, 3, 5},
      {"ends crossed, value between them", 4, 4, 3, 3},
      {"ends crossed, value above both", 9, 5, 3, 3},
      {"one column", 3, 0, 0, 0},
      {"the least int", std::numeric_limits<int>::min(), -1, 1, -1},
      {"the greatest int", std::numeric_limits<int>::max(), -1, 1, 1},
  };
  for (const ClampCase& c : kCases) {
    EXPECT_EQ(myClamp(c.value, c.low, c.high), c.want) << c.sentence;
  }
}

}  // namespace
