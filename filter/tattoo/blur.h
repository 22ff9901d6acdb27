// A separable blur, row by row: it keeps only the rows that a pixel's taps reach.
// The result is that of two passes over the whole page with an 8-bit image between them.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_BLUR_H
#define KORVEL_TATTOO_BLUR_H

#include <cstdint>
#include <vector>

#include "tattoo/qm_image.h"
#include "tattoo/tattoo_kernels.h"

// The weights of one pass, and the figures that a kernel derives its estimate from.
class BlurKernel {
 public:
  // Copies the taps; `size` is odd. All weights are correct, but only those of a smooth kernel are
  // fast: symmetric, none negative, sum about 1.
  BlurKernel(const double* taps, int size);

  int half() const { return static_cast<int>(taps_.size() / 2); }
  BlurWeights weights() const;  // points into this object

 private:
  bool isSmooth() const;
  void makeSteps();

  std::vector<double> taps_;
  std::vector<int16_t> steps_;  // empty when the kernel is not smooth
  int shift_ = 0;
  int32_t bound_ = 0;  // of the estimate, times 2^shift_
};

// Levels as words; TattooKernels states how many of them may be read.
struct BlurredRow {
  const uint16_t* own;
  const uint16_t* blurred;
};

// Reads a page's rows once, top to bottom, and filters each with `across`, then `down`. Beyond the
// border the pixel at the border counts.
class BlurredRows {
 public:
  // Nothing is copied: pixels, kernels and `tone`, 256 levels that first replace the page's own,
  // outlive this object.
  BlurredRows(const GreyRows& grey, const BlurKernel& across, const BlurKernel& down,
              const uint8_t* tone);

  // Returns the next row, valid until the next call. To be called at most once per row.
  BlurredRow next();

 private:
  uint16_t* ownRow(int y) { return own_.data() + slot(y) * ownStride_ + across_.half(); }
  uint16_t* acrossRow(int y) { return passed_.data() + slot(y) * stride_; }
  size_t slot(int y) const { return static_cast<size_t>(y) % slots_; }
  void take(int y);

  GreyRows grey_;
  const BlurKernel& across_;
  const BlurKernel& down_;
  const uint8_t* tone_;

  size_t stride_;     // words per row, the width rounded up
  size_t ownStride_;  // words per row, with the pixels beyond both borders
  size_t slots_;      // rows kept
  std::vector<uint16_t> own_;
  std::vector<uint16_t> passed_;  // blurred across
  std::vector<uint16_t> blurred_;
  std::vector<uint16_t> blank_;
  std::vector<const uint16_t*> taps_;
  int taken_ = 0;
  int given_ = 0;
};

#endif
