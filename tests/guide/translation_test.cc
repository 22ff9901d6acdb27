// A small guide of three pages, made as the real one: what is completely translated is shown in
// German, and every other page in English with a notice. SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/guide/guide_pages.h"
#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

const char kNotice[] =
    "<p class=\"notice\">Von dieser Seite gibt es noch keine aktuelle Übersetzung; sie wird auf "
    "Englisch angezeigt.</p>";

// Made once for all tests.
class SmallGuide : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new TemporaryFolder;
    copySources();
    folder_->write("source/po/LINGUAS", "de\n");
    folder_->write(
        "source/pages.txt",
        "index Start\nlist Start\nmissing Print\nempty Print\nfuzzy Print\nolder Print\n");
    folder_->write("source/index.md",
                   "# Start\n\nGo on: [List](list.md#two-items), ![Gap](drawings/gap.svg).\n");
    folder_->write("source/list.md", "# List\n\n## Two items\n\n- One.\n- Two.\n");
    for (const char* name : {"missing", "empty", "fuzzy", "older"}) {
      const std::string title = name;
      folder_->write("source/" + title + ".md",
                     "# " + title + "\n\nThe first text.\n\nThe last " + title + " text.\n");
    }
    folder_->write("source/po/de.po", catalogue());
    make("made");
  }

  static void TearDownTestSuite() {
    delete folder_;
    folder_ = nullptr;
  }

  static void copySources() {
    for (const char* name : {"source/po", "source/drawings", "source/screens", "made/pictures",
                             "made-again/pictures"}) {
      fs::create_directories(folder_->file(name));
    }
    const fs::path guide = fs::path(KORVEL_SOURCE_DIR) / "docs/guide";
    const fs::path picture = "screens/gtk-advanced.png";
    for (const char* name :
         {"style.css", "guide.js", "favicon.svg", "frame.txt", "page.awk", "translate.sh",
          "make_pages.sh", "drawings/gap.svg", "screens/gtk-advanced.png"}) {
      fs::copy_file(guide / name, folder_->file("source/" + std::string(name)));
    }
    fs::copy_file(guide / picture, folder_->file("made/pictures/dots.png"));
    fs::copy_file(guide / picture, folder_->file("made-again/pictures/dots.png"));
  }

  static std::string entry(const std::string& text, const std::string& translation) {
    return "msgid \"" + text + "\"\nmsgstr \"" + translation + "\"\n\n";
  }

  static std::string catalogue() {
    return "msgid \"\"\nmsgstr \"\"\n\"Language: de\\n\"\n\"Content-Type: text/plain; "
           "charset=UTF-8\\n\"\n\"Content-Transfer-Encoding: 8bit\\n\"\n\n" +
           entry("Start", "Anfang") +
           entry("Go on: [List](list.md#two-items), ![Gap](drawings/gap.svg).\\n",
                 "Weiter: [die\\n\"\n\"Liste](list.md#two-items), ![Lücke](drawings/gap.svg).\\n") +
           entry("List", "Liste") + entry("Two items", "Zwei Einträge") +
           entry("One.\\n", "Eins.\\n") + entry("Two.\\n", "Zwei.\\n") + entry("missing", "fehlt") +
           entry("empty", "leer") + entry("fuzzy", "unscharf") + entry("older", "älter") +
           entry("The first text.\\n", "Der erste Text.\\n") +
           entry("The last empty text.\\n", "") + "#, fuzzy\n" +
           entry("The last fuzzy text.\\n", "Der letzte Text.\\n") +
           entry("The final older text.\\n", "Der letzte Text.\\n");
  }

  static void make(const std::string& target) {
    const std::string command = "'" + folder_->file("source/make_pages.sh") +
                                "' '" KORVEL_CMARK_GFM "' '" KORVEL_WEASYPRINT "' '" +
                                folder_->file("source") + "' '" + folder_->file(target) +
                                "' 1.0 > '" + folder_->file("log") + "' 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << folder_->read("log");
  }

  static std::string made(const std::string& name) { return folder_->read("made/" + name); }
  static bool has(const std::string& page, const std::string& text) {
    return made(page).find(text) != std::string::npos;
  }

  static TemporaryFolder* folder_;
};

TemporaryFolder* SmallGuide::folder_ = nullptr;

TEST_F(SmallGuide, ShowsWhatIsTranslated) {
  for (const char* name : {"de/index.html", "de/list.html"}) {
    EXPECT_TRUE(has(name, "<html lang=\"de\">")) << name;
    EXPECT_TRUE(has(name, "<article>")) << name;
    EXPECT_FALSE(has(name, "class=\"notice\"")) << name;
  }
  EXPECT_TRUE(has("de/index.html", "<h1 id=\"start\">Anfang</h1>"));
  EXPECT_TRUE(has("de/index.html", "Weiter: <a href=\"list.html#two-items\">die\nListe</a>"));
  EXPECT_TRUE(has("de/index.html",
                  "<link rel=\"alternate\" hreflang=\"en\" href=\"../index.html\">\n"
                  "<link rel=\"alternate\" hreflang=\"de\" href=\"../de/index.html\">"));
  EXPECT_TRUE(has("de/list.html", "<h2 id=\"two-items\">Zwei Einträge "));
  EXPECT_TRUE(has("de/list.html", "<ul>\n<li>Eins.</li>\n<li>Zwei.</li>\n</ul>"));
  EXPECT_TRUE(has("de/search-index.js",
                  "[\"list.html#two-items\",\"Liste\",\"Zwei Einträge\",\"Eins. Zwei.\"]"));
}

TEST_F(SmallGuide, ShowsAPageInEnglishWhenAParagraphIsNotCurrent) {
  for (const std::string name : {"missing", "empty", "fuzzy", "older"}) {
    const std::string page = "de/" + name + ".html";
    EXPECT_TRUE(has(page, "<html lang=\"de\">")) << name;
    EXPECT_TRUE(has(page, kNotice)) << name;
    EXPECT_TRUE(has(page, "<article lang=\"en\">")) << name;
    EXPECT_TRUE(has(page, "<p>The first text.</p>\n<p>The last " + name + " text.</p>")) << name;
    EXPECT_FALSE(has(page, "Der erste Text.")) << name;
    EXPECT_FALSE(has(name + ".html", "<link rel=\"alternate\" hreflang=\"de\"")) << name;
    EXPECT_FALSE(has(name + ".html", "class=\"notice\"")) << name;
    const std::string link = "<a href=\"" + name + ".html\" lang=\"en\">" + name + "</a>";
    EXPECT_TRUE(has("de/list.html", link)) << name;
  }
}

TEST_F(SmallGuide, IsTheSameWhenItIsMadeAgain) {
  make("made-again");
  size_t files = 0;
  for (const auto& entry : fs::recursive_directory_iterator(folder_->file("made"))) {
    if (!entry.is_regular_file()) continue;
    ++files;
    const fs::path name = entry.path().lexically_relative(folder_->file("made"));
    EXPECT_TRUE(textOf(entry.path()) == folder_->read("made-again/" + name.string())) << name;
  }
  EXPECT_EQ(files, 20u);
}

}  // namespace
