// Rasters that end early or have a damaged header, uncompressed and compressed as CUPS stores them.
// SPDX-License-Identifier: Apache-2.0
#include "tools/host/raster_check.h"

#include <cups/raster.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/raster_maker.h"
#include "tests/support/temporary_folder.h"
#include "tests/tools/result_text.h"

namespace {

constexpr size_t kSyncBytes = 4;
constexpr size_t kHeaderBytes = sizeof(cups_page_header2_t);
constexpr size_t kPageBytes = kHeaderBytes + 40 * 20;

ssize_t append(void* to, unsigned char* bytes, size_t count) {
  static_cast<std::string*>(to)->append(reinterpret_cast<const char*>(bytes), count);
  return static_cast<ssize_t>(count);
}

// Two pages of 40 x 20 pixels.
std::string twoPages(cups_mode_t mode) {
  RasterPage page;
  page.width = 40;
  page.height = 20;
  page.picture = "noise:5";
  const std::string plain = makeRaster({page, page});
  std::string raster;
  cups_raster_t* const to = cupsRasterOpenIO(append, &raster, mode);
  for (size_t at : {kSyncBytes, kSyncBytes + kPageBytes}) {
    cups_page_header2_t header;
    std::memcpy(&header, plain.data() + at, sizeof header);
    std::string pixels = plain.substr(at + kHeaderBytes, kPageBytes - kHeaderBytes);
    EXPECT_NE(cupsRasterWriteHeader2(to, &header), 0U);
    EXPECT_NE(cupsRasterWritePixels(to, reinterpret_cast<unsigned char*>(pixels.data()),
                                    static_cast<unsigned>(pixels.size())),
              0U);
  }
  cupsRasterClose(to);
  return raster;
}

std::string checked(const std::string& raster) {
  const TemporaryFolder folder;
  return failureOf(korvel::checkRaster(folder.write("pages.ras", raster)));
}

const char kFirst[] = "Page 1 is damaged or incomplete.";
const char kSecond[] = "Page 2 is damaged or incomplete.";

}  // namespace

TEST(RasterCheck, FindsThePageInWhichARasterEnds) {
  const std::string raster = twoPages(CUPS_RASTER_WRITE);
  ASSERT_EQ(raster.size(), kSyncBytes + 2 * kPageBytes);
  const struct {
    const char* sentence;
    size_t bytes;
    const char* failure;
  } kCases[] = {
      {"nothing at all", 0, ""},
      {"part of the first word", 3, kFirst},
      {"no page", kSyncBytes, ""},
      {"part of the first header", kSyncBytes + 100, kFirst},
      {"a header without pixels", kSyncBytes + kHeaderBytes, kFirst},
      {"a page without its last pixel", kSyncBytes + kPageBytes - 1, kFirst},
      {"one page of two", kSyncBytes + kPageBytes, ""},
      {"one byte of the second header", kSyncBytes + kPageBytes + 1, kSecond},
      {"all but the last byte", kSyncBytes + 2 * kPageBytes - 1, kSecond},
      {"all of it", kSyncBytes + 2 * kPageBytes, ""},
  };
  for (const auto& c : kCases)
    EXPECT_EQ(checked(raster.substr(0, c.bytes)), c.failure) << c.sentence;
}

TEST(RasterCheck, FollowsCompressedPages) {
  const std::string raster = twoPages(CUPS_RASTER_WRITE_COMPRESSED);
  EXPECT_EQ(checked(raster), "");
  EXPECT_EQ(checked(raster.substr(0, raster.size() - 1)), kSecond);
  EXPECT_EQ(checked(raster.substr(0, kSyncBytes + kHeaderBytes + 100)), kFirst);
  EXPECT_EQ(checked(raster + "x"), "Page 3 is damaged or incomplete.");
}

TEST(RasterCheck, FindsWhatIsNoHeader) {
  std::string raster = twoPages(CUPS_RASTER_WRITE);
  std::fill_n(raster.begin() + kSyncBytes + kPageBytes, 20, '\xee');
  raster.resize(raster.size() - 200);
  EXPECT_EQ(checked(raster), kSecond);
  EXPECT_EQ(checked("no raster at all"), kFirst);
}

// The filter reports these itself, or ends the job there.
TEST(RasterCheck, LeavesToTheFilterWhatItReports) {
  RasterPage deep;
  deep.bitsPerPixel = 16;
  RasterPage flat;
  flat.height = 0;
  for (const RasterPage& page : {deep, flat}) {
    const std::string raster = makeRaster({page}).substr(0, kSyncBytes + kHeaderBytes);
    EXPECT_EQ(checked(raster), libraryReads(raster) ? "" : kFirst);
  }
}

TEST(RasterCheck, NamesAFileThatIsMissing) {
  EXPECT_EQ(failureOf(korvel::checkRaster("/no/such/file")),
            "Cannot open /no/such/file: No such file or directory.");
}
