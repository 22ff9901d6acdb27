// What clients of a shared queue send, in every format: the right sheet, at its true size.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "tests/sharing/pages.h"
#include "tests/spooler/private_spooler.h"
#include "tests/tools/emulator/printer_process.h"

namespace {

using Words = std::vector<std::string>;

constexpr double kSeconds = 30;
const Words kFormats = {"image/urf", "image/pwg-raster", "application/pdf", "image/png",
                        "image/jpeg"};

class Formats : public testing::Test {
 protected:
  void SetUp() override { ASSERT_FALSE(HasFailure()); }

  void makeQueue(const std::string& model) {
    spooler_.addQueue(model, "korvel-" + model, printer_.port());
    spooler_.setDefault(model, "HalftoneType=None");
    spooler_.setDefault(model, "Contrast=0");
    description_ = spooler_.queueDescription(model);
  }
  // The page that a document prints.
  Picture print(const std::string& queue, const std::string& file, const std::string& format,
                const Words& options) {
    Words words = {"-o", "document-format=" + format};
    for (const std::string& option : options) words.insert(words.end(), {"-o", option});
    words.push_back(file);
    const int job = spooler_.print(queue, words);
    EXPECT_TRUE(spooler_.waitForJob(job, kSeconds)) << file;
    EXPECT_TRUE(printer_.waitForEvent("sheet " + std::to_string(++pages_), kSeconds));
    return readPicture(printer_.pagePath(pages_));
  }
  void printsEveryDot(const std::string& model, const Words& sizes, const Words& formats) {
    makeQueue(model);
    for (const std::string& name : sizes) {
      const PageSize size = pageSize(description_, name);
      const korvel::DotCanvas page = noisePage(size, 7);
      const Picture want = printOf(page, size);
      for (const std::string& format : formats) {
        SCOPED_TRACE(model + " " + name + " " + format);
        const std::string file = writePage(page, size, format, files_.file("page"));
        const Picture have = print(model, file, format, {"PageSize=" + name});
        // Rows are sent as whole bytes; what fills the last one is blank.
        EXPECT_EQ(difference(have.part(0, 0, want.width, want.height), want), "");
        EXPECT_LT(have.width, want.width + 8);
        EXPECT_EQ(have.printed(), want.printed());
      }
    }
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

const Words kInches = {"4x6", "4x4", "2x4", "3x5"};
const Words kPages = {"image/urf", "image/pwg-raster", "application/pdf"};

TEST_F(Formats, LabelsOf203DotsPrintDotForDot) { printsEveryDot("label-203", kInches, kFormats); }
TEST_F(Formats, LabelsOf300DotsPrintDotForDot) {
  printsEveryDot("label-300", {"4x6", "4x4", "2x4", "3x5", "30x50mmRotated", "1.25x2.25Rotated"},
                 kFormats);
}
TEST_F(Formats, StencilsPrintDotForDot) { printsEveryDot("stencil-300", {"Letter"}, kPages); }

// CUPS' filters place a page whose length is not a whole number of points up to 2 dots (0.2 mm)
// lower, but its size is true.
TEST_F(Formats, OtherSizesAreTrueToTheDot) {
  for (const auto& [model, name, step] :
       {std::tuple("stencil-300", "A4", 300), std::tuple("stencil-300", "Tattoo_A5", 150),
        std::tuple("stencil-300", "Tattoo_A6", 150), std::tuple("label-203", "100x150mm", 100),
        std::tuple("label-203", "30x50mmRotated", 30)}) {
    makeQueue(model);
    const PageSize size = pageSize(description_, name);
    const int first = size.top + step / 2;
    const int count = (size.printHeight - step / 2 - 3) / step + 1;
    korvel::DotCanvas page(size.width, size.height);
    for (int i = 0; i < count; ++i) page.fill(0, first + i * step, size.width, 1);
    for (const std::string& format : kPages) {
      SCOPED_TRACE(std::string(name) + " " + format);
      const std::string file = writePage(page, size, format, files_.file("page"));
      const std::vector<size_t> rows =
          lines(print(model, file, format, {std::string("PageSize=") + name}));
      ASSERT_EQ(rows.size(), static_cast<size_t>(count));
      EXPECT_NEAR(static_cast<double>(rows.front()), step / 2, 2);
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
      found.push_back(perMille(print("label-203", file, format, {"PageSize=2x2"})));
    }
    const auto [least, most] = std::minmax_element(found.begin(), found.end());
    EXPECT_LE(*most - *least, 8) << "ink " << ink << ": " << testing::PrintToString(found);
  }
}

}  // namespace
