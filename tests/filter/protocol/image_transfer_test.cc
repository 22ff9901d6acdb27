// A page's image as packets: the print area, then four rows a packet.
// Rows so long that a packet's length wraps are sent in part.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "protocol/korvel_printer.h"
#include "tests/support/captured_stderr.h"
#include "tests/support/hex_text.h"
#include "tests/support/memory_stream.h"

namespace {

TEST(PrintArea, IsCentredOnAByte) {
  struct Case {
    const char* sentence;
    int resolution;
    int64_t pixels;
    int64_t bytesPerRow;
    const char* area;  // offset and width, low bytes first
  };
  const Case cases[] = {
      {"1000 of 1728 dots", 203, 1000, 125, "68 01 E8 03"},  // 728/2/8*8 = 360
      {"1000 of 2592 dots", 300, 1000, 125, "18 03 E8 03"},  // 1592/2/8*8 = 792
      {"200 dpi has the wide head", 200, 1000, 125, "18 03 E8 03"},
      {"204 dpi too", 204, 1000, 125, "18 03 E8 03"},
      {"no resolution too", 0, 1000, 125, "18 03 E8 03"},
      {"one dot", 203, 1, 1, "58 03 08 00"},                           // 1727/2/8*8 = 856
      {"four dots short of the head", 203, 1724, 216, "00 00 C0 06"},  // 4/2/8*8 = 0
      {"one dot less than the head", 203, 1727, 216, "00 00 C0 06"},
      {"as wide as the head", 203, 1728, 216, "00 00 C0 06"},
      {"wider than the head", 203, 1729, 217, "00 00 C0 06"},
      {"as wide as the head in longer rows", 203, 1728, 220, "00 00 C0 06"},
      {"almost as wide in longer rows", 203, 1727, 220, "00 00 E0 06"},
      {"sixteen dots less", 203, 1712, 214, "08 00 B0 06"},  // 16/2/8*8 = 8
      {"as wide as the 300 dpi head", 300, 2592, 324, "00 00 20 0A"},
      {"far wider", 300, 131080, 16385, "00 00 20 0A"},
      {"1729 dots on the wide head", 300, 1729, 217, "A8 01 C8 06"},  // 863/2/8*8 = 424
      {"the width counts the row's bytes, not its pixels", 300, 10, 4, "08 05 20 00"},  // 1288
      {"a row of nothing", 203, 0, 0, "60 03 00 00"},                                   // 864
  };
  for (const Case& c : cases) {
    const MemoryStream stream;
    KorvelPrinter printer;
    printer.getOutputStreams() = {stream.get()};
    printer.resolution_ = c.resolution;
    printer.SetPrintArea({c.pixels, 7}, c.bytesPerRow);
    EXPECT_EQ(hexText(stream.text()),
              hexLine(std::string("64 43 00 04 00 ") + c.area + " 00 00 00 00 9B"))
        << c.sentence;
  }
}

// One packet of a stream; its data is given by length, first and last byte.
struct Block {
  size_t length;
  int first;
  int last;
};

// Parses the packets after the area packet. Returns false when the framing breaks.
bool blocksOf(const std::string& text, std::vector<Block>* blocks) {
  for (size_t at = 14; at < text.size();) {
    if (at + 10 > text.size() || text.substr(at, 3) != std::string("\x64\x03\0", 3)) return false;
    const auto byteAt = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const size_t n = byteAt(at + 3) + size_t{256} * byteAt(at + 4);
    if (at + n + 10 > text.size()) return false;
    if (text.substr(at + 5 + n, 5) != std::string("\0\0\0\0\x9B", 5)) return false;
    blocks->push_back({n, n == 0 ? -1 : byteAt(at + 5), n == 0 ? -1 : byteAt(at + 4 + n)});
    at += n + 10;
  }
  return true;
}

bool operator==(const Block& a, const Block& b) {
  return a.length == b.length && a.first == b.first && a.last == b.last;
}

std::ostream& operator<<(std::ostream& out, const Block& block) {
  return out << block.length << " bytes from " << block.first << " to " << block.last;
}

struct Image {
  const char* sentence;
  int64_t width;
  int64_t height;
  int64_t bytesPerRow;
  const char* log;
  std::vector<Block> blocks;
};

// Byte i of the image is i modulo 251.
const Image kImages[] = {
    {"1000 by 10",
     1000,
     10,
     125,
     "DEBUG:SendImage sizel(1000, 10), wBytes(125), blocks(2)\n",
     {{500, 0, 248}, {500, 249, 246}, {250, 247, 245}}},
    {"a multiple of four rows has no short packet",
     8,
     8,
     1,
     "DEBUG:SendImage sizel(8, 8), wBytes(1), blocks(2)\n",
     {{4, 0, 3}, {4, 4, 7}}},
    {"four rows", 8, 4, 1, "DEBUG:SendImage sizel(8, 4), wBytes(1), blocks(1)\n", {{4, 0, 3}}},
    {"one row", 16, 1, 2, "DEBUG:SendImage sizel(16, 1), wBytes(2), blocks(0)\n", {{2, 0, 1}}},
    {"three rows", 16, 3, 2, "DEBUG:SendImage sizel(16, 3), wBytes(2), blocks(0)\n", {{6, 0, 5}}},
    {"five rows",
     16,
     5,
     2,
     "DEBUG:SendImage sizel(16, 5), wBytes(2), blocks(1)\n",
     {{8, 0, 7}, {2, 8, 9}}},
};

std::string sent(const Image& image, int64_t spareBytes, std::vector<Block>* blocks) {
  std::vector<unsigned char> data;
  for (int64_t i = 0; i < image.bytesPerRow * image.height; ++i) {
    data.push_back(static_cast<unsigned char>(i % 251));
  }
  const MemoryStream stream;
  KorvelPrinter printer;
  printer.getOutputStreams() = {stream.get()};
  CapturedStderr captured;
  printer.SendImage(image.bytesPerRow * image.height + spareBytes, {image.width, image.height},
                    data.data());
  const std::string log = captured.text();
  EXPECT_TRUE(blocksOf(stream.text(), blocks)) << image.sentence;
  return log;
}

TEST(ImagePackets, HoldFourRowsEach) {
  for (const Image& c : kImages) {
    for (const int64_t spare : {int64_t{0}, c.height - 1}) {  // bytes per row are cut to whole ones
      std::vector<Block> blocks;
      EXPECT_EQ(sent(c, spare, &blocks), c.log) << c.sentence;
      EXPECT_EQ(blocks, c.blocks) << c.sentence;
    }
  }
}

const Image kWide[] = {
    {"the longest row that fits",
     131064,
     4,
     16383,
     "DEBUG:SendImage sizel(131064, 4), wBytes(16383), blocks(1)\n",
     {{65532, 0, 20}}},
    {"four rows of 16384 bytes wrap to nothing",
     131072,
     9,
     16384,
     "DEBUG:SendImage sizel(131072, 9), wBytes(16384), blocks(2)\n",
     {{0, -1, -1}, {0, -1, -1}, {16384, 0, 68}}},
    {"four rows of 16385 bytes wrap to four",
     131080,
     9,
     16385,
     "DEBUG:SendImage sizel(131080, 9), wBytes(16385), blocks(2)\n",
     {{4, 0, 3}, {4, 4, 7}, {16385, 8, 77}}},
    {"the short packet wraps by itself",
     262144,
     6,
     32768,
     "DEBUG:SendImage sizel(262144, 6), wBytes(32768), blocks(1)\n",
     {{0, -1, -1}, {0, -1, -1}}},
    {"three rows of 21846 bytes wrap to two",
     174768,
     3,
     21846,
     "DEBUG:SendImage sizel(174768, 3), wBytes(21846), blocks(0)\n",
     {{2, 0, 1}}},
};

TEST(WideRows, WrapLengthAndPositionTogether) {
  for (const Image& c : kWide) {
    std::vector<Block> blocks;
    EXPECT_EQ(sent(c, 0, &blocks), c.log) << c.sentence;
    EXPECT_EQ(blocks, c.blocks) << c.sentence;
  }
}

struct Page {
  const char* sentence;
  int resolution;
  int32_t tattoo;
  size_t width;
  std::vector<std::string> rows;  // '#' is 255, '1' is 1; all as long as the stride
  const char* packets;
  const char* log;
};

const Page kPages[] = {
    {"a label",
     203,
     0,
     6,
     {"#.#.#.1.", ".#.#.#.#"},
     "64 43 00 04 00 58 03 08 00 00 00 00 00 9B"
     "64 03 00 02 00 AA 55 00 00 00 00 9B",
     "DEBUG:doPrintImage: Input image size - width: 6, height: 2\n"
     "DEBUG:GrayToMono, bpl(8), h(2), skipPixels(0), wb(8)\n"
     "DEBUG:doPrintImage: Converted image size in bytes: 2\n"
     "DEBUG:SendImage sizel(6, 2), wBytes(1), blocks(0)\n"
     "DEBUG:doPrintImage: Image sent to the printer.\n"},
    {"a stencil at 203 dpi is fed 95 lines",
     203,
     1,
     12,
     {"#..........#"},
     "64 00 00 03 00 00 5F 00 00 00 00 00 9B"
     "64 43 00 04 00 58 03 10 00 00 00 00 00 9B"
     "64 03 00 02 00 80 10 00 00 00 00 9B",
     "DEBUG:doPrintImage: Input image size - width: 12, height: 1\n"
     "DEBUG:GrayToMono, bpl(12), h(1), skipPixels(0), wb(12)\n"
     "DEBUG:doPrintImage: Converted image size in bytes: 2\n"
     "DEBUG:doPrintImage: Tatto printer detected. Fed 95 lines before printing.\n"
     "DEBUG:SendImage sizel(12, 1), wBytes(2), blocks(0)\n"
     "DEBUG:doPrintImage: Image sent to the printer.\n"},
    {"a stencil at 300 dpi is fed 141 lines",
     300,
     -7,
     8,
     {"########"},
     "64 00 00 03 00 00 8D 00 00 00 00 00 9B"
     "64 43 00 04 00 08 05 08 00 00 00 00 00 9B"
     "64 03 00 01 00 FF 00 00 00 00 9B",
     "DEBUG:doPrintImage: Input image size - width: 8, height: 1\n"
     "DEBUG:GrayToMono, bpl(8), h(1), skipPixels(0), wb(8)\n"
     "DEBUG:doPrintImage: Converted image size in bytes: 1\n"
     "DEBUG:doPrintImage: Tatto printer detected. Fed 141 lines before printing.\n"
     "DEBUG:SendImage sizel(8, 1), wBytes(1), blocks(0)\n"
     "DEBUG:doPrintImage: Image sent to the printer.\n"},
};

TEST(PageTransmission, FeedsThenSendsAreaAndRows) {
  for (const Page& c : kPages) {
    std::vector<unsigned char> rows;
    for (const std::string& row : c.rows) {
      for (const char pixel : row) rows.push_back(pixel == '#' ? 255 : pixel == '1' ? 1 : 0);
    }
    const MemoryStream stream;
    KorvelPrinter printer;
    printer.getOutputStreams() = {stream.get()};
    printer.resolution_ = c.resolution;
    printer.tattooPrinter_ = c.tattoo;
    bNeedGoBack = 0;
    CapturedStderr captured;
    printer.doPrintImage(rows.data(), c.rows[0].size(), c.rows.size(), c.width);
    EXPECT_EQ(captured.text(), c.log) << c.sentence;
    EXPECT_EQ(hexText(stream.text()), hexLine(c.packets)) << c.sentence;
    EXPECT_EQ(bNeedGoBack, c.tattoo != 0 ? 1 : 0) << c.sentence;
  }
  bNeedGoBack = 0;
}

}  // namespace
