// What clients of a shared queue send, in every format: the right sheet, at its true size.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/sharing/pages.h"
#include "tests/tools/emulator/printer_process.h"
#include "tests/spooler/private_spooler.h"

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
  void printsEveryDot(const std::string& model, const Words& sizes) {
    makeQueue(model);
    for (const std::string& name : sizes) {
      const PageSize size = pageSize(description_, name);
      const korvel::DotCanvas page = noisePage(size, 7);
      for (const std::string& format : kFormats) {
        const std::string file = writePage(page, size, format, files_.file("page"));
        const Picture want = printOf(page, size);
        const Picture have = print(model, file, format, {"PageSize=" + name});
        // Rows are sent as whole bytes; what fills the last one is blank.
        EXPECT_EQ(difference(have.part(0, 0, want.width, want.height), want), "")
            << model << " " << name << " " << format << ", " << have.width << " x " << have.height;
        EXPECT_LT(have.width, want.width + 8);
        EXPECT_EQ(have.printed(), want.printed());
      }
    }
  }

  TemporaryFolder files_;
  PrivateSpooler spooler_;
  ListeningPrinter printer_{spooler_.toolPath("korvel-printer"), {"--speed", "5000", "--pages"}};
  std::string description_;
  int pages_ = 0;
};

const Words kLabels = {"4x6",           "100x150mm", "2x4", "30x50mmRotated", "1.25x2.25Rotated",
                       "20x30mmRotated"};

TEST_F(Formats, MEASURE) {
  makeQueue("stencil-300");
  for (const char* name : {"A4", "Letter"}) {
    const PageSize size = pageSize(description_, name);
    korvel::DotCanvas page(size.width, size.height);
    for (int x = 100; x < size.width; x += 200) page.fill(x, 0, 1, size.height);
    for (int y = 100; y < size.height; y += 200) page.fill(0, y, size.width, 1);
    std::printf("%s %dx%d left %d top %d print %dx%d\n", name, size.width, size.height, size.left, size.top, size.printWidth, size.printHeight);
    for (const char* format : {"application/pdf", "image/png"})
    for (const char* opt : {"print-scaling=auto", "print-scaling=none"}) {
      const std::string file = writePage(page, size, format, files_.file("page"));
      const Picture have = print("stencil-300", file, format, {std::string("PageSize=") + name, opt});
      std::printf("%s %s %s cols:", name, format, opt);
      for (size_t x = 0; x < have.width; ++x) if (have.part(x, 0, 1, have.height).printed() > have.height / 2) std::printf(" %zu", x);
      std::printf("\nrows:");
      for (size_t y = 0; y < have.height; ++y) if (have.part(0, y, have.width, 1).printed() > have.width / 2) std::printf(" %zu", y);
      std::printf("\n");
    }
  }
}
TEST_F(Formats, LabelsOf203DotsPrintDotForDot) { printsEveryDot("label-203", kLabels); }
TEST_F(Formats, LabelsOf300DotsPrintDotForDot) { printsEveryDot("label-300", kLabels); }
TEST_F(Formats, StencilsPrintDotForDot) {
  printsEveryDot("stencil-300", {"A4", "Letter", "Tattoo_A5", "Tattoo_A6"});
}

}  // namespace
