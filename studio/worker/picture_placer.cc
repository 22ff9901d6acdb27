// Upright pictures are resampled along one axis after the other, all others once they are about as
// fine as the dots. All sums are integers. SPDX-License-Identifier: Apache-2.0
#include "studio/worker/picture_placer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

#include "studio/sentences.h"
#include "studio/worker/page_dots.h"
#include "tools/preview/document.h"

namespace korvel {
namespace {

constexpr double kWhole = 1024;  // the weight of a pixel that covers a dot
constexpr uint32_t kHalf = 1U << 19;
constexpr float kHalfLevel = 0.5F;  // rounds what is truncated next, as ink is never negative

// ---- Upright ----

// Pixels from `first` with their weights in one dot.
struct Share {
  size_t first = 0;
  std::vector<uint32_t> weights;
};

struct Axis {
  double scale = 1;   // dots for a pixel, above 0
  double offset = 0;  // the dot at which the first pixel begins
  size_t pixels = 0;
  size_t dots = 0;
};

// The mean of the pixels below the dot; the weights of a dot that they cover add up to kWhole.
Share meanShare(const Axis& axis, double from, double to) {
  Share share;
  const double last = static_cast<double>(axis.pixels);
  const double start = std::clamp(from, 0.0, last);
  const double end = std::clamp(to, 0.0, last);
  const auto weightAt = [&](double pixel) {
    return static_cast<uint32_t>(std::lround((pixel - start) / (to - from) * kWhole));
  };
  share.first = static_cast<size_t>(start);
  for (double at = start; at < end;) {
    const double next = std::min(std::floor(at) + 1, end);
    share.weights.push_back(weightAt(next) - weightAt(at));
    at = next;
  }
  return share;
}

Share nearestShare(const Axis& axis, double middle) {
  if (middle < 0 || middle >= static_cast<double>(axis.pixels)) return {};
  return {static_cast<size_t>(middle), {static_cast<uint32_t>(kWhole)}};
}

// Between the middles of two pixels; the outermost reach to the edge.
Share interpolatedShare(const Axis& axis, double middle) {
  if (middle < 0 || middle >= static_cast<double>(axis.pixels)) return {};
  const double at = std::clamp(middle - 0.5, 0.0, static_cast<double>(axis.pixels - 1));
  const auto second = static_cast<uint32_t>(std::lround((at - std::floor(at)) * kWhole));
  const auto first = static_cast<size_t>(at);
  if (second == 0) return {first, {static_cast<uint32_t>(kWhole)}};
  return {first, {static_cast<uint32_t>(kWhole) - second, second}};
}

std::vector<Share> sharesOf(const Axis& axis, bool twoTone) {
  std::vector<Share> shares(axis.dots);
  for (size_t dot = 0; dot < axis.dots; ++dot) {
    const double from = (static_cast<double>(dot) - axis.offset) / axis.scale;
    const double to = from + 1 / axis.scale;
    const double middle = (from + to) / 2;
    shares[dot] = axis.scale <= 1 ? meanShare(axis, from, to)
                  : twoTone       ? nearestShare(axis, middle)
                                  : interpolatedShare(axis, middle);
  }
  return shares;
}

// The first pass, along the columns: one row of dots of the picture's width.
void addRows(const GreyPicture& picture, const Share& share, std::vector<uint32_t>* sums) {
  std::fill(sums->begin(), sums->end(), 0);
  uint32_t* const sum = sums->data();
  for (size_t i = 0; i < share.weights.size(); ++i) {
    const uint8_t* const row = &picture.grey[(share.first + i) * picture.width];
    const uint32_t weight = share.weights[i];
    for (size_t x = 0; x < picture.width; ++x) sum[x] += weight * (255U - row[x]);
  }
}

void placeUpright(const GreyPicture& picture, const Axis& across, const Axis& down,
                  const InkPage& page) {
  const bool twoTone = picture.isTwoTone();
  const std::vector<Share> columns = sharesOf(across, twoTone);
  const std::vector<Share> rows = sharesOf(down, twoTone);
  std::vector<uint32_t> sums(picture.width);
  for (size_t y = 0; y < rows.size(); ++y) {
    if (rows[y].weights.empty()) continue;
    addRows(picture, rows[y], &sums);
    unsigned char* const target = page.ink + y * page.stride;
    for (size_t x = 0; x < columns.size(); ++x) {
      const Share& share = columns[x];
      uint32_t ink = kHalf;
      for (size_t i = 0; i < share.weights.size(); ++i) {
        ink += share.weights[i] * sums[share.first + i];
      }
      if (!share.weights.empty()) target[x] = static_cast<unsigned char>(ink >> 20);
    }
  }
}

// ---- Turned ----

// The picture with at most one pixel for a dot in either direction.
GreyPicture asFineAsDots(const GreyPicture& picture, double across, double down) {
  GreyPicture reduced;
  const auto lengthOf = [](size_t pixels, double scale) {
    const double length = std::round(static_cast<double>(pixels) * std::min(1.0, scale));
    return std::max<size_t>(1, static_cast<size_t>(length));
  };
  reduced.width = lengthOf(picture.width, across);
  reduced.height = lengthOf(picture.height, down);
  reduced.grey.resize(reduced.width * reduced.height);
  const auto axisOf = [](size_t pixels, size_t dots) {
    return Axis{static_cast<double>(dots) / static_cast<double>(pixels), 0, pixels, dots};
  };
  placeUpright(picture, axisOf(picture.width, reduced.width),
               axisOf(picture.height, reduced.height),
               {reduced.width, reduced.height, reduced.width, reduced.grey.data()});
  for (uint8_t& value : reduced.grey) value = static_cast<uint8_t>(255 - value);
  return reduced;
}

// Reads a picture between its pixels; around it is paper.
class Sampler {
 public:
  // `sharpness`: an edge between two pixels is this part of a pixel wide.
  Sampler(const GreyPicture& picture, float sharpness)
      : picture_(picture),
        width_(static_cast<int>(picture.width)),
        height_(static_cast<int>(picture.height)),
        sharpness_(sharpness) {}

