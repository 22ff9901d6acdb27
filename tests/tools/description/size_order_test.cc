// Which of two sizes that are nearly the same a client gets, and how the other one comes first.
// SPDX-License-Identifier: Apache-2.0
#include "tools/description/size_order.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace {

using Names = std::vector<std::string>;

std::string description(const std::string& name) {
  std::ifstream in(KORVEL_PPD_DIR "/korvel-" + name + ".ppd", std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

TEST(SizeOrder, TheFirstSizeThatIsNearIsTaken) {
  const struct {
    const char* size;
    const char* taken;
  } kCases[] = {
      {"4x4", "4x4"},
      {"100x100mm", "4x4"},
      {"50x100mmRotated", "2x4Rotated"},
      {"25x50mmRotated", "1x2Rotated"},
      {"100x150mm", "100x150mm"},  // 2.4 mm shorter than 4 x 6 in
      {"30x50mmRotated", "30x50mmRotated"},
      {"none", "none"},
  };
  for (const char* model : {"label-203", "label-300"}) {
    const std::string ppd = description(model);
    for (const auto& c : kCases) EXPECT_EQ(korvel::sizeTakenFor(ppd, c.size), c.taken) << c.size;
  }
}

TEST(SizeOrder, SizesAreMovedAndNothingElse) {
  const std::string ppd = description("label-203");
  const std::string moved = korvel::withSizesFirst(ppd, {"100x100mm", "2x2", "none"});
  EXPECT_EQ(korvel::sizeTakenFor(moved, "100x100mm"), "100x100mm");
  EXPECT_EQ(korvel::sizeTakenFor(moved, "4x4"), "100x100mm");
  const Names names = korvel::sizeNames(moved);
  EXPECT_EQ(Names(names.begin(), names.begin() + 4), (Names{"100x100mm", "2x2", "4x6", "4x8"}));
  EXPECT_EQ(moved.size(), ppd.size());
  EXPECT_EQ(korvel::withSizesFirst(moved, korvel::sizeNames(ppd)), ppd);
}

TEST(SizeOrder, OfATextWithoutSizesIsItself) {
  EXPECT_EQ(korvel::withSizesFirst("no PPD\n", {"4x6"}), "no PPD\n");
  EXPECT_EQ(korvel::sizeNames("no PPD\n"), Names());
}

}  // namespace
