// The guide as it was built: its structure, and links, pictures, options, sheets and messages that
// exist. Every error message of the filter is explained.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "tests/guide/guide_pages.h"
#include "tests/spooler/picture.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesBelow(const fs::path& folder, const std::set<std::string>& endings) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (endings.contains(entry.path().extension())) files.push_back(entry.path());
  }
  return files;
}

std::vector<fs::path> pages() { return filesBelow(KORVEL_GUIDE_DIR, {".html"}); }

// Where a link or picture of a page is, relative to the guide: "pictures/stencil.png".
std::string inGuide(const fs::path& page, const std::string& link) {
  return (page.parent_path() / link).lexically_normal().lexically_relative(KORVEL_GUIDE_DIR);
}

std::string plain(std::string text) {
  const std::pair<const char*, const char*> kEntities[] = {
      {"&quot;", "\""}, {"&lt;", "<"}, {"&gt;", ">"}, {"&amp;", "&"}};
  for (const auto& [entity, letter] : kEntities) {
    text = std::regex_replace(text, std::regex(entity), letter);
  }
  return text;
}

// Sources with the parts of each literal joined, so that a message is found as a whole.
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

std::set<std::string> explainedMessages(const std::string& folder = "") {
  std::set<std::string> messages;
  const std::string page = textOf(guideFile(folder + "messages.html"));
  for (const char* pattern :
       {"<h3 id=\"[^\"]*\"><code>([^<]*)</code>", "<li><code>([^<]*)</code></li>"}) {
    for (const std::string& each : found(page, pattern)) messages.insert(plain(each));
  }
  return messages;
}

// The text between two marks, or nothing.
std::string between(const std::string& text, const std::string& from, const std::string& to) {
  const size_t begin = text.find(from);
  if (begin == std::string::npos) return "";
  return text.substr(begin + from.size(), text.find(to, begin) - begin - from.size());
}

// ---- Structure ----

TEST(Guide, HasExactlyTheListedPages) {
  std::set<std::string> listed, built;
  for (const Edition& edition : editions()) {
    for (const std::string& name : pageNames()) listed.insert(edition.folder + name + ".html");
  }
  for (const fs::path& page : pages()) built.insert(page.lexically_relative(KORVEL_GUIDE_DIR));
  EXPECT_EQ(built, listed);
  EXPECT_GE(built.size(), 4u * 17);
  EXPECT_TRUE(built.contains("index.html"));
}

TEST(Guide, NavigationOfEveryPageHasAllPagesInOrder) {
  std::vector<std::string> want;
  for (const std::string& name : pageNames()) want.push_back(name + ".html");
  for (const fs::path& page : pages()) {
    const std::string navigation = between(textOf(page), "<nav class=\"pages\"", "</nav>");
    EXPECT_EQ(allFound(navigation, "href=\"([^\"]*)\""), want) << page;
    const std::string here = "href=\"" + page.filename().string() + "\" aria-current=\"page\"";
    EXPECT_NE(navigation.find(here), std::string::npos) << page;
  }
}

TEST(Guide, PreviousAndNextLeadThroughAllPages) {
  const std::vector<std::string> names = pageNames();
  const std::vector<std::string> none;
  for (const Edition& edition : editions()) {
    for (size_t i = 0; i < names.size(); ++i) {
      const std::string page = textOf(guideFile(edition.folder + names[i] + ".html"));
      const std::vector<std::string> before = allFound(page, "class=\"prev\" href=\"([^\"]*)\"");
      const std::vector<std::string> after = allFound(page, "class=\"next\" href=\"([^\"]*)\"");
      EXPECT_EQ(before, i == 0 ? none : std::vector{names[i - 1] + ".html"}) << names[i];
      EXPECT_EQ(after, i + 1 == names.size() ? none : std::vector{names[i + 1] + ".html"})
          << names[i];
    }
  }
}

TEST(Guide, EveryPageLeadsToItsOtherEditions) {
  for (const Edition& edition : editions()) {
    for (const std::string& name : pageNames()) {
      const fs::path page = guideFile(edition.folder + name + ".html");
      const std::string text = textOf(page);
      EXPECT_NE(text.find("<html lang=\"" + edition.language + "\">"), std::string::npos) << page;
      const std::string links = between(text, "<nav class=\"languages\"", "</nav>");
      std::vector<std::string> want, have;
      for (const Edition& other : editions()) {
        want.push_back(other.language + " " + other.folder + name + ".html");
      }
      const std::vector<std::string> languages = allFound(links, " hreflang=\"([^\"]*)\"");
      const std::vector<std::string> targets = allFound(links, " href=\"([^\"]*)\"");
      ASSERT_EQ(languages.size(), targets.size()) << page;
      for (size_t i = 0; i < targets.size(); ++i) {
        have.push_back(languages[i] + " " + inGuide(page, targets[i]));
      }
      EXPECT_EQ(have, want) << page;
      const std::vector<std::string> here = {edition.language};
      EXPECT_EQ(allFound(links, "<a lang=\"([^\"]*)\"[^>]* aria-current=\"true\""), here) << page;
    }
  }
}

