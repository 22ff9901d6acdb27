// The size of a picture in its file, and files that were cut short.
// SPDX-License-Identifier: Apache-2.0
#include "tools/preview/picture_file.h"

#include <gtest/gtest.h>

#include "tests/support/hex_text.h"
#include "tests/support/temporary_folder.h"

namespace korvel {
namespace {

// 812 is 032C, 1218 is 04C2.
const std::string kPngStart = "89504E470D0A1A0A 0000000D 49484452 0000032C 000004C2 08 00 00 00 00";
const std::string kPng = kPngStart + "01020304 00000002 49444154 7801 01020304 00000000 49454E44 ";
const std::string kJpegStart = "FFD8 FFE0 0004 4A46 FFC4 0003 54 ";
const std::string kJpegFrame = "FFC0 000B 08 04C2 032C 01 01 11 00 ";
const std::string kJpegScan = "FFDA 0008 01 01 00 00 3F 00 AA FF00 D9 ";
// Width, height, and one strip of 4 bytes at 62, the end of the directory.
const std::string kTiff =
    "4949 2A00 08000000 0400 0001 0300 01000000 2C030000 0101 0300 01000000 C2040000 "
    "1101 0400 01000000 3E000000 1701 0400 01000000 04000000 00000000";
const std::string kTiffOfTheOtherOrder =
    "4D4D 002A 00000008 0004 0100 0003 00000001 032C0000 0101 0003 00000001 04C20000 "
    "0111 0004 00000001 0000003E 0117 0004 00000001 00000004 00000000";
// Two strips of two bytes, at 70 and 72, as it says at 62.
const std::string kTiffOfTwoStrips =
    "4949 2A00 08000000 0400 0001 0300 01000000 2C030000 0101 0300 01000000 C2040000 "
    "1101 0400 02000000 3E000000 1701 0300 02000000 02000200 00000000 46000000 48000000 ";

std::string bytesOf(const std::string& hex) {
  const std::vector<uint8_t> bytes = hexBytes(hex);
  return {bytes.begin(), bytes.end()};
}

TEST(PictureFile, HasASizeAndAnEnd) {
  const struct {
    const char* sentence;
    std::string content;  // hexadecimal
    int width, height;
    bool endsEarly;
  } kCases[] = {
      {"PNG", kPng + "AE426082", 812, 1218, false},
      {"a PNG without its last byte", kPng + "AE4260", 812, 1218, true},
      {"a PNG without its last chunk", kPngStart + "01020304", 812, 1218, true},
      {"a PNG that ends before its size is complete", "89504E470D0A1A0A 0000000D 49484452 0000032C",
       812, 0, true},
      {"JPEG, its frame after other segments", kJpegStart + kJpegFrame + kJpegScan + "FFD9", 812,
       1218, false},
      {"bytes after the end of a JPEG", kJpegStart + kJpegFrame + kJpegScan + "FFD9 0000", 812,
       1218, false},
      {"fill bytes before a segment", kJpegStart + "FFFF" + kJpegFrame + kJpegScan + "FFD9", 812,
       1218, false},
      {"a JPEG cut in its pixels", kJpegStart + kJpegFrame + kJpegScan, 812, 1218, true},
      {"a JPEG cut before its pixels", kJpegStart + kJpegFrame, 812, 1218, true},
      {"a JPEG without a frame", kJpegStart, 0, 0, true},
      {"an end in a thumbnail is not the end", "FFD8 FFE1 0006 FFD8 FFD9" + kJpegFrame + kJpegScan,
       812, 1218, true},
      {"TIFF", kTiff + "00000000", 812, 1218, false},
      {"TIFF of the other byte order", kTiffOfTheOtherOrder + "00000000", 812, 1218, false},
      {"a TIFF without its last byte", kTiff + "000000", 812, 1218, true},
      {"a TIFF without its directory", kTiff.substr(0, 56), 0, 0, true},
      {"a TIFF of two strips", kTiffOfTwoStrips + "00000000", 812, 1218, false},
      {"a TIFF without the end of its second strip", kTiffOfTwoStrips + "000000", 812, 1218, true},
      {"text", "38 31 32", 0, 0, false},
      {"nothing", "", 0, 0, false},
  };
  const TemporaryFolder folder;
  for (const auto& c : kCases) {
    const PictureFile have = readPictureFile(folder.write("picture", bytesOf(c.content)));
    EXPECT_EQ(have.size.width, c.width) << c.sentence;
    EXPECT_EQ(have.size.height, c.height) << c.sentence;
    EXPECT_EQ(have.endsEarly, c.endsEarly) << c.sentence;
  }
}

}  // namespace
}  // namespace korvel
