// The approximations' exact steps: one operation per line where the order decides a bit.
// Single precision throughout, except in the two places where double is written.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/numeric.h"

namespace {

constexpr float kTolerance = 0.000001f;

}  // namespace

float myabs(float x) { return x < 0.0f ? -x : x; }

float my_sqrt(float x) {
  if (0.0f > x) return -1.0f;
  if (x == 0.0f) return 0.0f;
  float y = x / 2.0f;
  for (;;) {
    const float quotient = x / y;
    const float sum = y + quotient;
    const float next = 0.5f * sum;
    // The estimate before the last step: dots depend on the bit (MySqrt).
    if (kTolerance > myabs(next - y)) return y;
    y = next;
  }
}

float my_exp(float x) {
  if (0.0f > x) return static_cast<float>(1.0 / static_cast<double>(my_exp(-x)));
  float sum = 1.0f;
  float term = 1.0f;
  for (int n = 1; n <= 20; ++n) {
    term = (x / static_cast<float>(n)) * term;
    sum = sum + term;  // the small term that ends the series still counts
    if (static_cast<double>(term) < 1e-6) break;
  }
  return sum;
}

float my_ln(float x) {
  if (x <= 0.0f) return -1.0f;
  float y = (x - 1.0f) / (1.0f + x);
  for (;;) {
    // Divided by x, not by e^y: another road to the same fixed point.
    const float next = y - (my_exp(y) - x) / x;
    if (kTolerance > myabs(next - y)) return y;  // the estimate before the last step
    y = next;
  }
}

float my_pow(float base, float exponent) {
  if (base == 0.0f) {
    if (exponent == 0.0f) return 1.0f;
    return exponent > 0.0f ? 0.0f : -1.0f;
  }
  if (base < 0.0f) {
    const float fraction = exponent - static_cast<float>(static_cast<int>(exponent));
    if (fraction != 0.0f) return -1.0f;
  }
  return my_exp(exponent * my_ln(base));
}

int my_round(float x) {
  // NOLINTNEXTLINE(bugprone-incorrect-roundings): the single-precision sum is the definition
  if (static_cast<double>(x) >= 0.0) return static_cast<int>(x + 0.5f);
  return static_cast<int>(x - 0.5f);
}

int myClamp(int value, int low, int high) {
  if (value < low) return low;
  return value < high ? value : high;
}
