// A printed page or sheet as dots, read from a picture file.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SPOOLER_PICTURE_H
#define KORVEL_TESTS_SPOOLER_PICTURE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct Picture {
  size_t width = 0;
  size_t height = 0;
  std::vector<uint8_t> dots;  // 1 printed, 0 paper or a mark; width times height

  size_t printed() const;  // how many are
  Picture part(size_t left, size_t top, size_t partWidth, size_t partHeight) const;
};

// An empty picture when the file is none. Black is a dot; red marks of tear and cut are none.
Picture readPicture(const std::string& path);

// Empty when the two are the same; else one sentence.
std::string difference(const Picture& have, const Picture& want);

#endif
