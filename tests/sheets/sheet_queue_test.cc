// A compressed sheet printed with lp passes through a real cupsd without being scaled or moved.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "sheets/raster_file.h"
#include "sheets/sheets.h"
#include "tests/spooler/picture.h"
#include "tests/tools/emulator/printer_process.h"
#include "tests/spooler/private_spooler.h"
#include "tests/tools/preview/preview_runner.h"

namespace {

constexpr double kJobSeconds = 90;

TEST(SheetOnAQueue, PrintsItsDotsWhateverSizeTheQueueHas) {
  PrivateSpooler spooler;
  ASSERT_FALSE(HasFatalFailure());
  const ListeningPrinter printer(spooler.toolPath("korvel-printer"), {"--speed", "5000"});
  spooler.addQueue("labels", "korvel-label-203", printer.port());
  spooler.setDefault("labels", "PageSize=2x4");
  std::vector<korvel::SheetSize> sizes;
  ASSERT_EQ(korvel::readSheetSizes(ppdOf("korvel-label-203"), &sizes), "");
  ASSERT_EQ(sizes[0].name, "4x6");
  const korvel::SheetPage page = korvel::drawSampler(sizes[0]);
  const TemporaryFolder files;
  ASSERT_EQ(korvel::writeSheet(page, files.file("halftones.ras.gz")), "");
  const int job =
      spooler.print("labels", {"-o", "HalftoneType=None", files.file("halftones.ras.gz")});
  ASSERT_TRUE(spooler.waitForJob(job, kJobSeconds));
  ASSERT_TRUE(printer.waitForEvent("sheet 1 out", kJobSeconds));
  const Picture have = readPicture(printer.pagePath(1));
  // Rows are sent as whole bytes: 812 dots, and four that stay blank.
  Picture want{816, 1218, {}};
  for (const uint8_t level : page.canvas().dots()) {
    want.dots.push_back(level == 0 ? 0 : 1);
    if (want.dots.size() % 816 == 812) want.dots.insert(want.dots.end(), 4, 0);
  }
  EXPECT_EQ(difference(have, want), "");
}

}  // namespace
