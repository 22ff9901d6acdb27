// Pictures by libpng's simplified reader.
// SPDX-License-Identifier: Apache-2.0
#include "tests/spooler/picture.h"

#include <png.h>

#include <algorithm>

size_t Picture::printed() const {
  return static_cast<size_t>(std::count(dots.begin(), dots.end(), uint8_t{1}));
}

Picture Picture::part(size_t left, size_t top, size_t partWidth, size_t partHeight) const {
  Picture part{partWidth, partHeight, std::vector<uint8_t>(partWidth * partHeight)};
  for (size_t y = 0; y < partHeight && top + y < height; ++y) {
    for (size_t x = 0; x < partWidth && left + x < width; ++x) {
      part.dots[y * partWidth + x] = dots[(top + y) * width + left + x];
    }
  }
  return part;
}

Picture readPicture(const std::string& path, const std::array<uint8_t, 3>& colour) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&image, path.c_str()) == 0) return {};
  image.format = PNG_FORMAT_RGB;
  std::vector<uint8_t> rgb(PNG_IMAGE_SIZE(image));
  if (png_image_finish_read(&image, nullptr, rgb.data(), 0, nullptr) == 0) return {};
  Picture picture{image.width, image.height, {}};
  for (size_t i = 0; i < rgb.size(); i += 3) {
    const bool same = std::equal(colour.begin(), colour.end(), &rgb[i]);
    picture.dots.push_back(same ? 1 : 0);
  }
  return picture;
}

std::string difference(const Picture& have, const Picture& want) {
  const auto size = [](const Picture& picture) {
    return std::to_string(picture.width) + " x " + std::to_string(picture.height);
  };
  if (have.width != want.width || have.height != want.height) {
    return "have " + size(have) + ", want " + size(want);
  }
  const auto [at, other] = std::mismatch(have.dots.begin(), have.dots.end(), want.dots.begin());
  if (at == have.dots.end()) return std::string();
  const auto index = static_cast<size_t>(at - have.dots.begin());
  return "the first dot that differs is " + std::to_string(index % want.width) + ", " +
         std::to_string(index / want.width) + ": have " + std::to_string(*at) + ", want " +
         std::to_string(*other);
}
