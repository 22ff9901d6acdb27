// Every code on the test sheets is read by the decoders that Debian ships, at every size.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "sheets/sheets.h"
#include "tests/spooler/guarded_process.h"
#include "tests/support/temporary_folder.h"
#include "tests/tools/preview/preview_runner.h"

namespace {

using korvel::SheetCode;
using korvel::SheetPage;
using korvel::SheetSize;
using korvel::Symbology;

constexpr const char* kDrivers[] = {"korvel-label-203", "korvel-label-300", "korvel-stencil-300"};

std::vector<SheetSize> sizesOf(const char* driver) {
  std::vector<SheetSize> sizes;
  EXPECT_EQ(korvel::readSheetSizes(ppdOf(driver), &sizes), "");
  return sizes;
}

// The dots of a code and its quiet zone, in rows of one character per dot.
std::string dotsOf(const SheetPage& page, const SheetCode& code) {
  std::string dots;
  for (int y = code.top; y < code.top + code.height; ++y) {
    for (int x = code.left; x < code.left + code.width; ++x) {
      dots += page.canvas().at(x, y) == 0 ? '.' : '#';
    }
  }
  return dots;
}

// A grey picture file of the code on white paper, with room around it for the decoders.
std::string pictureOf(const SheetCode& code, const std::string& dots) {
  constexpr size_t kBorder = 20;
  const size_t codeWidth = static_cast<size_t>(code.width);
  const size_t width = codeWidth + 2 * kBorder;
  const size_t height = static_cast<size_t>(code.height) + 2 * kBorder;
  std::string rows(width * height, '\xff');
  for (size_t y = 0; y + 2 * kBorder < height; ++y) {
    for (size_t x = 0; x < codeWidth; ++x) {
      if (dots[y * codeWidth + x] == '#') rows[(y + kBorder) * width + x + kBorder] = '\0';
    }
  }
  return "P5 " + std::to_string(width) + " " + std::to_string(height) + " 255\n" + rows;
}

std::string read(const SheetCode& code, const std::string& dots) {
  const TemporaryFolder folder;
  const std::string file = folder.write("code.pgm", pictureOf(code, dots));
  if (code.symbology == Symbology::kDataMatrix) return run({"dmtxread", "-N1", file}).output;
  std::string text = run({"zbarimg", "--quiet", "--raw", "--nodbus", file}).output;
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

TEST(SheetCodes, OfTheTestLabelScanAtEverySize) {
  for (const char* driver : {"korvel-label-203", "korvel-label-300"}) {
    for (const SheetSize& size : sizesOf(driver)) {
      SCOPED_TRACE(std::string(driver) + " " + size.name);
      const SheetPage page = korvel::drawTestLabel(size);
      ASSERT_EQ(page.codes().size(), 1U);
      EXPECT_EQ(read(page.codes()[0], dotsOf(page, page.codes()[0])), page.codes()[0].text);
    }
  }
}

// A code of one kind and module has the same dots on every sheet, so each is read only once.
TEST(SheetCodes, OfTheCalibrationSheetScanAtEverySize) {
  std::map<std::string, SheetCode> seen;
  for (const char* driver : kDrivers) {
    for (const SheetSize& size : sizesOf(driver)) {
      const SheetPage page = korvel::drawCalibration(size);
      EXPECT_GE(page.codes().size(), 1U) << driver << " " << size.name;
      for (const SheetCode& code : page.codes()) seen.emplace(dotsOf(page, code), code);
    }
  }
  // Six square ones, and three linear ones whose height follows the resolution.
  EXPECT_EQ(seen.size(), 6U + 2 * 3U);
  for (const auto& [dots, code] : seen) EXPECT_EQ(read(code, dots), code.text);
}

TEST(SheetCodes, AreAllThereOnALargeSheet) {
  const std::map<std::string, std::string> large = {
      {"korvel-label-203", "4x6"}, {"korvel-label-300", "4x6"}, {"korvel-stencil-300", "A4"}};
  for (const auto& [driver, name] : large) {
    for (const SheetSize& size : sizesOf(driver.c_str())) {
      if (size.name != name) continue;
      EXPECT_EQ(korvel::drawCalibration(size).codes().size(), 9U) << driver;
    }
  }
}

}  // namespace
