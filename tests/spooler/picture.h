// A printed page or sheet as dots, read from a picture file.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SPOOLER_PICTURE_H
#define KORVEL_TESTS_SPOOLER_PICTURE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct Picture {
  size_t width = 0;
  size_t height = 0;
  std::vector<uint8_t> dots;  // 1 printed, 0 paper; width times height

  size_t printed() const;  // how many are
  Picture part(size_t left, size_t top, size_t partWidth, size_t partHeight) const;
};

inline constexpr std::array<uint8_t, 3> kBlack = {0, 0, 0};
inline constexpr std::array<uint8_t, 3> kRed = {255, 0, 0};     // marks of tear and cut
inline constexpr std::array<uint8_t, 3> kBlue = {0, 102, 255};  // the outline of a label

// An empty picture when the file is none. What has the colour is a dot, all else is paper.
Picture readPicture(const std::string& path, const std::array<uint8_t, 3>& colour = kBlack);

// Empty when the two are the same; else one sentence.
std::string difference(const Picture& have, const Picture& want);

#endif
