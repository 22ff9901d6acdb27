// A separable blur row by row: nothing larger than the rows that a pixel's taps reach is kept.
// A page comes out as from two whole passes with an 8-bit image between them.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_BLUR_H
#define KORVEL_TATTOO_BLUR_H

#include <cstdint>
#include <vector>

#include "tattoo/qm_image.h"
#include "tattoo/rows.h"

// The weights of one pass and what a row kernel wants to know of them.
class BlurKernel {
 public:
  // Copies the taps; `size` is odd, as everywhere. Any weights will do, but only those of a smooth
  // kernel are fast: symmetric, none negative, sum about 1.
  BlurKernel(const double* taps, int size);

  int half() const { return static_cast<int>(taps_.size() / 2); }
  BlurWeights weights() const;  // points into this object

 private:
  bool isSmooth() const;
  void makeSteps();

  std::vector<double> taps_;
  std::vector<int16_t> steps_;  // empty when there is no estimate
  int shift_ = 0;
  int32_t bound_ = 0;  // of the estimate, times 2^shift_
};

// Levels as words; see TattooRows for how many may be read.
struct BlurredRow {
  const uint16_t* own;
  const uint16_t* blurred;
};

// Reads an image's rows once, top to bottom, `across` for each row, then `down`; what lies beyond
// the border is the pixel at it.
class BlurredRows {
 public:
  // The pixels are borrowed. `tone`, when given, has 256 levels that replace theirs first.
  BlurredRows(const QMImage& grey, const BlurKernel& across, const BlurKernel& down,
              const uint8_t* tone = nullptr);

  // The next row, valid until the next call; at most as many calls as rows.
  BlurredRow next();

 private:
  uint16_t* ownRow(int y) { return own_.data() + slot(y) * ownStride_ + across_.half(); }
  uint16_t* acrossRow(int y) { return passed_.data() + slot(y) * stride_; }
  size_t slot(int y) const { return static_cast<size_t>(y) % slots_; }
  void take(int y);

  const unsigned char* pixels_;
  int width_;
  int height_;
  const BlurKernel& across_;
  const BlurKernel& down_;
  const uint8_t* tone_;

  size_t stride_;     // words of a row, width rounded up
  size_t ownStride_;  // the same with the pixels beyond both borders
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
