// The printed dots of a sheet are those that were drawn, and the pictures on a halftone sheet are
// those that the filter itself produces with each halftone.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "sheets/raster_file.h"
#include "sheets/sheets.h"
#include "tests/spooler/picture.h"
#include "tests/tools/preview/preview_runner.h"
#include "tools/description/halftone_names.h"

namespace {

using korvel::SheetPage;
using korvel::SheetSize;

SheetSize sizeOf(const char* description, const std::string& name) {
  std::vector<SheetSize> sizes;
  EXPECT_EQ(korvel::readSheetSizes(ppdOf(description), &sizes), "");
  for (const SheetSize& size : sizes) {
    if (size.name == name) return size;
  }
  ADD_FAILURE() << "no size " << name;
  return {};
}

// As drawn: everything that is not paper is a dot.
Picture drawn(const korvel::DotCanvas& canvas) {
  Picture picture{static_cast<size_t>(canvas.width()), static_cast<size_t>(canvas.height()), {}};
  for (const uint8_t level : canvas.dots()) picture.dots.push_back(level == 0 ? 0 : 1);
  return picture;
}

// The page as the filter prints the sheet; its width without the padding of the last byte.
Picture printed(PreviewRunner* runner, const SheetPage& page, const char* description,
                const std::string& options) {
  const std::string file = runner->files().file("sheet.ras.gz");
  EXPECT_EQ(korvel::writeSheet(page, file), "");
  const CommandResult result = runner->preview({"--pages", "-p", ppdOf(description), "-o", options,
                                                "--out", runner->files().file("shown"), file});
  EXPECT_EQ(result.status, 0) << result.output;
  const Picture picture = readPicture(runner->files().file("shown/page-1.png"));
  return picture.part(0, 0, static_cast<size_t>(page.size().width), picture.height);
}

TEST(Sheets, PrintDotForDotWithTheThreshold) {
  const struct {
    const char* description;
    const char* size;
    SheetPage (*draw)(const SheetSize&);
  } kCases[] = {
      {"korvel-label-203", "4x6", korvel::drawSampler},
      {"korvel-label-300", "4x4", korvel::drawSampler},
      {"korvel-stencil-300", "Tattoo_A6", korvel::drawSampler},
      {"korvel-label-203", "20x30mmRotated", korvel::drawCalibration},
      {"korvel-label-300", "4x6Rotated", korvel::drawCalibration},
      {"korvel-stencil-300", "Tattoo_A5", korvel::drawCalibration},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.size);
    PreviewRunner runner;
    const SheetPage page = c.draw(sizeOf(c.description, c.size));
    const Picture have = printed(&runner, page, c.description, "HalftoneType=None");
    EXPECT_EQ(difference(have, drawn(page.canvas())), "");
    EXPECT_GT(have.printed(), 1000u);
  }
}

TEST(Sampler, ContainsWhatTheFilterPrintsWithEachHalftone) {
  const SheetSize size = sizeOf("korvel-label-203", "4x6");
  const korvel::SamplerPatches patches = korvel::samplerPatches(size);
  const SheetPage sheet = korvel::drawSampler(size);
  const Picture sampler = drawn(sheet.canvas());
  SheetSize patch = size;
  patch.width = patches.width;
  patch.height = patches.height;
  SheetPage grey(patch);
  grey.canvas()->paste(korvel::samplerPicture(size), 0, 0);
  PreviewRunner runner;
  for (size_t i = 0; i < korvel::kHalftoneNames.size(); ++i) {
    const std::string setting = korvel::kHalftoneNames[i].setting;
    const Picture want = printed(&runner, grey, "korvel-label-203", "HalftoneType=" + setting);
    const Picture have =
        sampler.part(static_cast<size_t>(patches.left[i]), static_cast<size_t>(patches.top[i]),
                     static_cast<size_t>(patches.width), static_cast<size_t>(patches.height));
    EXPECT_EQ(difference(have, want), "") << setting;
  }
}

TEST(Sheets, AFileThatCannotBeWrittenIsReportedInOneSentence) {
  const SheetPage page(sizeOf("korvel-label-203", "1x1"));
  EXPECT_EQ(korvel::writeSheet(page, "/no/sheet.ras.gz"),
            "cannot write /no/sheet.ras.gz: No such file or directory");
}

}  // namespace
