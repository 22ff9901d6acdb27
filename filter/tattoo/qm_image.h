// The stencil library's image: unpadded rows, top to bottom, and a buffer of its own.
// Filters take it by reference and return a new one by value.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TATTOO_QM_IMAGE_H
#define KORVEL_TATTOO_QM_IMAGE_H

#include <cstddef>

// Pixel layouts, named by the order of their bytes.
enum QM_IMG_COLOR : int { QM_IMG_GRAY = 0, QM_IMG_BGR, QM_IMG_RGB, QM_IMG_BGRA, QM_IMG_RGBA };

// Owns width * height * channels bytes, never a caller's memory. Sides are not checked.
// An allocation that fails throws std::bad_alloc.
class QMImage {
 public:
  // Copies the pixels, which may be freed at once.
  QMImage(int width, int height, QM_IMG_COLOR color, const unsigned char* pixels);
  // Leaves the pixels undefined: the caller writes every byte.
  QMImage(int width, int height, QM_IMG_COLOR color);
  QMImage(const QMImage& other);
  // Not for an image and itself: the old pixels are released before the new ones are copied.
  QMImage& operator=(const QMImage& other);
  ~QMImage();

  // Bytes of the pixel buffer.
  size_t size() const;

  int width = 0;     // pixels per row
  int height = 0;    // rows
  int channels = 4;  // bytes per pixel
  QM_IMG_COLOR color = QM_IMG_BGR;
  unsigned char* data = nullptr;
};

// The grey pixels of a page, top row first, in memory that is not owned and outlives this object.
struct GreyRows {
  GreyRows(const unsigned char* first, size_t bytesBetweenRows, int pixelsPerRow, int rows)
      : pixels(first), stride(bytesBetweenRows), width(pixelsPerRow), height(rows) {}
  // An image with one byte per pixel. Implicit, so that a filter takes either.
  GreyRows(const QMImage& image)
      : GreyRows(image.data, static_cast<size_t>(image.width), image.width, image.height) {}

  const unsigned char* row(int y) const { return pixels + static_cast<size_t>(y) * stride; }

  const unsigned char* pixels;
  size_t stride;  // bytes between rows
  int width;
  int height;
};

#endif
