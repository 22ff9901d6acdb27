// What clients of a shared queue send, in every format: the right sheet, at its true size, scaled
// and rotated as they ask.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <tuple>
#include <vector>

#include "tests/sharing/pages.h"
#include "tests/sharing/phone.h"
#include "tests/spooler/private_spooler.h"
#include "tests/tools/emulator/printer_process.h"
#include "tools/description/description_text.h"
#include "tools/description/size_order.h"

namespace {

using Words = std::vector<std::string>;

constexpr double kSeconds = 60;
const Words kFormats = {"image/urf", "image/pwg-raster", "application/pdf", "image/png",
                        "image/jpeg"};
const Words kPages = {"image/urf", "image/pwg-raster", "application/pdf"};

// Nearly as large as sizes in inches that come before them: clients get them from a queue that has
// them first.
const Words kNearOthers = {"100x100mm", "50x100mmRotated", "25x50mmRotated"};

// Hundredths of a millimetre.
int hundredths(double points) { return static_cast<int>(std::lround(points * 2540 / 72)); }

// A size as clients ask for it: by its measures.
std::string media(const PageSize& size) {
  return "media-col={media-size={x-dimension=" + std::to_string(hundredths(size.points[0])) +
         " y-dimension=" + std::to_string(hundredths(size.points[1])) + "}}";
}

class Formats : public testing::Test {
 protected:
  void SetUp() override { ASSERT_FALSE(HasFailure()); }

  void makeQueue(const std::string& model) {
    spooler_.addQueue(model, "korvel-" + model, printer_.port());
    spooler_.setDefault(model, "HalftoneType=None");
    spooler_.setDefault(model, "Contrast=0");
    description_ = spooler_.queueDescription(model);
  }
  // As sharing a queue does that holds this size.
  void putFirst(const std::string& queue, const std::string& size) {
    const std::string path =
        files_.write("first.ppd", korvel::withSizesFirst(description_, {size}));
    const CommandResult result =
        run({"lpadmin", "-p", queue, "-P", path}, kSeconds, spooler_.clientEnvironment());
    ASSERT_EQ(result.status, 0) << result.output;
  }
  // The page that a document prints.
  Picture print(const std::string& queue, const std::string& file, const std::string& format,
                const Words& options) {
    const int job = Phone(spooler_.address()).print(queue, file, format, options);
    EXPECT_TRUE(spooler_.waitForJob(job, kSeconds)) << file;
    EXPECT_TRUE(printer_.waitForEvent("sheet " + std::to_string(++pages_), kSeconds));
    return readPicture(printer_.pagePath(pages_));
  }
  // `lower` is how many rows lower than asked for whole pages come out.
  void printsEveryDot(const std::string& model, const PageSize& sheet, const PageSize& part,
                      const Words& formats, size_t lower = 0) {
    const korvel::DotCanvas page = noisePage(part, 7);
    const Picture whole = printOf(page, part);
    for (const std::string& format : formats) {
      SCOPED_TRACE(model + " " + sheet.name + " " + format);
      const size_t from = std::count(kPages.begin(), kPages.end(), format) == 0 ? 0 : lower;
      const std::string file = writePage(page, part, format, files_.file("page"));
      const Picture have = print(model, file, format, {media(sheet)});
      const Picture want = whole.part(0, 0, whole.width, whole.height - from);
      // Rows are sent as whole bytes; what fills the last one is blank.
      EXPECT_EQ(difference(have.part(0, from, want.width, want.height), want), "");
      EXPECT_LT(have.width, whole.width + 8);
      EXPECT_EQ(have.height, whole.height);
      EXPECT_EQ(have.printed(), want.printed());
    }
  }
  // A picture that has exactly the dots that can be printed.
  void printsPictures(const std::string& model, const Words& sizes) {
    makeQueue(model);
    for (const std::string& name : sizes) {
      if (std::count(kNearOthers.begin(), kNearOthers.end(), name) != 0) putFirst(model, name);
      const PageSize sheet = pageSize(description_, name);
      printsEveryDot(model, sheet, printablePart(sheet), kFormats);
    }
  }
  // With how many rows lower the pages of a sheet come out.
  void printsStencils(const std::string& model,
                      const std::vector<std::pair<const char*, size_t>>& sheets) {
    makeQueue(model);
    for (const auto& [name, lower] : sheets) {
      const PageSize sheet = pageSize(description_, name);
      printsEveryDot(model, sheet, printablePart(sheet), kFormats, lower);
    }
  }
  // A page of the whole sheet, with what cannot be printed.
  void printsWholePages(const std::string& model, const Words& sizes) {
    makeQueue(model);
    for (const std::string& name : sizes) {
      const PageSize sheet = pageSize(description_, name);
      printsEveryDot(model, sheet, sheet, kPages);
    }
  }
  Words sizesOf(const std::string& model) {
    makeQueue(model);
    Words names;
    const korvel::Ppd ppd = korvel::openDescription(description_);
    for (int i = 0; i < ppd->num_sizes; ++i) {
      if (std::string(ppd->sizes[i].name) != "Custom") names.emplace_back(ppd->sizes[i].name);
    }
    return names;
  }
  // The rows that are printed across most of the width.
  static std::vector<size_t> lines(const Picture& print) {
    std::vector<size_t> rows;
    for (size_t y = 0; y < print.height; ++y) {
      if (print.part(0, y, print.width, 1).printed() > print.width / 2) rows.push_back(y);
    }
    return rows;
  }

