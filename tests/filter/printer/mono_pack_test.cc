// Packing of grey bytes to dots: in place, leftmost pixel on top, rows end on a byte.
// Walks the whole stride: the bytes after the last pixel are packed too.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "printer/pellam_printer.h"
#include "tests/support/captured_stderr.h"
#include "tests/support/hex_text.h"

namespace {

class PackingPrinter : public PellamPrinter {
 public:
  void doPrintImage(const unsigned char*, size_t, size_t, size_t) override {}
};

struct Case {
  const char* sentence;
  uint64_t skip;
  int bytesPerLine;
  std::vector<std::string> rows;  // '#' is 255, '1' is 1, '.' is 0
  const char* want;
  const char* log;
};

const Case kCases[] = {
    {"alternating dots",
     0,
     16,
     {"#.#.#.#.#.#.#.#."},
     "AA AA",
     "DEBUG:GrayToMono, bpl(16), h(1), skipPixels(0), wb(16)\n"},
    {"twelve pixels end in a half byte",
     0,
     12,
     {"#...........", "...........#"},
     "80 00 00 10",
     "DEBUG:GrayToMono, bpl(12), h(2), skipPixels(0), wb(12)\n"},
    {"a right skip drops the last four",
     4,
     16,
     {"#.#.#.#.#.#.####"},
     "AA A0",
     "DEBUG:GrayToMono, bpl(16), h(1), skipPixels(4), wb(12)\n"},
    {"every row is skipped alike",
     4,
     8,
     {"####....", "....####", "#..#####"},
     "F0 00 90",
     "DEBUG:GrayToMono, bpl(8), h(3), skipPixels(4), wb(4)\n"},
    {"a skip of all but one pixel",
     7,
     8,
     {"########"},
     "80",
     "DEBUG:GrayToMono, bpl(8), h(1), skipPixels(7), wb(1)\n"},
    {"a skip of the whole row is left out",
     16,
     16,
     {"#.#.#.#.#.#.####"},
     "AA AF",
     "DEBUG:GrayToMono, bpl(16), h(1), skipPixels(16), wb(16)\n"},
    {"and so is a larger one",
     20,
     16,
     {"#.#.#.#.#.#.####"},
     "AA AF",
     "DEBUG:GrayToMono, bpl(16), h(1), skipPixels(20), wb(16)\n"},
    {"ones are dots like all others",
     0,
     8,
     {"11111111", "########"},
     "FF FF",
     "DEBUG:GrayToMono, bpl(8), h(2), skipPixels(0), wb(8)\n"},
    {"blank rows stay blank",
     0,
     8,
     {"........", "........"},
     "00 00",
     "DEBUG:GrayToMono, bpl(8), h(2), skipPixels(0), wb(8)\n"},
    {"no row at all", 0, 8, {}, "", "DEBUG:GrayToMono, bpl(8), h(0), skipPixels(0), wb(8)\n"},
};

TEST(MonoPacking, GivesTheDotsOfTheTable) {
  for (const Case& c : kCases) {
    std::vector<unsigned char> buffer;
    for (const std::string& row : c.rows) {
      for (const char pixel : row) buffer.push_back(pixel == '#' ? 255 : pixel == '1' ? 1 : 0);
    }
    buffer.push_back(0xC3);  // after the image
    PackingPrinter printer;
    printer.setSkipRightPixels(c.skip);
    CapturedStderr captured;
    const int bytes =
        printer.GrayToMono(c.bytesPerLine, static_cast<int>(c.rows.size()), buffer.data());
    EXPECT_EQ(captured.text(), c.log) << c.sentence;
    ASSERT_GE(bytes, 0) << c.sentence;
    EXPECT_EQ(hexText(buffer.data(), static_cast<size_t>(bytes)), c.want) << c.sentence;
    EXPECT_EQ(buffer.back(), 0xC3) << c.sentence;
  }
}

TEST(MonoPacking, PutsEachPixelOnItsOwnBit) {
  for (int x = 0; x < 8; ++x) {
    unsigned char row[8] = {};
    row[x] = 2;
    PackingPrinter printer;
    CapturedStderr quiet;
    ASSERT_EQ(printer.GrayToMono(8, 1, row), 1);
    quiet.text();
    const unsigned char want[] = {0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01};
    EXPECT_EQ(row[0], want[x]) << "pixel " << x;
  }
}

}  // namespace
