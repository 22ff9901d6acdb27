// Links, pictures, options, sheets and messages of the guide: each exists, and no error of the
// filter is left out.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "tests/spooler/picture.h"

namespace {

namespace fs = std::filesystem;

std::string textOf(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

std::vector<fs::path> filesBelow(const fs::path& folder, const std::set<std::string>& endings) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (endings.contains(entry.path().extension())) files.push_back(entry.path());
  }
  return files;
}

std::vector<fs::path> pages() { return filesBelow(KORVEL_GUIDE_DIR, {".html"}); }

// The first group of every match.
std::set<std::string> found(const std::string& text, const char* pattern) {
  std::set<std::string> all;
  const std::regex regex(pattern);
  for (std::sregex_iterator at(text.begin(), text.end(), regex), end; at != end; ++at) {
    all.insert((*at)[1]);
  }
  return all;
}

std::string plain(std::string text) {
  const std::pair<const char*, const char*> kEntities[] = {
      {"&quot;", "\""}, {"&lt;", "<"}, {"&gt;", ">"}, {"&amp;", "&"}};
  for (const auto& [entity, letter] : kEntities) {
    text = std::regex_replace(text, std::regex(entity), letter);
  }
  return text;
}

// Sources with the parts of a literal joined, so that a message is found whole.
std::string sourcesOf(const std::vector<const char*>& folders) {
  static const std::regex kSeam("\"\\s*\n\\s*\"");
  std::string text;
  for (const char* folder : folders) {
    for (const fs::path& file : filesBelow(fs::path(KORVEL_SOURCE_DIR) / folder, {".cc", ".h"})) {
      text += std::regex_replace(textOf(file), kSeam, "");
    }
  }
  return text;
}

std::set<std::string> explainedMessages() {
  std::set<std::string> messages;
  const std::string page = textOf(fs::path(KORVEL_GUIDE_DIR) / "troubleshooting.html");
  for (const std::string& each : found(page, "<h3><code>([^<]*)</code></h3>")) {
    messages.insert(plain(each));
  }
  return messages;
}

TEST(Guide, HasAllItsPages) {
  EXPECT_EQ(pages().size(), 8u);
  EXPECT_TRUE(fs::exists(fs::path(KORVEL_GUIDE_DIR) / "index.html"));
}

TEST(Guide, EveryLinkLeadsToAPageOfItsOwn) {
  for (const fs::path& page : pages()) {
    const std::set<std::string> links = found(textOf(page), "href=\"([^\"]*)\"");
    EXPECT_GE(links.size(), 9u) << page;
    for (const std::string& link : links) {
      EXPECT_TRUE(fs::is_regular_file(page.parent_path() / link)) << page << " to " << link;
    }
  }
}

TEST(Guide, EveryPictureIsThereAndHasDots) {
  std::set<std::string> shown;
  for (const fs::path& page : pages()) {
    for (const std::string& name : found(textOf(page), "src=\"([^\"]*)\"")) shown.insert(name);
    EXPECT_EQ(textOf(page).find("alt=\"\""), std::string::npos) << page;
  }
  EXPECT_GE(shown.size(), 10u);
  std::set<std::string> made;
  for (const fs::path& file : filesBelow(KORVEL_GUIDE_DIR, {".png"})) {
    made.insert("pictures/" + file.filename().string());
    EXPECT_GT(readPicture(file).printed(), 1000u) << file;
  }
  EXPECT_EQ(shown, made);
}

TEST(Guide, EveryOptionHasThatChoiceInADescription) {
  std::string descriptions;
  for (const fs::path& file : filesBelow(KORVEL_PPD_DIR, {".ppd"})) descriptions += textOf(file);
  for (const fs::path& page : pages()) {
    for (const std::string& option : found(textOf(page), "-o ([A-Z][A-Za-z]+=[A-Za-z0-9_.-]+)")) {
      const size_t at = option.find('=');
      const std::string line = "\n*" + option.substr(0, at) + " " + option.substr(at + 1) + "/";
      EXPECT_NE(descriptions.find(line), std::string::npos) << page << " " << option;
    }
  }
}

TEST(Guide, EverySheetIsInstalled) {
  size_t named = 0;
  for (const fs::path& page : pages()) {
    for (const std::string& sheet :
         found(textOf(page), "/usr/share/korvel/sheets/([A-Za-z0-9._-]+)")) {
      ++named;
      EXPECT_TRUE(fs::exists(fs::path(KORVEL_SHEET_DIR) / sheet)) << page << " " << sheet;
    }
  }
  EXPECT_GE(named, 4u);
}

TEST(Guide, EveryMessageStandsInTheSources) {
  const std::string sources = sourcesOf({"filter", "tools"});
  EXPECT_GE(explainedMessages().size(), 20u);
  for (const std::string& message : explainedMessages()) {
    EXPECT_NE(sources.find(message), std::string::npos) << message;
  }
}

TEST(Guide, ExplainsEveryErrorOfTheFilter) {
  const std::string sources = sourcesOf({"filter"});
  std::set<std::string> errors = found(sources, "pellamLogCommon\\(\\s*[2-9],\\s*\"([^\"]*)\"");
  for (const std::string& each :
       found(sources, "fprintf\\(stderr,\\s*\"((ERROR|WARN|CRIT|EMERG|ALERT):[^\"]*)\"")) {
    errors.insert(each);
  }
  EXPECT_GE(errors.size(), 10u);
  const std::set<std::string> explained = explainedMessages();
  for (const std::string& error : errors) {
    const bool known =
        std::any_of(explained.begin(), explained.end(),
                    [&](const std::string& each) { return error.starts_with(each); });
    EXPECT_TRUE(known) << "the guide does not explain: " << error;
  }
}

}  // namespace
