// Copies and page accounting: as many sheets as were asked for, and as many in the page log.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/spooler/documents.h"
#include "tests/spooler/picture.h"
#include "tests/spooler/private_spooler.h"
#include "tests/tools/emulator/printer_process.h"

namespace {

constexpr double kJobSeconds = 200;  // a guard against hanging, no measure

TEST(PageAccounting, CountsEverySheetOnceWhenPageLoggingIsOn) {
  const TemporaryFolder files;
  const std::string one = files.write("one.pdf", makePdf({barLabel(4)}));
  const std::string two = files.write("two.pdf", makePdf({barLabel(5), barLabel(6)}));
  const std::string text = files.write("text.txt", "A short text.\n");
  const struct {
    const char* sentence;
    std::string document;
    const char* copies;
    int sheets;
  } kCases[] = {
      {"one page", one, "1", 1},
      {"one page, five copies", one, "5", 5},
      {"two pages, three copies", two, "3", 6},
      {"a text twice", text, "2", 2},
  };

  PrivateSpooler spooler;
  ASSERT_FALSE(HasFatalFailure());
  const ListeningPrinter printer(spooler.toolPath("korvel-printer"), {"--speed", "5000"});
  spooler.addQueue("label", "korvel-label-203", printer.port());
  std::string log;
  int out = 0;
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.sentence);
    const int job = spooler.print("label", {"-n", c.copies, "-o", "page-logging=on", c.document});
    ASSERT_TRUE(spooler.waitForJob(job, kJobSeconds));
    out += c.sheets;
    ASSERT_TRUE(printer.waitForEvent("sheet " + std::to_string(out) + " out", kJobSeconds));
    EXPECT_EQ(printer.events({"area"}).size(), static_cast<size_t>(out));
    EXPECT_EQ(spooler.sheetsCompleted(job), c.sheets);
    log += "label " + std::to_string(job) + " total " + std::to_string(c.sheets) + "\n";
    EXPECT_EQ(spooler.pageLog(), log);
  }
}

TEST(PageAccounting, FiftyLabelsAreFiftySheets) {
  const TemporaryFolder files;
  const std::string document = files.write("label.pdf", makePdf({barLabel(7)}));
  PrivateSpooler spooler;
  ASSERT_FALSE(HasFatalFailure());
  const ListeningPrinter printer(spooler.toolPath("korvel-printer"), {"--speed", "5000"});
  spooler.addQueue("label", "korvel-label-203", printer.port());
  const int job = spooler.print("label", {"-n", "50", "-o", "page-logging=on", document});
  ASSERT_TRUE(spooler.waitForJob(job, kJobSeconds));
  ASSERT_TRUE(printer.waitForEvent("sheet 50 out", kJobSeconds));
  EXPECT_EQ(printer.events({"area"}).size(), 50u);
  EXPECT_EQ(spooler.pageLog(), "label " + std::to_string(job) + " total 50\n");
  const Picture first = readPicture(printer.pagePath(1));
  EXPECT_GT(first.printed(), 0u);
  for (int number = 2; number <= 50; ++number) {
    EXPECT_EQ(difference(readPicture(printer.pagePath(number)), first), "") << "page " << number;
  }
}

}  // namespace