TEST(Guide, TitlesAreUniqueAndNameTheProduct) {
  std::set<std::string> titles;
  for (const Edition& edition : editions()) {
    for (const std::string& name : pageNames()) {
      const std::string page = edition.folder + name + ".html";
      const std::string title = between(textOf(guideFile(page)), "<title>", "</title>");
      EXPECT_TRUE(title.ends_with(edition.product)) << page << " " << title;
      EXPECT_TRUE(titles.insert(title).second) << page << " " << title;
    }
  }
}

TEST(Guide, IdsAreUniqueOnTheirPage) {
  for (const fs::path& page : pages()) {
    std::set<std::string> ids;
    for (const std::string& id : allFound(textOf(page), " id=\"([^\"]*)\"")) {
      EXPECT_TRUE(ids.insert(id).second) << page << " " << id;
    }
    EXPECT_GE(ids.size(), 5u) << page;
  }
}

TEST(Guide, HeadingsHaveIdsAndSkipNoLevel) {
  for (const fs::path& page : pages()) {
    const std::string article = between(textOf(page), "<article>", "</article>");
    const std::string text =
        std::regex_replace(article, std::regex("<nav class=\"contents\"[^]*?</nav>"), "");
    int last = 0;
    for (const std::string& heading : allFound(text, "<h([1-6][^>]*)>")) {
      const int level = heading[0] - '0';
      EXPECT_NE(heading.find(" id=\""), std::string::npos) << page << " h" << heading;
      EXPECT_LE(level, last + 1) << page << " h" << heading;
      EXPECT_EQ(level == 1, last == 0) << page << " h" << heading;
      last = level;
    }
  }
}

TEST(Guide, ContentsListEverySectionOfAPage) {
  size_t withContents = 0;
  for (const fs::path& page : pages()) {
    const std::string text = textOf(page);
    const std::string contents = between(text, "<nav class=\"contents\"", "</nav>");
    if (contents.empty()) continue;
    ++withContents;
    EXPECT_EQ(allFound(contents, "href=\"#([^\"]*)\""), allFound(text, "<h2 id=\"([^\"]*)\""))
        << page;
  }
  EXPECT_GE(withContents, 4u * 15);
}

TEST(Guide, EveryLinkLeadsToAFileAndASectionOfTheGuide) {
  std::map<std::string, std::set<std::string>> ids;
  for (const fs::path& page : pages()) {
    ids[inGuide(page, page.filename())] = found(textOf(page), " id=\"([^\"]*)\"");
  }
  for (const fs::path& page : pages()) {
    for (const std::string& link : found(textOf(page), "(?:href|src)=\"([^\"]*)\"")) {
      const size_t hash = std::min(link.find('#'), link.size());
      const std::string file =
          inGuide(page, hash == 0 ? page.filename().string() : link.substr(0, hash));
      EXPECT_TRUE(fs::is_regular_file(guideFile(file))) << page << " to " << link;
      if (hash < link.size()) {
        EXPECT_TRUE(ids[file].contains(link.substr(hash + 1))) << page << " to " << link;
      }
    }
  }
}

// An entry is a line: ["page.html#id","title","heading","text"],
TEST(Guide, SearchFindsEverySection) {
  for (const Edition& edition : editions()) {
    const std::string index = textOf(guideFile(edition.folder + "search-index.js"));
    EXPECT_TRUE(index.starts_with("window.guideIndex = [\n"));
    EXPECT_TRUE(index.ends_with("\n];\n"));
    size_t sections = 0;
    for (const std::string& each : pageNames()) {
      const std::string name = each + ".html";
      const std::string page = textOf(guideFile(edition.folder + name));
      for (const std::string& id : allFound(page, "<h[1-6] id=\"([^\"]*)\"")) {
        ++sections;
        EXPECT_NE(index.find("\n[\"" + name + "#" + id + "\",\""), std::string::npos)
            << edition.folder << name << "#" << id;
      }
    }
    EXPECT_EQ(static_cast<size_t>(std::count(index.begin(), index.end(), '\n')), sections + 2);
  }
}

// A link from another page leads to the same section in every edition.
TEST(Guide, SectionsHaveTheSameIdsInEveryEdition) {
  for (const std::string& name : pageNames()) {
    const std::string english = textOf(guideFile(name + ".html"));
    for (const Edition& edition : editions()) {
      const std::string page = textOf(guideFile(edition.folder + name + ".html"));
      EXPECT_EQ(allFound(page, "<h[1-6] id=\"([^\"]*)\""),
                allFound(english, "<h[1-6] id=\"([^\"]*)\""))
          << edition.folder << name;
    }
  }
}