  TemporaryFolder files_;
  PrivateSpooler spooler_;
  ListeningPrinter printer_{spooler_.toolPath("korvel-printer"), {"--speed", "5000", "--pages"}};
  std::string description_;
  int pages_ = 0;
};

// Sizes in inches and millimetres, and those whose measures are not whole dots.
const Words kSomeSizes = {"4x6",           "2.25x4",         "1.25x2.25Rotated",
                          "100x150mm",     "30x50mmRotated", "20x30mmRotated",
                          "25x50mmRotated"};

TEST_F(Formats, PicturesOf203DotsPrintDotForDot) { printsPictures("label-203", kSomeSizes); }
TEST_F(Formats, PicturesOf300DotsPrintDotForDot) { printsPictures("label-300", kSomeSizes); }
TEST_F(Formats, WholePagesOf203DotsPrintDotForDot) {
  printsWholePages("label-203", {"4x6", "2x4"});
}
TEST_F(Formats, WholePagesOf300DotsPrintDotForDot) {
  printsWholePages("label-300", {"3x5", "30x50mmRotated", "1.25x2.25Rotated"});
}

// The rasteriser places a page whose length is not a whole number of points up to 2 dots (0.2 mm)
// lower.
const std::vector<std::pair<const char*, size_t>> kStencils = {
    {"A4", 1}, {"Letter", 0}, {"Tattoo_A6", 2}};

TEST_F(Formats, StencilsPrintDotForDot) { printsStencils("stencil-300", kStencils); }

using LongFormats = Formats;

TEST_F(LongFormats, EverySizeOf203DotsPrintsDotForDot) {
  printsPictures("label-203", sizesOf("label-203"));
}
TEST_F(LongFormats, EverySizeOf300DotsPrintsDotForDot) {
  printsPictures("label-300", sizesOf("label-300"));
}
// Reporting models wait for the printer after each sheet, so these take minutes.
TEST_F(LongFormats, ModelsOf203DotsPrintDotForDot) {
  for (const char* model : {"k220-203", "k220-203-oneway", "r57-203", "r57-203-oneway"}) {
    printsPictures(model, kSomeSizes);
  }
}
TEST_F(LongFormats, ModelsOf300DotsPrintDotForDot) {
  for (const char* model : {"k220-300", "k220-300-oneway", "r57-300", "r57-300-oneway"}) {
    printsPictures(model, kSomeSizes);
  }
}
TEST_F(LongFormats, StencilModelsPrintDotForDot) {
  for (const char* model : {"m6", "m6-oneway", "z4", "z4-oneway"}) {
    printsStencils(model, kStencils);
  }
}

TEST_F(Formats, OtherSizesAreTrueToTheDot) {
  for (const auto& [model, name, step] :
       {std::tuple("stencil-300", "A4", 300), std::tuple("stencil-300", "Tattoo_A5", 150),
        std::tuple("stencil-300", "Tattoo_A6", 150), std::tuple("label-203", "100x150mm", 100),
        std::tuple("label-203", "30x50mmRotated", 30)}) {
    makeQueue(model);
    const PageSize size = pageSize(description_, name);
    const int margin = step / 2;
    const int first = size.top + margin;
    const int count = (size.printHeight - margin - 3) / step + 1;
    korvel::DotCanvas page(size.width, size.height);
    for (int i = 0; i < count; ++i) page.fill(0, first + i * step, size.width, 1);
    for (const std::string& format : kPages) {
      SCOPED_TRACE(std::string(name) + " " + format);
      const std::string file = writePage(page, size, format, files_.file("page"));
      const std::vector<size_t> rows = lines(print(model, file, format, {media(size)}));
      ASSERT_EQ(rows.size(), static_cast<size_t>(count));
      EXPECT_NEAR(static_cast<double>(rows.front()), margin, 2);
      EXPECT_NEAR(static_cast<double>(rows.back() - rows.front()), (count - 1) * step, 1);
    }
  }
}

// How many of 1000 dots are printed for one level of ink.
int perMille(const Picture& print) {
  return static_cast<int>(print.printed() * 1000 / (print.width * print.height));
}

// The rasters of tablets pass through a colour space, which costs 2 of 255 levels in dark greys.
TEST_F(Formats, GreyPrintsTheSameInEveryFormatButForTwoLevels) {
  makeQueue("label-203");
  spooler_.setDefault("label-203", "HalftoneType=Ordered");
  const PageSize size = pageSize(description_, "2x2");
  for (const int ink : {32, 64, 128, 192}) {
    const korvel::DotCanvas page = greyPage(size, ink);
    std::vector<int> found;
    for (const std::string& format : kFormats) {
      const std::string file = writePage(page, size, format, files_.file("page"));
      found.push_back(perMille(print("label-203", file, format, {"media=oe_square-2x2in_2x2in"})));
    }
    const auto [least, most] = std::minmax_element(found.begin(), found.end());
    EXPECT_LE(*most - *least, 8) << "ink " << ink << ": " << testing::PrintToString(found);
  }
}

// ---- Scaling and rotation ----

enum class Corner { kTopLeft, kTopRight, kBottomLeft, kBottomRight };

// Where a framed page was printed, in dots, and in which corner its block is.
struct Place {
  int width, height;  // of the sheet, without what fills the last byte of a row
  int left, top, right, bottom;
  Corner block;
};

Place placeOf(const Picture& print) {
  Place place = {0, static_cast<int>(print.height), static_cast<int>(print.width), -1, 0, 0, {}};
  size_t quarters[4] = {0, 0, 0, 0};
  for (size_t y = 0; y < print.height; ++y) {
    for (size_t x = 0; x < print.width; ++x) {
      if (print.dots[y * print.width + x] == 0) continue;
      if (place.top == -1) place.top = static_cast<int>(y);
      place.left = std::min(place.left, static_cast<int>(x));
      place.right = std::max(place.right, static_cast<int>(x) + 1);
      place.bottom = static_cast<int>(y) + 1;
      ++quarters[(y < print.height / 2 ? 0 : 2) + (x < print.width / 2 ? 0 : 1)];
    }
  }
  place.width = static_cast<int>(print.width);
  place.block = static_cast<Corner>(std::max_element(quarters, quarters + 4) - quarters);
  return place;
}

struct Wish {
  const char* sentence;
  int width, height;  // of the document, in dots
  const char* options;
  Place want;
};

class Wishes : public Formats {
 protected:
  // Edges may be a dot off, because scaled pictures are rounded.
  void expectPlaces(const std::string& model, const std::string& size, const Words& formats,
                    const std::vector<Wish>& wishes) {
    makeQueue(model);
    spooler_.setDefault(model, "PageSize=" + size);
    PageSize document = pageSize(description_, size);
    for (const Wish& wish : wishes) {
      document.printWidth = wish.width;
      document.printHeight = wish.height;
      document = printablePart(document);
      for (const std::string& format : formats) {
        SCOPED_TRACE(std::string(wish.sentence) + ", " + format);
        const std::string file =
            writePage(framedPage(document), document, format, files_.file("page"));
        const Place have = placeOf(print(model, file, format, optionsOf(wish.options)));
        EXPECT_EQ(have.width, (wish.want.width + 7) / 8 * 8);
        EXPECT_NEAR(have.height, wish.want.height, 1);
        EXPECT_NEAR(have.left, wish.want.left, 1);
        EXPECT_NEAR(have.top, wish.want.top, 1);
        EXPECT_NEAR(have.right, wish.want.right, 1);
        EXPECT_NEAR(have.bottom, wish.want.bottom, 1);
        EXPECT_EQ(have.block, wish.want.block);
      }
    }
  }
  static Words optionsOf(const std::string& text) { return text.empty() ? Words() : Words{text}; }
};

// Smaller than the sheet, in the middle; A4, which is larger; and lying on its side.
TEST_F(Wishes, PagesAreScaledAsAskedAndStayInTheMiddle) {
  const Place all = {812, 1218, 0, 0, 812, 1218, Corner::kTopLeft};
  const Place middle = {812, 1218, 203, 304, 609, 913, Corner::kTopLeft};
  const Place fitted = {812, 1218, 0, 35, 812, 1183, Corner::kTopLeft};
  const Place cut = {812, 1218, 0, 0, 130, 23, Corner::kTopLeft};  // only a part of the block
  expectPlaces("label-203", "4x6", {"image/urf", "application/pdf"},
               {{"the sheet's size", 812, 1218, "print-scaling=auto", all},
                {"the sheet's size, fitted", 812, 1218, "print-scaling=fit", all},
                {"the sheet's size, filled", 812, 1218, "print-scaling=fill", all},
                {"the sheet's size, unscaled", 812, 1218, "print-scaling=none", all},
                {"small, without a wish", 406, 609, "", middle},
                {"small", 406, 609, "print-scaling=auto", middle},
                {"small, fitted if too large", 406, 609, "print-scaling=auto-fit", middle},
                {"small, fitted", 406, 609, "print-scaling=fit", all},
                {"small, filled", 406, 609, "print-scaling=fill", all},
                {"small, unscaled", 406, 609, "print-scaling=none", middle},
                {"large, fitted if too large", 1654, 2339, "print-scaling=auto-fit", fitted},
                {"large, fitted", 1654, 2339, "print-scaling=fit", fitted},
                {"large, filled", 1654, 2339, "print-scaling=fill", all},
                {"large, unscaled", 1654, 2339, "print-scaling=none", cut}});
}

TEST_F(Wishes, PagesAreTurnedIntoTheSheet) {
  const auto turned = [](Corner block) { return Place{812, 1218, 0, 0, 812, 1218, block}; };
  expectPlaces(
      "label-203", "4x6", {"image/urf", "application/pdf"},
      {{"upright", 812, 1218, "orientation-requested=3", turned(Corner::kTopLeft)},
       {"upright, turned round", 812, 1218, "orientation-requested=6",
        turned(Corner::kBottomRight)},
       {"on its side", 1218, 812, "", turned(Corner::kBottomLeft)},
       {"on its side, as asked", 1218, 812, "orientation-requested=4", turned(Corner::kBottomLeft)},
       {"on its other side", 1218, 812, "orientation-requested=5", turned(Corner::kTopRight)}});
}

// The filter for photos makes a sheet as large as the photo; it comes out at the top of the label.
TEST_F(Wishes, PhotosAreScaledAsAskedAndStayAtTheTop) {
  const Place all = {812, 1218, 0, 0, 812, 1218, Corner::kTopLeft};
  const Place small = {406, 609, 0, 0, 406, 609, Corner::kTopLeft};
  const Place fitted = {812, 1148, 0, 0, 812, 1148, Corner::kTopLeft};
  expectPlaces("label-203", "4x6", {"image/png", "image/jpeg"},
               {{"the sheet's size", 812, 1218, "print-scaling=none", all},
                {"small, without a wish", 406, 609, "", all},
                {"small, fitted", 406, 609, "print-scaling=fit", all},
                {"large", 1654, 2339, "print-scaling=auto", all},
                {"large, fitted", 1654, 2339, "print-scaling=fit", fitted},
                {"large, filled", 1654, 2339, "print-scaling=fill", all}});
  expectPlaces("label-203", "4x6", {"image/jpeg"},
               {{"small", 406, 609, "print-scaling=auto", small},
                {"small, unscaled", 406, 609, "print-scaling=none", small}});
  // A PNG states its resolution per metre, of which the filter takes whole dots per inch: 202.
  const Place rounded = {408, 612, 0, 0, 408, 612, Corner::kTopLeft};
  expectPlaces("label-203", "4x6", {"image/png"},
               {{"small", 406, 609, "print-scaling=auto", rounded},
                {"small, unscaled", 406, 609, "print-scaling=none", rounded}});
}

constexpr char kWithoutMargins[] =
    "media-col={media-size={x-dimension=21000 y-dimension=29700} media-top-margin=0 "
    "media-bottom-margin=0 media-left-margin=0 media-right-margin=0}";

// Nothing is scaled down to make room for the margins: what lies in them is cut off.
TEST_F(Wishes, BorderlessStencilsKeepTheirSize) {
  const Place page = {2362, 3248, 0, 0, 767, 748, Corner::kTopLeft};
  const Place fitted = {2362, 3248, 33, 0, 2329, 3248, Corner::kTopLeft};
  expectPlaces("stencil-300", "A4", {"image/urf", "application/pdf"},
               {{"without margins", 2480, 3508, kWithoutMargins, page},
                {"fitted", 2480, 3508, "print-scaling=fit", fitted}});
}

}  // namespace
