// The guide in a real browser: no overflow, reachable navigation, working search, no errors; and
// colours that are readable. The browser opens local files only.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <regex>
#include <string>

#include "tests/guide/guide_pages.h"
#include "tests/support/temporary_folder.h"

namespace {

std::string replaced(const std::string& text, const std::string& from, const std::string& to) {
  const size_t at = text.find(from);
  return at == std::string::npos ? text : text.substr(0, at) + to + text.substr(at + from.size());
}

bool isInstalled(const char* program) {
  return std::system((std::string("command -v ") + program + " > /dev/null").c_str()) == 0;
}

// Colours as numbers and their contrast by the formula of WCAG 2 (W3C, 2008).
double linear(const std::string& hex) {
  const double value = static_cast<double>(std::stoul(hex, nullptr, 16)) / 255;
  return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double luminance(const std::string& colour) {
  return 0.2126 * linear(colour.substr(1, 2)) + 0.7152 * linear(colour.substr(3, 2)) +
         0.0722 * linear(colour.substr(5, 2));
}

double contrast(const std::string& a, const std::string& b) {
  const double first = luminance(a), second = luminance(b);
  return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

TEST(GuideColours, AreReadableInLightAndDark) {
  EXPECT_NEAR(contrast("#000000", "#ffffff"), 21, 0.01);
  EXPECT_NEAR(contrast("#777777", "#ffffff"), 4.48, 0.01);
  const struct {
    const char* ink;
    const char* ground;
  } kPairs[] = {{"ink", "page"},    {"ink", "ground"},  {"soft", "page"},
                {"soft", "ground"}, {"link", "page"},   {"accent", "tint"},
                {"ink", "tint"},    {"bar-ink", "bar"}, {"accent", "page"}};
  const std::string style = textOf(guideFile("style.css"));
  const size_t dark = style.find("@media (prefers-color-scheme: dark)");
  ASSERT_NE(dark, std::string::npos);
  for (const std::string& scheme : {style.substr(0, dark), style.substr(dark)}) {
    const auto colour = [&](const std::string& name) {
      const auto all = allFound(scheme, ("--" + name + ": (#[0-9a-f]{6});").c_str());
      return all.empty() ? std::string("#000000") : all[0];
    };
    for (const auto& [ink, ground] : kPairs) {
      EXPECT_GE(contrast(colour(ink), colour(ground)), 4.5)
          << ink << " " << colour(ink) << " on " << ground << " " << colour(ground);
    }
  }
}

// Runs the browser on a local file, with its output in "dom" and its log in "log". Everything is
// switched off that could open a connection; no host name resolves.
bool browse(const TemporaryFolder& folder, const std::string& arguments, const std::string& page) {
  const std::string command =
      "timeout 240 chromium --headless --no-sandbox --disable-gpu --no-first-run "
      "--disable-background-networking --disable-component-update --disable-sync "
      "--host-resolver-rules='MAP * ~NOTFOUND' --allow-file-access-from-files "
      "--enable-logging=stderr --user-data-dir='" +
      folder.file("profile") + "' " + arguments + " 'file://" + page + "' > '" +
      folder.file("dom") + "' 2> '" + folder.file("log") + "'";
  return std::system(command.c_str()) == 0;
}

std::string languageOf(const testing::TestParamInfo<Edition>& edition) {
  return edition.param.language;
}

class EditionInABrowser : public testing::TestWithParam<Edition> {};

TEST_P(EditionInABrowser, FitsItsWidthAndFindsItsSections) {
  if (!isInstalled("chromium")) GTEST_SKIP() << "chromium is not installed";
  const TemporaryFolder folder;
  std::string names;
  for (const std::string& name : pageNames()) names += (names.empty() ? "" : " ") + name + ".html";
  const std::string source =
      textOf(std::string(KORVEL_SOURCE_DIR) + "/tests/guide/browser_check.html");
  const std::string address = "file://" KORVEL_GUIDE_DIR "/" + GetParam().folder;
  const std::string page = folder.write(
      "check.html", replaced(replaced(replaced(source, "@GUIDE@", address), "@PAGES@", names),
                             "@LANGUAGE@", GetParam().language));
  ASSERT_TRUE(browse(folder, "--virtual-time-budget=120000 --dump-dom", page))
      << folder.read("log");
  const std::string dom = folder.read("dom");
  const std::string have = allFound(dom, "<pre id=\"result\">([^<]*)</pre>").at(0);
  const size_t count = pageNames().size();
  const size_t searches = GetParam().language == "en" ? 5 * count : 2 * count;
  EXPECT_EQ(have, "checked " + std::to_string(count) + " pages, " + std::to_string(searches) +
                      " searches\n\nend");
  const std::string log = folder.read("log");
  EXPECT_EQ(log.find("CONSOLE"), std::string::npos) << log;
}

INSTANTIATE_TEST_SUITE_P(All, EditionInABrowser, testing::ValuesIn(editions()), languageOf);

class QuickCard : public testing::TestWithParam<Edition> {};

INSTANTIATE_TEST_SUITE_P(All, QuickCard, testing::ValuesIn(editions()), languageOf);

TEST_P(QuickCard, IsAPdfOfOnePage) {
  const std::string card = guideFile(GetParam().folder + "quick-card.pdf");
  const TemporaryFolder folder;
  const std::string command = "gs -q -dNODISPLAY --permit-file-read='" + card + "' -c '(" + card +
                              ") (r) file runpdfbegin pdfpagecount = quit' > '" +
                              folder.file("count") + "'";
  ASSERT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(folder.read("count"), "1\n");
}

TEST_P(QuickCard, IsPrintedOnOnePageByABrowser) {
  if (!isInstalled("chromium")) GTEST_SKIP() << "chromium is not installed";
  const TemporaryFolder folder;
  const std::string arguments =
      "--no-pdf-header-footer --print-to-pdf='" + folder.file("pdf") + "'";
  ASSERT_TRUE(browse(folder, arguments, guideFile(GetParam().folder + "quick-card.html")))
      << folder.read("log");
  EXPECT_EQ(allFound(folder.read("pdf"), "/Type /Pages\\s*/Count ([0-9]+)"),
            std::vector<std::string>{"1"});
}

}  // namespace
