// The page's files: every text in every language, and their size.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>

#include "studio/page_assets.h"

namespace fs = std::filesystem;

namespace {

const fs::path kPage = KORVEL_SOURCE_DIR "/studio/page";
constexpr size_t kMostBytes = 60'000;

std::string readAll(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// Key and text of a language's file.
std::map<std::string, std::string> textsOf(const fs::path& path) {
  static const std::regex kEntry(R"re('?([A-Za-z][A-Za-z-]*)'?: '([^']*)')re");
  const std::string content = readAll(path);
  std::map<std::string, std::string> texts;
  for (std::sregex_iterator at(content.begin(), content.end(), kEntry), end; at != end; ++at) {
    texts[(*at)[1]] = (*at)[2];
  }
  return texts;
}

std::set<std::string> placesOf(const std::string& text) {
  static const std::regex kPlace("\\{[0-9]\\}");
  return {std::sregex_token_iterator(text.begin(), text.end(), kPlace), {}};
}

TEST(PageLanguages, AllHaveEveryTextWithItsPlaces) {
  const auto english = textsOf(kPage / "languages/en.js");
  EXPECT_GT(english.size(), 90u);
  for (const char* code : {"de", "es", "fr", "it", "ja", "nl", "pl", "pt", "pt_BR", "zh_CN"}) {
    const auto texts = textsOf(kPage / "languages" / (std::string(code) + ".js"));
    for (const auto& [key, text] : english) {
      const auto found = texts.find(key);
      ASSERT_NE(found, texts.end()) << code << " lacks " << key;
      EXPECT_EQ(placesOf(found->second), placesOf(text)) << code << " " << key;
      EXPECT_FALSE(found->second.empty()) << code << " " << key;
    }
    EXPECT_EQ(texts.size(), english.size()) << code;
  }
}

TEST(PageLanguages, HaveEveryTextThatThePageNames) {
  const auto english = textsOf(kPage / "languages/en.js");
  static const std::regex kNamed(R"re(data-(?:t|label)="([^"]+)")re");
  const std::string html = readAll(kPage / "index.html");
  for (std::sregex_iterator at(html.begin(), html.end(), kNamed), end; at != end; ++at) {
    EXPECT_TRUE(english.contains((*at)[1])) << (*at)[1];
  }
}

// What one visit loads: everything but the languages, and the longest of those.
TEST(Page, IsSmall) {
  korvel::PageAssets assets;
  ASSERT_TRUE(assets.load(kPage).ok());
  size_t bytes = 0;
  size_t longest = 0;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kPage)) {
    if (!entry.is_regular_file()) continue;
    const korvel::PageAsset* asset =
        assets.find("/" + entry.path().lexically_relative(kPage).string());
    ASSERT_NE(asset, nullptr) << entry.path();
    const bool isLanguage = entry.path().parent_path().filename() == "languages";
    if (isLanguage)
      longest = std::max(longest, asset->content.size());
    else
      bytes += asset->content.size();
  }
  EXPECT_LE(bytes + longest, kMostBytes);
}

TEST(Page, LoadsNothingFromElsewhereAndHasNoInlineScriptsOrStyles) {
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kPage)) {
    if (!entry.is_regular_file()) continue;
    const std::string content = readAll(entry.path());
    EXPECT_EQ(std::regex_replace(content, std::regex("http://www.w3.org/2000/svg"), "").find("://"),
              std::string::npos)
        << entry.path();
    for (const char* inlined : {"style=\"", "onclick=", "<style", "innerHTML"}) {
      EXPECT_EQ(content.find(inlined), std::string::npos) << entry.path() << ": " << inlined;
    }
  }
}

}  // namespace
