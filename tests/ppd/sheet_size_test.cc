// The raster page that CUPS' own filters make for each size: width and height in dots. Everything
// that a PPD can get wrong in a size shows here.
// SPDX-License-Identifier: Apache-2.0
#include <cups/raster.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
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

// The whole label. Sizes in inches and all sizes at 300 dpi are rounded to the nearest dot, halves
// up; at 203 dpi a millimetre is 8 dots, as it is on the print head.
const LabelSize kLabelSizes[] = {
    {"4x6", {812, 1218}, {1200, 1800}},
    {"4x8", {812, 1624}, {1200, 2400}},
    {"4x5", {812, 1015}, {1200, 1500}},
    {"4x4", {812, 812}, {1200, 1200}},
    {"3x4Rotated", {812, 609}, {1200, 900}},
    {"2.5x4Rotated", {812, 508}, {1200, 750}},
    {"2x4Rotated", {812, 406}, {1200, 600}},
    {"1x4Rotated", {812, 203}, {1200, 300}},
    {"4x6Rotated", {1218, 812}, {1800, 1200}},
    {"3x5", {609, 1015}, {900, 1500}},
    {"3x3", {609, 609}, {900, 900}},
    {"2x3Rotated", {609, 406}, {900, 600}},
    {"1x3Rotated", {609, 203}, {900, 300}},
    {"2.25x4", {457, 812}, {675, 1200}},
    {"1.25x2.25Rotated", {457, 254}, {675, 375}},
    {"2x4", {406, 812}, {600, 1200}},
    {"2x2", {406, 406}, {600, 600}},
    {"1x2Rotated", {406, 203}, {600, 300}},
    {"1x1.5Rotated", {305, 203}, {450, 300}},
    {"1x1", {203, 203}, {300, 300}},
    {"100x200mm", {800, 1600}, {1181, 2362}},
    {"100x150mm", {800, 1200}, {1181, 1772}},
    {"100x100mm", {800, 800}, {1181, 1181}},
    {"70x100mmRotated", {800, 560}, {1181, 827}},
    {"50x100mmRotated", {800, 400}, {1181, 591}},
    {"30x100mmRotated", {800, 240}, {1181, 354}},
    {"80x120mm", {640, 960}, {945, 1417}},
    {"60x80mmRotated", {640, 480}, {945, 709}},
    {"40x80mmRotated", {640, 320}, {945, 472}},
    {"50x70mmRotated", {560, 400}, {827, 591}},
    {"30x70mmRotated", {560, 240}, {827, 354}},
    {"60x80mm", {480, 640}, {709, 945}},
    {"40x60mmRotated", {480, 320}, {709, 472}},
    {"30x60mmRotated", {480, 240}, {709, 354}},
    {"50x70mm", {400, 560}, {591, 827}},
    {"30x50mmRotated", {400, 240}, {591, 354}},
    {"25x50mmRotated", {400, 200}, {591, 295}},
    {"40x60mm", {320, 480}, {472, 709}},
    {"30x40mmRotated", {320, 240}, {472, 354}},
    {"20x40mmRotated", {320, 160}, {472, 236}},
    {"20x30mmRotated", {240, 160}, {354, 236}},
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

TEST(LabelSize, FitsTheHead) {
  for (const LabelSize& c : kLabelSizes) {
    EXPECT_LE(c.at203.width, 1728U) << c.name;
    EXPECT_LE(c.at300.width, 2592U) << c.name;
  }
}

// Some filters cut off fractions of a dot where others round. Both must find the same dots, between
// the edges of the printable area.
TEST(LabelSize, HasTheSameDotsWhetherTheyAreRoundedOrCutOff) {
  for (const char* name : {"label-203", "label-300"}) {
    const OpenPpd ppd = openPpd(description(name));
    ASSERT_NE(ppd, nullptr) << name;
    const double dotsPerPoint = description(name).dpi / 72.0;
    for (const LabelSize& c : kLabelSizes) {
      const ppd_size_t* size = ppdPageSize(ppd.get(), c.name);
      ASSERT_NE(size, nullptr) << c.name;
      const Dots& want = description(name).dpi == 203 ? c.at203 : c.at300;
      const double width = (size->right - size->left) * dotsPerPoint;
      const double height = (size->top - size->bottom) * dotsPerPoint;
      EXPECT_GE(width, want.width) << name << " " << c.name;
      EXPECT_LT(width, want.width + 0.49) << name << " " << c.name;
      EXPECT_GE(height, want.height) << name << " " << c.name;
      EXPECT_LT(height, want.height + 0.49) << name << " " << c.name;
    }
  }
}

// The rasteriser is started with the size in whole points, fractions cut off. A size that is more
// than 1 % shorter then is not recognised by some releases, and reaches the filter as a custom
// size.
TEST(LabelSize, IsRecognisedByItsWholePoints) {
  for (const char* name : {"label-203", "label-300"}) {
    const OpenPpd ppd = openPpd(description(name));
    ASSERT_NE(ppd, nullptr) << name;
    for (const LabelSize& c : kLabelSizes) {
      const ppd_size_t* size = ppdPageSize(ppd.get(), c.name);
      ASSERT_NE(size, nullptr) << c.name;
      for (const float points : {size->width, size->length}) {
        EXPECT_LT((points - std::floor(points)) / points, 0.0095F) << name << " " << c.name;
      }
    }
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