  bool isBeside(double u, double v) const {
    return u <= -1 || v <= -1 || u >= width_ + 1 || v >= height_ + 1;
  }
  unsigned char inkAt(double u, double v) const {
    const int x = static_cast<int>(u + 1.5) - 2;  // floor(u - 0.5), u being above -1
    const int y = static_cast<int>(v + 1.5) - 2;
    const float right = edge(static_cast<float>(u - 0.5 - x));
    const float down = edge(static_cast<float>(v - 0.5 - y));
    const float upper = ink(x, y) + right * (ink(x + 1, y) - ink(x, y));
    const float lower = ink(x, y + 1) + right * (ink(x + 1, y + 1) - ink(x, y + 1));
    return static_cast<unsigned char>(upper + down * (lower - upper) + kHalfLevel);
  }

 private:
  float edge(float part) const { return std::clamp((part - 0.5F) * sharpness_ + 0.5F, 0.0F, 1.0F); }
  float ink(int x, int y) const {
    if (x < 0 || y < 0 || x >= width_ || y >= height_) return 0;
    const size_t at = static_cast<size_t>(y) * picture_.width + static_cast<size_t>(x);
    return static_cast<float>(255 - picture_.grey[at]);
  }

  const GreyPicture& picture_;
  int width_;
  int height_;
  float sharpness_;
};

Matrix inverse(const Matrix& m) {
  const double determinant = m[0] * m[3] - m[1] * m[2];
  const Matrix linear = {
      m[3] / determinant, -m[1] / determinant, -m[2] / determinant, m[0] / determinant, 0, 0};
  return {linear[0],
          linear[1],
          linear[2],
          linear[3],
          -linear[0] * m[4] - linear[2] * m[5],
          -linear[1] * m[4] - linear[3] * m[5]};
}

void placeTurned(const GreyPicture& original, const Matrix& onto, const InkPage& page) {
  const double across = std::hypot(onto[0], onto[1]);
  const double down = std::hypot(onto[2], onto[3]);
  const GreyPicture picture = asFineAsDots(original, across, down);
  const double moreX = static_cast<double>(original.width) / static_cast<double>(picture.width);
  const double moreY = static_cast<double>(original.height) / static_cast<double>(picture.height);
  const Matrix back = inverse(
      {onto[0] * moreX, onto[1] * moreX, onto[2] * moreY, onto[3] * moreY, onto[4], onto[5]});
  const double enlarged = std::max(1.0, std::min(across, down));
  const Sampler sampler(picture, picture.isTwoTone() ? static_cast<float>(enlarged) : 1.0F);
  for (size_t y = 0; y < page.height; ++y) {
    const double middleY = static_cast<double>(y) + 0.5;
    for (size_t x = 0; x < page.width; ++x) {
      const double middleX = static_cast<double>(x) + 0.5;
      const double u = back[0] * middleX + back[2] * middleY + back[4];
      const double v = back[1] * middleX + back[3] * middleY + back[5];
      if (!sampler.isBeside(u, v)) page.ink[y * page.stride + x] = sampler.inkAt(u, v);
    }
  }
}

// The Exif orientation of a picture that a quarter turn brings to where `onto` shows it.
unsigned orientationOf(const Matrix& onto) {
  if (onto[1] == 0 && onto[2] == 0) return onto[0] > 0 ? 1 : 3;
  return onto[1] > 0 ? 6 : 8;
}

Result<void> savePage(const std::string& target, RasterPage* page) {
  if (!writePage(target, page)) return Failure{kDiskFull.english};
  return {};
}

}  // namespace

void placePicture(GreyPicture picture, const Matrix& onto, const InkPage& page) {
  const bool isQuarter = (onto[1] == 0 && onto[2] == 0) || (onto[0] == 0 && onto[3] == 0);
  if (!isQuarter) {
    placeTurned(picture, onto, page);
    return;
  }
  const double wide = static_cast<double>(picture.width);
  const double high = static_cast<double>(picture.height);
  const double left = onto[4] + std::min(0.0, onto[0] * wide) + std::min(0.0, onto[2] * high);
  const double top = onto[5] + std::min(0.0, onto[1] * wide) + std::min(0.0, onto[3] * high);
  const GreyPicture turned = upright(std::move(picture), orientationOf(onto));
  placeUpright(turned, {std::fabs(onto[0] + onto[2]), left, turned.width, page.width},
               {std::fabs(onto[1] + onto[3]), top, turned.height, page.height}, page);
}

Result<void> drawPicture(GreyPicture picture, const Matrix& onto, const std::string& blank,
                         const std::string& target) {
  Result<RasterPage> page = loadRasterPage(blank);
  if (!page) return Failure{page.sentence()};
  const cups_page_header2_t& header = page->header;
  placePicture(std::move(picture), onto,
               {header.cupsWidth, header.cupsHeight, header.cupsBytesPerLine, page->pixels.data()});
  return savePage(target, &*page);
}

Result<void> movePage(const std::string& source, long right, long down, const std::string& target) {
  Result<RasterPage> page = loadRasterPage(source);
  if (!page) return Failure{page.sentence()};
  const long width = page->header.cupsWidth;
  const long height = page->header.cupsHeight;
  const size_t stride = page->header.cupsBytesPerLine;
  const std::vector<unsigned char> before =
      std::exchange(page->pixels, std::vector<unsigned char>(page->pixels.size(), 0));
  const long from = std::clamp(right, 0L, width);
  const long to = std::clamp(width + right, 0L, width);
  for (long y = std::max(0L, down); y < std::min(height, height + down) && from < to; ++y) {
    std::memcpy(&page->pixels[static_cast<size_t>(y) * stride + static_cast<size_t>(from)],
                &before[static_cast<size_t>(y - down) * stride + static_cast<size_t>(from - right)],
                static_cast<size_t>(to - from));
  }
  return savePage(target, &*page);
}

}  // namespace korvel
