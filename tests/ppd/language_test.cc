// The descriptions in every language, as the spooler's own library shows them to a print dialog:
// no group, option, choice, size or state is left in English for want of a text.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "tests/ppd/descriptions.h"

namespace {

const char* const kLanguages[] = {"de", "es", "fr", "it", "ja", "nl", "pl", "pt", "pt_BR", "zh_CN"};

using Catalogue = std::map<std::string, std::string>;  // English, translation

// What a dialog shows, by file and thing: {"k220-203", "PostAction=Cut"}.
using Texts = std::map<std::pair<std::string, std::string>, std::string>;

std::string between(const std::string& line, const char* start, const char* end) {
  const std::string head = start;
  return line.substr(head.size(), line.size() - head.size() - std::string(end).size());
}

// A catalogue as it is written here: an entry is two lines, each with its whole text.
Catalogue readCatalogue(const std::string& language) {
  std::ifstream in(std::string(KORVEL_PPD_SOURCE_DIR "/languages/") + language + ".po");
  Catalogue catalogue;
  std::string english;
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with("msgid \"")) english = between(line, "msgid \"", "\"");
    if (!line.starts_with("msgstr \"") || english.empty()) continue;
    EXPECT_TRUE(catalogue.emplace(english, between(line, "msgstr \"", "\"")).second)
        << language << " has two entries for " << english;
  }
  return catalogue;
}

Texts shownIn(const std::string& language) {
  std::string command = "LC_ALL=" + quoted(language + ".UTF-8") + " " KORVEL_LOCALIZED_TEXTS;
  std::map<std::string, std::string> names;
  for (const Description& each : descriptions()) {
    command += " " + quoted(ppdPath(each));
    names[ppdPath(each)] = each.name;
  }
  const CommandResult run = runCommand(command);
  EXPECT_EQ(run.status, 0) << language;
  std::istringstream in(run.output);
  Texts texts;
  for (std::string file, what, text;
       std::getline(in, file, '\t') && std::getline(in, what, '\t') && std::getline(in, text);) {
    texts[{names[file], what}] = text;
  }
  return texts;
}

// Numbers and measures read the same everywhere: "-50", "2.25 x 1.25 in".
bool isMeasure(std::string text) {
  for (const char* unit : {" in", " mm"}) {
    if (text.ends_with(unit)) text.resize(text.size() - 3);
  }
  return text.find_first_not_of("0123456789.- x") == std::string::npos;
}

// The sentence of a state stands in a description as an address does.
std::string asWritten(const std::string& what, const std::string& text) {
  if (!what.ends_with("-warning")) return text;
  std::string address = "text:" + text;
  for (char& c : address) c = c == ' ' ? '+' : c;
  return address;
}

// What a language lacks, a line each.
std::string lacking(const Texts& english, const Texts& texts, const Catalogue& catalogue) {
  std::string lacks;
  for (const auto& [thing, text] : english) {
    const auto& [file, what] = thing;
    if (isMeasure(text)) continue;
    const auto entry = catalogue.find(asWritten(what, text));
    const auto shown = texts.find(thing);
    const std::string have = shown == texts.end() ? "(none)" : asWritten(what, shown->second);
    if (entry == catalogue.end() || entry->second.empty()) {
      lacks += file + ": no text for " + what + " (" + text + ")\n";
    } else if (have != entry->second) {
      lacks += file + ": " + what + ": have " + have + ", want " + entry->second + "\n";
    }
  }
  return lacks;
}

TEST(EveryLanguage, HasATextForAllThatADialogShows) {
  const Texts english = shownIn("en");
  ASSERT_GT(english.size(), 1000U);
  for (const char* language : kLanguages) {
    const Texts texts = shownIn(language);
    EXPECT_EQ(texts.size(), english.size()) << language;
    EXPECT_EQ(lacking(english, texts, readCatalogue(language)), "") << language;
  }
}

TEST(EveryLanguage, TellsTheChoicesOfAnOptionApart) {
  for (const char* language : kLanguages) {
    std::set<std::string> seen;
    for (const auto& [thing, text] : shownIn(language)) {
      const auto& [file, what] = thing;
      const size_t equals = what.find('=');
      if (equals == std::string::npos) continue;
      EXPECT_TRUE(seen.insert(file + " " + what.substr(0, equals) + " " + text).second)
          << language << ", " << file << ": " << what << " reads " << text
          << ", as another choice does";
    }
  }
}

