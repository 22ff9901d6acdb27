// Construction, deep copies and release of the stencil library's image.
// The channel count follows from the colour layout.
// SPDX-License-Identifier: Apache-2.0
#include "tattoo/qm_image.h"

#include <cstring>

namespace {

int channelsOf(QM_IMG_COLOR color) {
  if (color == QM_IMG_GRAY) return 1;
  if (color == QM_IMG_BGR || color == QM_IMG_RGB) return 3;
  return 4;
}

}  // namespace

QMImage::QMImage(int width_, int height_, QM_IMG_COLOR color_, const unsigned char* pixels)
    : QMImage(width_, height_, color_) {
  std::memcpy(data, pixels, size());
}

QMImage::QMImage(int width_, int height_, QM_IMG_COLOR color_)
    : width(width_), height(height_), channels(channelsOf(color_)), color(color_) {
  data = new unsigned char[size()];
}

QMImage::QMImage(const QMImage& other)
    : width(other.width), height(other.height), channels(other.channels), color(other.color) {
  data = new unsigned char[size()];
  std::memcpy(data, other.data, size());
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): no image is ever assigned to itself
QMImage& QMImage::operator=(const QMImage& other) {
  width = other.width;
  height = other.height;
  channels = other.channels;
  color = other.color;
  delete[] data;
  data = nullptr;  // stays so when the next line throws
  data = new unsigned char[size()];
  std::memcpy(data, other.data, size());
  return *this;
}

QMImage::~QMImage() {
  width = height = channels = 0;
  delete[] data;
  data = nullptr;
}

size_t QMImage::size() const {
  return static_cast<size_t>(width) * static_cast<size_t>(height) * static_cast<size_t>(channels);
}
