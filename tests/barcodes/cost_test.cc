// What exact barcodes cost elsewhere on a label: thin lines, small text and coloured text. The
// expected figures are the rows of the tables in docs/barcodes.md. SPDX-License-Identifier:
// Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>

#include "tests/barcodes/printed_page.h"

namespace {

constexpr int kLines = 24;     // of each width, each at another place between two dots
constexpr int kSpacing = 16;   // dots
constexpr int kWidthPt = 288;  // 4 x 2 inches
constexpr int kHeightPt = 144;

std::string pdf(const std::string& drawing) {
  return "%PDF-1.4\n1 0 obj <</Type /Catalog /Pages 2 0 R>> endobj\n"
         "2 0 obj <</Type /Pages /Kids [3 0 R] /Count 1>> endobj\n"
         "3 0 obj <</Type /Page /Parent 2 0 R /MediaBox [0 0 " +
         std::to_string(kWidthPt) + " " + std::to_string(kHeightPt) +
         "] /Contents 4 0 R /Resources <</Font <</F <</Type /Font /Subtype /Type1 /BaseFont "
         "/Helvetica>>>>>>>> endobj\n4 0 obj <</Length " +
         std::to_string(drawing.size()) + ">> stream\n" + drawing +
         "endstream endobj\ntrailer <</Root 1 0 R>>\n";
}

DotPage page(unsigned dpi, const std::string& drawing, std::vector<std::string> options) {
  options.insert(options.begin(), "PageSize=2x4Rotated");
  const std::vector<DotPage> pages =
      printed({"label-" + std::to_string(dpi), pdf(drawing), "application/pdf", options});
  EXPECT_EQ(pages.size(), 1U);
  return pages.empty() ? DotPage{} : pages[0];
}

// Upright lines, drawn in dots; `stroked` with a pen, otherwise filled.
std::string lines(unsigned dpi, double widthMm, bool stroked) {
  const std::string width = std::to_string(widthMm / 25.4 * dpi);
  const std::string scale = std::to_string(72.0 / dpi);
  std::string drawing = scale + " 0 0 " + scale + " 0 0 cm\n" + width + " w\n";
  for (int i = 0; i < kLines; ++i) {
    const std::string x = std::to_string(kSpacing * (i + 1) + static_cast<double>(i) / kLines);
    drawing += stroked ? x + " 100 m " + x + " 200 l S\n" : x + " 100 " + width + " 100 re f\n";
  }
  return drawing;
}

// The lines that are on the page, looked for half way up.
int linesOn(const DotPage& page, unsigned dpi) {
  const int y = static_cast<int>(kHeightPt / 72.0 * dpi) - 150;
  int seen = 0;
  for (int i = 0; i < kLines; ++i) {
    bool dots = false;
    for (int x = -4; x < 6; ++x) dots = dots || page.dot(kSpacing * (i + 1) + x, y);
    seen += dots ? 1 : 0;
  }
  return seen;
}

long dotsOn(const DotPage& page) {
  long dots = 0;
  for (const std::string& row : page.rows) dots += std::count(row.begin(), row.end(), '1');
  return dots;
}

std::string text(int size, const std::string& colour) {
  return colour + " BT /F " + std::to_string(size) +
         " Tf 10 60 Td (Handle with care 0123456789 Terms of carriage) Tj ET\n";
}

std::string documentation() {
  std::ifstream in(KORVEL_SOURCE_DIR "/docs/barcodes.md");
  return {std::istreambuf_iterator<char>(in), {}};
}

void expectRow(const std::string& row) {
  EXPECT_NE(documentation().find(row), std::string::npos) << "docs/barcodes.md lacks " << row;
}

TEST(ThinLines, VanishOnlyWhenTheyAreFilledAndNarrowerThanADot) {
  struct Case {
    const char* width;
    int filled203, filled300;  // of 24 with exact barcodes; without, all are printed
  };
  const Case kCases[] = {{"0.02", 4, 5},   {"0.05", 10, 14}, {"0.08", 16, 23},
                         {"0.10", 20, 24}, {"0.13", 24, 24}, {"0.25", 24, 24}};
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.width);
    const double width = std::stod(c.width);
    for (const unsigned dpi : {203U, 300U}) {
      const int want = dpi == 203 ? c.filled203 : c.filled300;
      EXPECT_NEAR(linesOn(page(dpi, lines(dpi, width, false), {}), dpi), want, 1) << dpi;
      EXPECT_EQ(linesOn(page(dpi, lines(dpi, width, true), {}), dpi), kLines) << dpi;
      EXPECT_EQ(linesOn(page(dpi, lines(dpi, width, false), {"CenterOfPixel=False"}), dpi), kLines)
          << dpi;
    }
    expectRow("| " + std::string(c.width) + " mm | " + std::to_string(c.filled203) + " | " +
              std::to_string(c.filled300) + " | 24 | 24 |");
  }
}

TEST(SmallText, IsTheSameWithAndWithoutExactBarcodes) {
  for (const unsigned dpi : {203U, 300U}) {
    for (int size = 4; size <= 8; ++size) {
      const DotPage exact = page(dpi, text(size, "0 g"), {});
      const DotPage fat = page(dpi, text(size, "0 g"), {"CenterOfPixel=False"});
      EXPECT_GT(dotsOn(exact), 500) << dpi << " dpi, " << size << " pt";
      EXPECT_EQ(exact.rows, fat.rows) << dpi << " dpi, " << size << " pt";
    }
  }
}

TEST(ColouredText, KeepsTheseSharesOfItsDots) {
  struct Case {
    const char* name;
    const char* colour;
    int byDefault, withoutContrast, byThreshold;  // per cent of black text
  };
  const Case kCases[] = {
      {"black", "0 g", 100, 100, 100},        {"dark blue", "0 0 0.5 rg", 100, 99, 100},
      {"red", "0.8 0.1 0.1 rg", 73, 63, 100}, {"middle grey", "0.5 g", 50, 50, 0},
      {"orange", "1 0.6 0.1 rg", 4, 26, 0},   {"light grey", "0.8 g", 0, 16, 0},
  };
  const auto dots = [](const Case& c, const std::vector<std::string>& options) {
    return static_cast<double>(dotsOn(page(203, text(12, c.colour), options)));
  };
  const double black = dots(kCases[0], {});
  for (const Case& c : kCases) {
    EXPECT_NEAR(100 * dots(c, {}) / black, c.byDefault, 2) << c.name;
    EXPECT_NEAR(100 * dots(c, {"Contrast=0"}) / black, c.withoutContrast, 2) << c.name;
    EXPECT_NEAR(100 * dots(c, {"HalftoneType=None"}) / black, c.byThreshold, 2) << c.name;
    expectRow("| " + std::string(c.name) + " | " + std::to_string(c.byDefault) + " % | " +
              std::to_string(c.withoutContrast) + " % | " + std::to_string(c.byThreshold) + " % |");
  }
}

}  // namespace