size_t characters(const std::string& text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

// A label of more than 30 characters does not fit a print dialog, and CUPS refuses a PPD with one
// of more than 80 bytes.
TEST(EveryLanguage, KeepsItsLabelsShort) {
  for (const char* language : kLanguages) {
    for (const auto& [english, text] : readCatalogue(language)) {
      if (english.starts_with("text:")) continue;
      EXPECT_LE(characters(english), 30U) << english;
      EXPECT_LE(characters(text), 30U) << language << ": " << text;
      EXPECT_LE(text.size(), 80U) << language << ": " << text;
    }
  }
}

TEST(EveryLanguage, HasNoTextThatNothingShows) {
  std::set<std::string> used;
  for (const auto& [thing, text] : shownIn("en")) used.insert(asWritten(thing.second, text));
  for (const char* language : kLanguages) {
    for (const auto& [english, text] : readCatalogue(language)) {
      EXPECT_EQ(used.count(english), 1U) << language << ": " << english;
    }
  }
}

TEST(LackingTexts, AreNamed) {
  struct Case {
    const char* sentence;
    Texts english;
    Texts texts;
    Catalogue catalogue;
    const char* want;
  };
  const Case kCases[] = {
      {"all is there",
       {{{"z4", "Mirror"}, "Mirror"}},
       {{{"z4", "Mirror"}, "Spiegeln"}},
       {{"Mirror", "Spiegeln"}},
       ""},
      {"a choice without an entry",
       {{{"z4", "X=Cut"}, "Cut"}},
       {{{"z4", "X=Cut"}, "Cut"}},
       {},
       "z4: no text for X=Cut (Cut)\n"},
      {"an empty entry",
       {{{"z4", "X=Cut"}, "Cut"}},
       {{{"z4", "X=Cut"}, "Cut"}},
       {{"Cut", ""}},
       "z4: no text for X=Cut (Cut)\n"},
      {"an entry that is not shown",
       {{{"z4", "X"}, "Cut"}},
       {{{"z4", "X"}, "Cut"}},
       {{"Cut", "Schnitt"}},
       "z4: X: have Cut, want Schnitt\n"},
      {"a state",
       {{{"z4", "a-warning"}, "No paper."}},
       {{{"z4", "a-warning"}, "No paper."}},
       {},
       "z4: no text for a-warning (No paper.)\n"},
      {"measures need none",
       {{{"z4", "X=1"}, "2.25 x 4 in"}},
       {{{"z4", "X=1"}, "2.25 x 4 in"}},
       {},
       ""},
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(lacking(c.english, c.texts, c.catalogue), c.want) << c.sentence;
  }
}

TEST(DescriptionLanguages, AreEleven) {
  for (const Description& each : descriptions()) {
    const OpenPpd ppd = openPpd(each);
    ASSERT_NE(ppd, nullptr) << each.name;
    EXPECT_EQ(attribute(ppd.get(), "cupsLanguages"), "en de es fr it ja nl pl pt pt_BR zh_CN")
        << each.name;
  }
}

TEST(DescriptionLanguages, SayWhatPeopleWouldSay) {
  struct Case {
    const char* language;
    const char* what;
    const char* text;
  };
  const Case kCases[] = {
      {"en", "cover-open-warning", "The cover of the printer is open."},
      {"de", "PageSize", "Papierformat"},
      {"de", "PageSize=Custom", "Benutzerdefiniert"},
      {"de", "PostAction=TearOff", "Abreißen"},
      {"de", "media-empty-warning", "Im Drucker ist kein Papier."},
      {"de", "media-empty-warning in short", "Kein Papier"},
      {"de", "cover-open-warning", "Die Abdeckung des Druckers ist offen."},
      {"es", "MirrorImage", "Imagen en espejo"},
      {"es", "media-empty-warning", "La impresora no tiene papel."},
      {"es", "cover-open-warning", "La tapa de la impresora está abierta."},
      {"fr", "group Quality", "Qualité d’impression"},
      {"fr", "media-empty-warning", "L’imprimante n’a plus de papier."},
      {"fr", "cover-open-warning", "Le capot de l’imprimante est ouvert."},
      {"it", "PaperType=LabelMark", "Tacche nere"},
      {"it", "media-empty-warning", "La stampante ha esaurito la carta."},
      {"it", "cover-open-warning", "Il coperchio della stampante è aperto."},
      {"ja", "MirrorImage", "左右反転"},
      {"ja", "media-empty-warning", "プリンターの用紙がありません。"},
      {"ja", "cover-open-warning", "プリンターのカバーが開いています。"},
      {"nl", "PostAction", "Na het afdrukken"},
      {"nl", "media-empty-warning", "Het papier in de printer is op."},
      {"nl", "cover-open-warning", "De klep van de printer staat open."},
      {"pl", "Occurrence=EveryPage", "Po każdej stronie"},
      {"pl", "media-empty-warning", "W drukarce nie ma papieru."},
      {"pl", "cover-open-warning", "Pokrywa drukarki jest otwarta."},
      {"pt", "HalftoneType=None", "Limiar"},
      {"pt", "media-empty-warning", "A impressora está sem papel."},
      {"pt", "cover-open-warning", "A tampa da impressora está aberta."},
      {"pt", "group Media", "Manuseamento do papel"},
      {"pt_BR", "group Media", "Manuseio do papel"},
      {"pt_BR", "media-empty-warning", "A impressora está sem papel."},
      {"pt_BR", "cover-open-warning", "A tampa da impressora está aberta."},
      {"zh_CN", "group General", "常规"},
      {"zh_CN", "media-empty-warning", "打印机缺纸。"},
      {"zh_CN", "cover-open-warning", "打印机的机盖已打开。"},
      {"sv", "PageSize", "Media Size"},
  };
  std::map<std::string, Texts> shown;
  for (const Case& c : kCases) {
    if (!shown.contains(c.language)) shown[c.language] = shownIn(c.language);
    EXPECT_EQ((shown[c.language][{"k220-203", c.what}]), c.text) << c.language << " " << c.what;
  }
}

}  // namespace
