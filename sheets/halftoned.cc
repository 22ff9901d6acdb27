// The steps of a page without tone, turn and frame.
// SPDX-License-Identifier: Apache-2.0
#include "sheets/halftoned.h"

#include "image/cximage.h"
#include "tattoo/pipelines.h"

namespace korvel {
namespace {

constexpr size_t kTattoo = 8;
constexpr size_t kTattooZ4 = 9;
constexpr uint32_t kGreyBits = 8;

DotCanvas stencilled(const DotCanvas& picture, bool fine) {
  const QMImage grey(picture.width(), picture.height(), QM_IMG_GRAY, picture.dots().data());
  const QMImage dots = fine ? qmTattooDitheringZ4(grey) : qmTattooDithering(grey);
  DotCanvas result(picture.width(), picture.height());
  for (int y = 0; y < result.height(); ++y) {
    for (int x = 0; x < result.width(); ++x) {
      const ptrdiff_t at = static_cast<ptrdiff_t>(y) * result.width() + x;
      if (dots.data[at] != 0) result.set(x, y);
    }
  }
  return result;
}

}  // namespace

DotCanvas halftoned(const DotCanvas& picture, size_t setting) {
  if (setting == kTattoo || setting == kTattooZ4) return stencilled(picture, setting == kTattooZ4);
  const auto width = static_cast<uint32_t>(picture.width());
  const auto height = static_cast<uint32_t>(picture.height());
  DotCanvas result(picture.width(), picture.height());
  CxImage image;
  if (!image.CreateFromArray(picture.dots().data(), width, height, kGreyBits, width, false)) {
    return result;
  }
  image.Dither(static_cast<DitherMethod>(setting));
  image.IncreaseBpp(kGreyBits);
  for (int y = 0; y < result.height(); ++y) {
    for (int x = 0; x < result.width(); ++x) {
      if (image.GetPixelIndex(x, y) != 0) result.set(x, y);
    }
  }
  image.Destroy();
  return result;
}

}  // namespace korvel
