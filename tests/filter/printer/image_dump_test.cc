// Image dumps, byte by byte, and the places where they may not be written.
// They go to a folder of the test's own; the clock can be stopped for their names.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "printer/pellam_printer.h"
#include "tests/support/captured_stderr.h"
#include "tests/support/hex_text.h"
#include "tests/support/temporary_folder.h"

namespace {
time_t stoppedAt = 0;  // seconds since 1970; 0 while the clock runs
}

// Replaces the C library's, so that a test can stop the clock.
extern "C" time_t time(time_t* result) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  const time_t seconds = stoppedAt != 0 ? stoppedAt : now.tv_sec;
  if (result != nullptr) *result = seconds;
  return seconds;
}

namespace {

// Stops the clock, in a zone two hours ahead of Greenwich, while it lives.
class StoppedClock {
 public:
  explicit StoppedClock(time_t seconds) {
    if (const char* before = std::getenv("TZ")) zone_ = before;
    setenv("TZ", "TST-2", 1);
    tzset();
    stoppedAt = seconds;
  }
  StoppedClock(const StoppedClock&) = delete;
  StoppedClock& operator=(const StoppedClock&) = delete;
  ~StoppedClock() {
    stoppedAt = 0;
    if (zone_) {
      setenv("TZ", zone_->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

 private:
  std::optional<std::string> zone_;
};

class DumpingPrinter : public PellamPrinter {
 public:
  explicit DumpingPrinter(const std::string& pathFormat) {
    std::snprintf(bmpPathFormat_, sizeof bmpPathFormat_, "%s", pathFormat.c_str());
  }
  void doPrintImage(const unsigned char*, size_t, size_t, size_t) override {}
};

// Dumps once to a file whose name does not contain the time, and returns its bytes.
std::string dump(const std::vector<unsigned char>& pixels, size_t bytesPerLine, size_t height,
                 size_t width, unsigned short depth) {
  const TemporaryFolder folder;
  DumpingPrinter(folder.file("dump")).saveImage(pixels.data(), bytesPerLine, height, width, depth);
  return folder.read("dump");
}

TEST(ImageDump, HasTheHeaderOfAGreyBitmap) {
  const std::string file = dump({1, 2, 3, 4, 5, 6}, 3, 2, 3, 8);
  ASSERT_EQ(file.size(), 1078u + 6) << "only the pixels follow the palette, without padding";
  EXPECT_EQ(hexText(file.substr(0, 54)), hexLine("42 4D  3E 04 00 00  00 00 00 00  36 04 00 00"
                                                 "28 00 00 00  03 00 00 00  02 00 00 00"
                                                 "01 00  08 00  00 00 00 00  08 00 00 00"
                                                 "00 00 00 00  00 00 00 00"
                                                 "00 01 00 00  00 01 00 00"));
  EXPECT_EQ(hexText(file.substr(54, 12)), "00 00 00 00 01 01 01 00 02 02 02 00");
  EXPECT_EQ(hexText(file.substr(54 + 4 * 128, 4)), "80 80 80 00");
  EXPECT_EQ(hexText(file.substr(54 + 4 * 255, 4)), "FF FF FF 00");
  EXPECT_EQ(hexText(file.substr(1078)), "01 02 03 04 05 06");
}

TEST(ImageDump, TakesGreyPixelsAsTheyLieInMemory) {
  // Rows are four bytes apart, but the first six bytes are written for a picture of 3 by 2.
  const std::string file = dump({1, 2, 3, 99, 4, 5, 6, 98}, 4, 2, 3, 8);
  EXPECT_EQ(hexText(file.substr(1078)), "01 02 03 63 04 05");
}

TEST(ImageDump, HasTheHeaderOfATwoColourBitmap) {
  const std::string file = dump(std::vector<unsigned char>(10, 0), 10, 1, 10, 1);
  EXPECT_EQ(hexText(file), hexLine("42 4D  42 00 00 00  00 00 00 00  3E 00 00 00"
                                   "28 00 00 00  0A 00 00 00  01 00 00 00"
                                   "01 00  01 00  00 00 00 00  04 00 00 00"
                                   "00 00 00 00  00 00 00 00"
                                   "00 00 00 00  00 00 00 00"
                                   "00 00 00 00  FF FF FF 00"
                                   "FF FF 00 00"));
}

TEST(ImageDump, PacksRowsFromTheLastOneUp) {
  struct Case {
    const char* sentence;
    std::vector<std::string> rows;  // '#' is a dot
    size_t width;
    unsigned short depth;
    const char* want;  // all that follows the header
  };
  const Case cases[] = {
      {"whole bytes",
       {"#.......", "########"},
       8,
       1,
       "00 00 00 00 FF FF FF 00  00 00 00 00  7F 00 00 00"},
      {"unused bits are white",
       {"####", "#..#"},
       4,
       1,
       "00 00 00 00 FF FF FF 00  6F 00 00 00  0F 00 00 00"},
      {"nine pixels", {"........#"}, 9, 1, "00 00 00 00 FF FF FF 00  FF 7F 00 00"},
      {"thirty-three pixels take eight bytes",
       {"#................................"},
       33,
       1,
       "00 00 00 00 FF FF FF 00  7F FF FF FF FF 00 00 00"},
      {"rows that are longer in memory are cut",
       {"#......................................#"},
       8,
       1,
       "00 00 00 00 FF FF FF 00  7F FF FF FF"},
      {"another depth has no palette", {"#......."}, 8, 4, "7F 00 00 00"},
  };
  for (const Case& c : cases) {
    std::vector<unsigned char> pixels;
    for (const std::string& row : c.rows) {
      for (const char pixel : row) pixels.push_back(pixel == '#' ? 200 : 0);
    }
    const std::string file = dump(pixels, c.rows[0].size(), c.rows.size(), c.width, c.depth);
    ASSERT_GE(file.size(), 54u) << c.sentence;
    EXPECT_EQ(hexText(file.substr(54)), hexLine(c.want)) << c.sentence;
    EXPECT_EQ(hexText(file.substr(10, 4)), "3E 00 00 00") << c.sentence;
    EXPECT_EQ(hexText(file.substr(28, 2)), "01 00") << c.sentence;
  }
}

TEST(ImageDump, IsNamedByTimeAndNumber) {
  const TemporaryFolder folder;
  page_index = 41;
  DumpingPrinter printer(folder.file("prnimg_%d-%d-%d_%d_%d_%d_%ld.bmp"));
  const unsigned char pixel = 9;
  const StoppedClock clock(1715065421);  // 7 May 2024, 09:03:41 there
  printer.saveImage(&pixel, 1, 1, 1, 8);
  printer.saveImage(&pixel, 1, 1, 1, 1);
  EXPECT_EQ(page_index, 43u);
  EXPECT_EQ(folder.read("prnimg_2024-5-7_9_3_41_41.bmp").size(), 1079u);
  EXPECT_EQ(folder.read("prnimg_2024-5-7_9_3_41_42.bmp").size(), 66u);
}

TEST(ImageDump, TellsWhatItCannotOpenAndUsesUpItsNumber) {
  const TemporaryFolder folder;
  page_index = 7;
  DumpingPrinter printer(folder.file("missing/dump"));
  const unsigned char pixel = 9;
  CapturedStderr captured;
  printer.saveImage(&pixel, 1, 1, 1, 8);
  EXPECT_EQ(captured.text(), "PellamPrinter::saveImage: unable to open the file " +
                                 folder.file("missing/dump") + "\n");
  EXPECT_EQ(page_index, 8u);
}

TEST(ImageDump, NeverTouchesWhatOthersPutAtItsName) {
  const TemporaryFolder folder;
  const std::string precious = folder.write("precious", "content");
  ASSERT_EQ(symlink(precious.c_str(), folder.file("symlink").c_str()), 0);
  ASSERT_EQ(mkfifo(folder.file("fifo").c_str(), 0600), 0);
  const std::string named = folder.write("named", "content");
  ASSERT_EQ(link(named.c_str(), folder.file("hardlink").c_str()), 0);
  const unsigned char pixel = 9;
  for (const char* name : {"symlink", "fifo", "hardlink"}) {
    DumpingPrinter printer(folder.file(name));
    CapturedStderr captured;
    printer.saveImage(&pixel, 1, 1, 1, 8);
    EXPECT_EQ(captured.text(),
              "PellamPrinter::saveImage: unable to open the file " + folder.file(name) + "\n");
  }
  EXPECT_EQ(folder.read("precious"), "content");
  EXPECT_EQ(folder.read("named"), "content");
}

}  // namespace
