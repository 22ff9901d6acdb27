// The sheet that each size becomes when the spooler's own filters make its raster: width and
// height to the dot. All that a description can get wrong in a size shows here.
// SPDX-License-Identifier: Apache-2.0
#include <cups/raster.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <map>
#include <set>

#include "tests/ppd/descriptions.h"
#include "tests/support/temporary_folder.h"

namespace {

struct Dots {
  unsigned width;
  unsigned height;
  bool operator==(const Dots&) const = default;
};

void PrintTo(const Dots& dots, std::ostream* out) { *out << dots.width << "x" << dots.height; }

struct LabelSize {
  const char* name;
  Dots at203;
  Dots at300;
};

// Lengths are the label's own, to the nearest dot. Widths are the widest whole bytes in it.
const LabelSize kLabelSizes[] = {
    {"4x6", {808, 1218}, {1200, 1800}},
    {"4x8", {808, 1624}, {1200, 2400}},
    {"4x5", {808, 1015}, {1200, 1500}},
    {"4x4", {808, 812}, {1200, 1200}},
    {"3x4Rotated", {808, 609}, {1200, 900}},
    {"2.5x4Rotated", {808, 507}, {1200, 750}},
    {"2x4Rotated", {808, 406}, {1200, 600}},
    {"1x4Rotated", {808, 203}, {1200, 300}},
    {"4x6Rotated", {1216, 812}, {1800, 1200}},
    {"3x5", {608, 1015}, {896, 1500}},
    {"3x3", {608, 609}, {896, 900}},
    {"2x3Rotated", {608, 406}, {896, 600}},
    {"1x3Rotated", {608, 203}, {896, 300}},
    {"2.25x4", {456, 812}, {672, 1200}},
    {"1.25x2.25Rotated", {456, 254}, {672, 375}},
    {"2x4", {400, 812}, {600, 1200}},
    {"2x2", {400, 406}, {600, 600}},
    {"1x2Rotated", {400, 203}, {600, 300}},
    {"1x1.5Rotated", {304, 203}, {448, 300}},
    {"1x1", {200, 203}, {296, 300}},
    {"100x200mm", {792, 1598}, {1176, 2362}},
    {"100x150mm", {792, 1199}, {1176, 1772}},
    {"100x100mm", {792, 799}, {1176, 1181}},
    {"70x100mmRotated", {792, 559}, {1176, 827}},
    {"50x100mmRotated", {792, 400}, {1176, 591}},
    {"30x100mmRotated", {792, 240}, {1176, 354}},
    {"80x120mm", {632, 959}, {944, 1417}},
    {"60x80mmRotated", {632, 480}, {944, 709}},
    {"40x80mmRotated", {632, 320}, {944, 472}},
    {"50x70mmRotated", {552, 400}, {824, 591}},
    {"30x70mmRotated", {552, 240}, {824, 354}},
    {"60x80mm", {472, 639}, {704, 945}},
    {"40x60mmRotated", {472, 320}, {704, 472}},
    {"30x60mmRotated", {472, 240}, {704, 354}},
    {"50x70mm", {392, 559}, {584, 827}},
    {"30x50mmRotated", {392, 240}, {584, 354}},
    {"25x50mmRotated", {392, 200}, {584, 295}},
    {"40x60mm", {312, 480}, {472, 709}},
    {"30x40mmRotated", {312, 240}, {472, 354}},
    {"20x40mmRotated", {312, 160}, {472, 236}},
    {"20x30mmRotated", {232, 160}, {352, 236}},
};

struct SheetSize {
  const char* name;
  Dots dots;
};

// 200 x 275 mm, 210 x 257 mm, 200 x 118 mm and 100 x 118 mm at 300 dpi.
const SheetSize kSheetSizes[] = {
    {"A4", {2362, 3248}},
    {"Letter", {2480, 3035}},
    {"Tattoo_A5", {2362, 1394}},
    {"Tattoo_A6", {1181, 1394}},
};

// One page, larger than some sheets and smaller than others: the chosen size decides.
const char kDocument[] =
    "%PDF-1.4\n"
    "1 0 obj <</Type /Catalog /Pages 2 0 R>> endobj\n"
    "2 0 obj <</Type /Pages /Kids [3 0 R] /Count 1>> endobj\n"
    "3 0 obj <</Type /Page /Parent 2 0 R /MediaBox [0 0 300 400] /Contents 4 0 R>> endobj\n"
    "4 0 obj <</Length 19>> stream\n"
    "20 20 100 100 re f\n"
    "endstream endobj\n"
    "trailer <</Root 1 0 R>>\n";

struct Sheet {
  Dots dots{0, 0};
  unsigned bytesPerLine = 0;
  unsigned bitsPerPixel = 0;
  unsigned dpi = 0;
  std::string name;
};

// The first page of a raster file; all zero when there is none.
Sheet firstSheet(const std::string& path) {
  Sheet sheet;
  const int file = open(path.c_str(), O_RDONLY);
  if (file == -1) return sheet;
  cups_raster_t* raster = cupsRasterOpen(file, CUPS_RASTER_READ);
  cups_page_header2_t header;
  if (raster != nullptr && cupsRasterReadHeader2(raster, &header) != 0) {
    sheet = {{header.cupsWidth, header.cupsHeight},
             header.cupsBytesPerLine,
             header.cupsBitsPerPixel,
             header.HWResolution[0],
             header.cupsPageSizeName};
  }
  cupsRasterClose(raster);
  close(file);
  return sheet;
}

Sheet rasterise(const Description& description, const std::string& size) {
  const TemporaryFolder folder;
  const std::string document = folder.write("document.pdf", kDocument);
  runCommand(KORVEL_CUPSFILTER " -p " + quoted(ppdPath(description)) +
             " -i application/pdf -m application/vnd.cups-raster -o PageSize=" + quoted(size) +
             " " + quoted(document) + " > " + quoted(folder.file("sheets.ras")) + " 2>/dev/null");
  return firstSheet(folder.file("sheets.ras"));
}

void expectSheet(const Description& description, const std::string& size, const Dots& want) {
  const Sheet sheet = rasterise(description, size);
  EXPECT_EQ(sheet.dots, want) << size << " on " << description.name;
  EXPECT_EQ(sheet.bytesPerLine, want.width) << size << " on " << description.name;
  EXPECT_EQ(sheet.bitsPerPixel, 8U) << size << " on " << description.name;
  EXPECT_EQ(sheet.dpi, description.dpi) << size << " on " << description.name;
  EXPECT_EQ(sheet.name, size) << description.name;
}

TEST(LabelSize, BecomesTheSheetItPromisesAt203Dpi) {
  for (const LabelSize& c : kLabelSizes) expectSheet(description("label-203"), c.name, c.at203);
}

TEST(LabelSize, BecomesTheSheetItPromisesAt300Dpi) {
  for (const LabelSize& c : kLabelSizes) expectSheet(description("label-300"), c.name, c.at300);
}

TEST(LabelSize, IsWholeBytesWideAndFitsTheHead) {
  for (const LabelSize& c : kLabelSizes) {
    EXPECT_EQ(c.at203.width % 8, 0U) << c.name;
    EXPECT_EQ(c.at300.width % 8, 0U) << c.name;
    EXPECT_LE(c.at203.width, 1728U) << c.name;
    EXPECT_LE(c.at300.width, 2592U) << c.name;
  }
}

TEST(StencilSheet, IsExactToTheDot) {
  for (const Description& each : descriptions()) {
    if (!each.stencil) continue;
    for (const SheetSize& c : kSheetSizes) expectSheet(each, c.name, c.dots);
  }
}

std::set<std::string> offeredSizes(const ppd_file_t& ppd) {
  std::set<std::string> names;
  for (int i = 0; i < ppd.num_sizes; ++i) {
    const std::string name = ppd.sizes[i].name;
    if (name != "Custom") names.insert(name);
  }
  return names;
}

TEST(OfferedSizes, AreThoseOfTheTables) {
  std::set<std::string> labels;
  std::set<std::string> sheets;
  for (const LabelSize& c : kLabelSizes) labels.insert(c.name);
  for (const SheetSize& c : kSheetSizes) sheets.insert(c.name);
  EXPECT_GE(labels.size(), 25U);
  for (const Description& each : descriptions()) {
    const OpenPpd ppd = openPpd(each);
    ASSERT_NE(ppd, nullptr) << each.name;
    EXPECT_EQ(offeredSizes(*ppd), each.stencil ? sheets : labels) << each.name;
  }
}

// The frame's canvas goes by these names, on any printer.
TEST(OfferedSizes, HaveNoNameOfAStencilSheetOnALabelPrinter) {
  for (const LabelSize& c : kLabelSizes) {
    for (const SheetSize& sheet : kSheetSizes) EXPECT_STRNE(c.name, sheet.name);
  }
}

// So that the sheets of one label printer stand for those of all.
TEST(OfferedSizes, AreTheSameOnAllLabelPrintersOfAResolution) {
  for (const Description& each : descriptions()) {
    if (each.stencil) continue;
    SCOPED_TRACE(each.name);
    const OpenPpd have = openPpd(each);
    const OpenPpd want = openPpd(description(each.dpi == 203 ? "label-203" : "label-300"));
    ASSERT_TRUE(have != nullptr && want != nullptr);
    ASSERT_EQ(have->num_sizes, want->num_sizes);
    for (int i = 0; i < want->num_sizes; ++i) {
      const ppd_size_t& h = have->sizes[i];
      const ppd_size_t& w = want->sizes[i];
      EXPECT_STREQ(h.name, w.name);
      EXPECT_TRUE(h.width == w.width && h.length == w.length && h.left == w.left &&
                  h.right == w.right && h.bottom == w.bottom && h.top == w.top)
          << w.name;
    }
    for (int side = 0; side < 2; ++side) {
      EXPECT_EQ(have->custom_min[side], want->custom_min[side]);
      EXPECT_EQ(have->custom_max[side], want->custom_max[side]);
    }
  }
}

// The limits as the description gives them, in points, and the sheets that they make.
TEST(CustomSize, ReachesFromTenMillimetresToTheWholeHead) {
  struct Case {
    const char* sentence;
    const char* name;
    const char* size;
    Dots dots;
  };
  const Case kCases[] = {
      {"the smallest at 203 dpi", "label-203", "Custom.28.35x28.35", {80, 80}},
      {"the widest at 203 dpi", "label-203", "Custom.612.88x72.00", {1728, 203}},
      {"the smallest at 300 dpi", "label-300", "Custom.28.35x28.35", {118, 118}},
      {"the widest at 300 dpi", "label-300", "Custom.622.08x72.00", {2592, 300}},
      {"two metres", "label-203", "Custom.72.00x5669.29", {203, 15984}},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.sentence);
    expectSheet(description(c.name), c.size, c.dots);
  }
  struct Limits {
    const char* name;
    float width;  // points
  };
  const Limits kLimits[] = {{"label-203", 612.88F}, {"label-300", 622.08F}};
  for (const Limits& c : kLimits) {
    const OpenPpd ppd = openPpd(description(c.name));
    ASSERT_NE(ppd, nullptr);
    EXPECT_FLOAT_EQ(ppd->custom_min[0], 28.35F) << c.name;
    EXPECT_FLOAT_EQ(ppd->custom_min[1], 28.35F) << c.name;
    EXPECT_FLOAT_EQ(ppd->custom_max[0], c.width) << c.name;
    EXPECT_FLOAT_EQ(ppd->custom_max[1], 5669.29F) << c.name;
  }
}

}  // namespace