// One text from a paragraph, a table, a list, a code block and the end of a page.
TEST(Guide, SearchHoldsTheTextOfEveryKindOfBlock) {
  const std::string index = textOf(guideFile("search-index.js"));
  const struct {
    const char* kind;
    const char* page;
    const char* text;
  } kCases[] = {
      {"paragraph", "darkness.html", "Darkness is the heat of the print head."},
      {"table", "halftones.html", "pictures with a coarse grain, for poor paper"},
      {"list", "media.html", "Insert one sheet, straight and in the middle"},
      {"code", "queue-state.html", "cupsctl 'PageLogFormat=\\\"%p %u %j %T %P %C\\\"'"},
      {"last paragraph", "darkness.html", "For other causes see Barcodes that scan."},
  };
  for (const auto& c : kCases) {
    const size_t at = index.find(c.text);
    ASSERT_NE(at, std::string::npos) << c.kind;
    const size_t line = index.rfind('\n', at) + 1;
    EXPECT_TRUE(index.substr(line).starts_with(std::string("[\"") + c.page)) << c.kind;
  }
}

// ---- Pictures ----

TEST(Guide, EveryPictureIsShownAndHasDots) {
  std::set<std::string> shown;
  for (const fs::path& page : pages()) {
    for (const std::string& name : found(textOf(page), "<img src=\"([^\"]*)\"")) {
      shown.insert(inGuide(page, name));
    }
    EXPECT_EQ(textOf(page).find("alt=\"\""), std::string::npos) << page;
  }
  EXPECT_GE(shown.size(), 16u);
  std::set<std::string> made;
  for (const char* folder : {"pictures", "screens", "drawings"}) {
    for (const fs::path& file : filesBelow(guideFile(folder), {".png", ".svg"})) {
      made.insert(file.lexically_relative(KORVEL_GUIDE_DIR));
    }
  }
  for (const fs::path& file : filesBelow(guideFile("pictures"), {".png"})) {
    EXPECT_GT(readPicture(file).printed(), 1000u) << file;
  }
  EXPECT_EQ(shown, made);
}

// A scaled picture of dots shows patterns that do not exist: it is shown as it is, or cropped.
TEST(Guide, NoPictureOfDotsIsScaled) {
  const std::regex picture(
      "<figure class=\"dots( cropped)?\"><a href=\"([^\"]*)\"[^>]*><img src=\"([^\"]*)\" "
      "alt=\"[^\"]*\" width=\"([0-9]+)\" height=\"([0-9]+)\">");
  size_t inFigures = 0, all = 0;
  for (const fs::path& page : pages()) {
    const std::string text = textOf(page);
    for (std::sregex_iterator at(text.begin(), text.end(), picture), end; at != end; ++at) {
      ++inFigures;
      const Picture whole = readPicture(guideFile(inGuide(page, (*at)[3])));
      const size_t width = std::stoul((*at)[4]), height = std::stoul((*at)[5]);
      EXPECT_EQ((*at)[2], (*at)[3]) << page << ": a click must show the whole picture";
      EXPECT_TRUE((*at)[1].matched ? width <= whole.width && height <= whole.height
                                   : width == whole.width && height == whole.height)
          << page << " " << (*at)[3];
    }
    all += allFound(text, "<img src=\"((?:\\.\\./)?pictures/[^\"]*)\"").size();
  }
  EXPECT_EQ(inFigures, all) << "a picture outside a figure";
  EXPECT_GE(all, 12u);
}

// ---- Facts ----

TEST(Guide, EveryOptionHasThatChoiceInADriver) {
  std::string drivers;
  for (const fs::path& file : filesBelow(KORVEL_PPD_DIR, {".ppd"})) drivers += textOf(file);
  for (const fs::path& page : pages()) {
    for (const std::string& option : found(textOf(page), "-o ([A-Z][A-Za-z]+=[A-Za-z0-9_.-]+)")) {
      const size_t at = option.find('=');
      std::string line = "\n*" + option.substr(0, at) + " " + option.substr(at + 1) + "/";
      if (option.starts_with("PageSize=Custom.")) line = "\n*CustomPageSize True:";
      EXPECT_NE(drivers.find(line), std::string::npos) << page << " " << option;
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

TEST(Guide, EveryExplainedMessageIsInTheSources) {
  const std::string sources = sourcesOf({"filter", "tools"});
  EXPECT_GE(explainedMessages().size(), 20u);
  for (const std::string& message : explainedMessages()) {
    EXPECT_NE(sources.find(message), std::string::npos) << message;
  }
}

TEST(Guide, ExplainsTheSameMessagesInEveryEdition) {
  for (const Edition& edition : editions()) {
    EXPECT_EQ(explainedMessages(edition.folder), explainedMessages()) << edition.language;
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
