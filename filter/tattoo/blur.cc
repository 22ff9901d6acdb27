// The whole-number estimate of a blur, its bound, and the ring of rows that both passes share.
// Rows of the first pass are computed when the second one first needs them.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/blur.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kLargestStep = 32767.0;
constexpr int kLargestShift = 22;
static_assert((int64_t{256} << kLargestShift) < INT32_MAX / 3 * 2, "sums, with a margin, fit");

}  // namespace

BlurKernel::BlurKernel(const double* taps, int size) : taps_(taps, taps + (size / 2 * 2 + 1)) {
  if (isSmooth()) makeSteps();
}

// With a sum of hardly more than 1, the reference implementation's level is within 0..255. Taps
// that are not numbers fail every comparison, so they are not smooth.
bool BlurKernel::isSmooth() const {
  const size_t count = taps_.size();
  double sum = 0.0;
  for (size_t k = 0; k < count; ++k) {
    if (!(taps_[k] >= 0.0 && taps_[k] == taps_[count - 1 - k])) return false;
    sum = sum + taps_[k];
  }
  return count <= 1001 && sum <= 1.0009765625;
}

// Each tap w becomes a whole step q, nearest to w * 2^shift. With d = q / 2^shift - w the estimate
// of a sum S over levels v misses it by the sum of d * v: at most 255 * the sum of the positive d
// upwards, and 255 * that of the negative ones downwards. The reference value itself is not S: a
// thousand additions in double move it by less than 2^-30, the narrowing to float and the addition
// of a half by 2^-17 each, all below 256. Both together are the bound.
//
// Now let u be the estimate, a half and the bound, in steps. Whatever the reference value before
// truncation, it is at most two bounds below u. So unless the remainder of u is below two bounds,
// both have the same whole part.
void BlurKernel::makeSteps() {
  const double largest = *std::max_element(taps_.begin(), taps_.end());
  shift_ = kLargestShift;
  while (std::round(std::ldexp(largest, shift_)) > kLargestStep) --shift_;

  double above = 0.0;
  double below = 0.0;
  for (const double tap : taps_) {
    const double miss = std::round(std::ldexp(tap, shift_)) - std::ldexp(tap, shift_);
    above += std::max(miss, 0.0);
    below += std::max(-miss, 0.0);
  }
  const double ownMiss = std::ldexp(1.0, shift_ - 15);
  bound_ = static_cast<int32_t>(std::ceil(255.0 * std::max(above, below) + ownMiss));

  // Up to the middle one, and a zero where that one has no partner.
  steps_.assign(static_cast<size_t>(half() + 2) / 2 * 2, 0);
  for (size_t k = 0; k <= static_cast<size_t>(half()); ++k) {
    steps_[k] = static_cast<int16_t>(std::round(std::ldexp(taps_[k], shift_)));
  }
}

BlurWeights BlurKernel::weights() const {
  const int32_t rounding = (1 << shift_ >> 1) + bound_;
  return {taps_.data(), taps_.size(), steps_.empty() ? nullptr : steps_.data(),
          shift_,       rounding,     2 * bound_};
}

BlurredRows::BlurredRows(const GreyRows& grey, const BlurKernel& across, const BlurKernel& down,
                         const uint8_t* tone)
    : grey_(grey),
      across_(across),
      down_(down),
      tone_(tone),
      stride_((static_cast<size_t>(grey.width) + kWordsAtOnce - 1) / kWordsAtOnce * kWordsAtOnce),
      ownStride_(stride_ + 2 * static_cast<size_t>(across.half())),
      slots_(2 * static_cast<size_t>(down.half()) + 1),
      own_(slots_ * ownStride_),
      passed_(slots_ * stride_),
      blurred_(stride_),
      blank_(stride_),
      taps_(2 * static_cast<size_t>(std::max(across.half(), down.half())) + 2) {}

// Reads row y, replaces its levels, repeats its ends and blurs it across.
void BlurredRows::take(int y) {
  const auto width = static_cast<size_t>(grey_.width);
  const auto half = static_cast<size_t>(across_.half());
  uint16_t* own = ownRow(y);
  tattooKernels().tone(grey_.row(y), width, tone_, own);
  std::fill_n(own - half, half, own[0]);
  std::fill_n(own + width, half, own[width - 1]);

  for (size_t k = 0; k < 2 * half + 1; ++k) taps_[k] = own - half + k;
  taps_[2 * half + 1] = blank_.data();
  tattooKernels().blur(across_.weights(), taps_.data(), width, acrossRow(y));
}

BlurredRow BlurredRows::next() {
  const int y = given_++;
  const int half = down_.half();
  while (taken_ < grey_.height && taken_ <= y + half) take(taken_++);

  size_t tap = 0;
  for (int row = y - half; row <= y + half; ++row) {
    taps_[tap++] = acrossRow(std::clamp(row, 0, grey_.height - 1));
  }
  taps_[tap] = blank_.data();
  tattooKernels().blur(down_.weights(), taps_.data(), static_cast<size_t>(grey_.width),
                       blurred_.data());
  return {ownRow(y), blurred_.data()};
}
