// Texts can follow in other languages: every one is found by the extractor, and a catalogue of
// translations reaches the compiled description.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "tests/ppd/descriptions.h"
#include "tests/support/temporary_folder.h"

namespace {

const char kSource[] = KORVEL_PPD_SOURCE_DIR "/korvel.drv";

std::set<std::string> extractedTexts() {
  const TemporaryFolder folder;
  const std::string file = folder.file("texts.po");
  const CommandResult run = runCommand(KORVEL_PPDPO " -I " + quoted(KORVEL_PPD_SOURCE_DIR) +
                                       " -o " + quoted(file) + " " + quoted(kSource) + " 2>&1");
  EXPECT_EQ(run.status, 0) << run.output;
  std::set<std::string> texts;
  std::istringstream in(folder.read("texts.po"));
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with("msgid \"")) texts.insert(line.substr(7, line.size() - 8));
  }
  return texts;
}

TEST(Catalogue, HoldsEveryTextThatPeopleRead) {
  const std::set<std::string> texts = extractedTexts();
  EXPECT_EQ(texts.count(""), 0U) << "the empty text is the catalogue's own heading";
  for (const char* reason : {"Out of media", "Cover open"}) EXPECT_EQ(texts.count(reason), 1U);
  for (const Description& each : descriptions()) {
    SCOPED_TRACE(each.name);
    const OpenPpd ppd = openPpd(each);
    ASSERT_NE(ppd, nullptr);
    for (int g = 0; g < ppd->num_groups; ++g) {
      const std::string name = ppd->groups[g].name;
      if (name == "General") continue;  // the spooler's own
      EXPECT_EQ(texts.count(ppd->groups[g].text), 1U) << name;
    }
    forEachOption(*ppd, [&](const ppd_option_t& option) {
      const std::string keyword = option.keyword;
      const bool size = keyword == "PageSize" || keyword == "PageRegion";
      if (!size) {
        EXPECT_EQ(texts.count(option.text), 1U) << keyword;
      }
      for (int i = 0; i < option.num_choices; ++i) {
        if (std::string(option.choices[i].choice) == "Custom") continue;  // the spooler's own
        EXPECT_EQ(texts.count(option.choices[i].text), 1U)
            << keyword << "=" << option.choices[i].choice;
      }
    });
  }
}

TEST(Catalogue, PutsTranslationsIntoTheDescription) {
  const TemporaryFolder folder;
  folder.write("de.po",
               "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n\n"
               "msgid \"After printing\"\nmsgstr \"Nach dem Druck\"\n\n"
               "msgid \"Tear off\"\nmsgstr \"Zur Abrisskante\"\n\n"
               "msgid \"Out of media\"\nmsgstr \"Kein Papier\"\n");
  const std::string source =
      folder.write("all.drv", std::string("#po de \"") + folder.file("de.po") + "\"\n#include \"" +
                                  kSource + "\"\n");
  const CommandResult run =
      runCommand(KORVEL_PPDC " -l en,de -I " + quoted(KORVEL_PPD_SOURCE_DIR) + " -d " +
                 quoted(folder.path()) + " " + quoted(source) + " 2>&1");
  ASSERT_EQ(run.status, 0) << run.output;
  const std::string text = folder.read("korvel-r57-203.ppd");
  for (const char* line : {"*de.Translation PostAction/Nach dem Druck: \"\"\n",
                           "*de.PostAction TearOff/Zur Abrisskante: \"\"\n",
                           "*de.cupsIPPReason media-empty-warning/Kein Papier: "}) {
    EXPECT_NE(text.find(line), std::string::npos) << line;
  }
}

}  // namespace
