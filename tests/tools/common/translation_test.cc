// The tools in every language: every text has a translation, and the programs use it. Texts that
// other programs read are not translated.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "tests/spooler/guarded_process.h"
#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

constexpr double kSeconds = 20;
const char* const kLanguages[] = {"de", "es", "fr", "it", "ja", "nl", "pl", "pt", "pt_BR", "zh_CN"};
const char* const kTools[] = {
    "korvel-decode", "korvel-preview", "korvel-printer", "korvel-setup",
#ifdef KORVEL_HAS_STUDIO
    "korvel-studio",
#endif
};

std::string source(const std::string& path) { return std::string(KORVEL_SOURCE_DIR "/") + path; }

std::string contentOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// Those that define the marks of texts, or show them in a comment.
bool isNoSource(const fs::path& path) {
  return path.stem() == "translation" || path.filename() == "help.h" ||
         path.filename() == "result.h";
}

// The lines of a file, without its comments.
std::set<std::string> linesOf(const std::string& path) {
  std::istringstream in(contentOf(path));
  std::set<std::string> lines;
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line[0] != '#') lines.insert(line);
  }
  return lines;
}

// An uninstalled tool in a language, in a real locale: C.UTF-8 shows no translations everywhere.
CommandResult runIn(const std::string& language, std::vector<std::string> words) {
  words[0] = std::string(KORVEL_TOOLS_DIR "/") + words[0];
  return run(words, kSeconds,
             {{"LC_ALL", "en_US.UTF-8"},
              {"LOCPATH", KORVEL_TEST_LOCALES},
              {"LANGUAGE", language},
              {"TEXTDOMAINDIR", KORVEL_CATALOGUE_DIR}});
}

// As most users have it: a locale, and no LANGUAGE.
TEST(Languages, FollowTheLocaleAlone) {
  const CommandResult help = run({KORVEL_TOOLS_DIR "/korvel-decode", "--help"}, kSeconds,
                                 {{"LC_ALL", "de_DE.UTF-8"},
                                  {"LOCPATH", KORVEL_TEST_LOCALES},
                                  {"LANGUAGE", ""},
                                  {"TEXTDOMAINDIR", KORVEL_CATALOGUE_DIR}});
  EXPECT_EQ(help.status, 0);
  EXPECT_TRUE(help.output.starts_with("Aufruf: korvel-decode")) << help.output;
}

TEST(Languages, AreTheTenBesidesEnglish) {
  EXPECT_EQ(linesOf(source("po/LINGUAS")),
            std::set<std::string>(std::begin(kLanguages), std::end(kLanguages)));
}

TEST(Texts, AreGatheredFromEverySourceThatHasAny) {
  const std::regex kText(R"(\b(translated|filled|later)\()");
  std::set<std::string> sources;
  for (const char* folder : {"studio", "tools"}) {
    for (const auto& entry : fs::recursive_directory_iterator(source(folder))) {
      const fs::path& path = entry.path();
      if (!entry.is_regular_file() || isNoSource(path)) continue;
      if (!std::regex_search(contentOf(path.string()), kText)) continue;
      sources.insert(path.lexically_relative(KORVEL_SOURCE_DIR).string());
    }
  }
  EXPECT_EQ(linesOf(source("po/POTFILES")), sources);
}

// The tools of the catalogues do the comparing: every text there, translated, its places alike.
TEST(Texts, AreTranslatedIntoEveryLanguage) {
  const TemporaryFolder folder;
  const std::string texts = folder.file("texts.pot");
  const CommandResult gathered = run({source("po/gather"), texts}, kSeconds, {{"LC_ALL", "C"}});
  ASSERT_EQ(gathered.status, 0) << gathered.output;
  for (const std::string language : kLanguages) {
    const std::string catalogue = source("po/" + language + ".po");
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {KORVEL_MSGCMP, catalogue, texts},
             {KORVEL_MSGFMT, "--check-format", "--output-file", "/dev/null", catalogue}}) {
      const CommandResult result = run(words, kSeconds, {{"LC_ALL", "C"}});
      EXPECT_EQ(result.status, 0) << language;
      EXPECT_EQ(result.output, "") << language;
    }
  }
}

TEST(Tools, UseTheUsersLanguage) {
  struct Case {
    const char* language;
    std::vector<std::string> words;
    int status;
    const char* says;
  };
  const Case kCases[] = {
      {"en",
       {"korvel-decode", "--wrong"},
       2,
       "korvel-decode: unknown option '--wrong'; see korvel-decode --help\n"},
      {"sv",
       {"korvel-decode", "--wrong"},
       2,
       "korvel-decode: unknown option '--wrong'; see korvel-decode --help\n"},
      {"de",
       {"korvel-decode", "--wrong"},
       2,
       "korvel-decode: unbekannte Option „--wrong“; siehe korvel-decode --help\n"},
      {"es",
       {"korvel-printer", "--port", "x"},
       2,
       "korvel-printer: --port requiere un número del 0 al 65535, no «x»; consulte "
       "korvel-printer --help\n"},
      {"fr",
       {"korvel-printer", "--pages"},
       2,
       "korvel-printer\u00a0: --pages va avec --out\u00a0; voir korvel-printer --help\n"},
      {"it",
       {"korvel-setup", "--check", "--list"},
       2,
       "korvel-setup: --check, --list, --emulated, --share, --unshare e --feed si escludono a "
       "vicenda; "
       "vedere korvel-setup "
       "--help\n"},
      {"ja",
       {"korvel-preview"},
       2,
       "korvel-preview: ファイルが指定されていません。korvel-preview --help を参照してください\n"},
      {"nl", {"korvel-preview", "/"}, 1, "korvel-preview: / is een map.\n"},
      {"pl",
       {"korvel-preview", "-P", "a", "-p", "b", "c"},
       2,
       "korvel-preview: -P i -p wykluczają się wzajemnie; zobacz korvel-preview --help\n"},
      {"pt",
       {"korvel-decode", "a", "b"},
       2,
       "korvel-decode: mais de um ficheiro; veja korvel-decode --help\n"},
      {"pt_BR",
       {"korvel-decode", "a", "b"},
       2,
       "korvel-decode: mais de um arquivo; veja korvel-decode --help\n"},
      {"zh_CN",
       {"korvel-setup", "--emulated", "-v", "x"},
       2,
       "korvel-setup：--emulated 和 -v 不能同时使用；请参阅 korvel-setup --help\n"},
  };
  for (const Case& c : kCases) {
    const CommandResult result = runIn(c.language, c.words);
    EXPECT_EQ(result.status, c.status) << c.language;
    EXPECT_EQ(result.output, c.says) << c.language;
  }
}

// "-n", "--dpi", "--media": as a set.
std::set<std::string> optionsIn(const std::string& usage) {
  static const std::regex kOption(R"((^|[ \[])(--?[a-zA-Z][a-z-]*))");
  std::set<std::string> options;
  for (std::sregex_iterator at(usage.begin(), usage.end(), kOption), end; at != end; ++at) {
    options.insert((*at)[2]);
  }
  return options;
}

TEST(Tools, NameAllTheirOptionsInEveryLanguage) {
  for (const std::string tool : kTools) {
    const std::string english = runIn("en", {tool, "--help"}).output;
    ASSERT_TRUE(english.starts_with("Usage: " + tool + " ")) << english;
    for (const char* language : kLanguages) {
      const CommandResult help = runIn(language, {tool, "--help"});
      EXPECT_EQ(help.status, 0) << tool << " " << language;
      EXPECT_NE(help.output, english) << tool << " " << language;
      EXPECT_EQ(optionsIn(help.output), optionsIn(english)) << tool << " " << language;
    }
  }
}

// Columns according to the C library: a test of the layout must not use the layout's own widths.
int columnsOf(const std::string& line) {
  std::vector<wchar_t> wide(line.size() + 1);
  const size_t count = std::mbstowcs(wide.data(), line.c_str(), wide.size());
  return count == static_cast<size_t>(-1) ? -1 : wcswidth(wide.data(), count);
}

TEST(Tools, FitTheirHelpInto80ColumnsInEveryLanguage) {
  ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
  std::vector<std::string> languages(std::begin(kLanguages), std::end(kLanguages));
  languages.emplace_back("en");
  for (const std::string tool : kTools) {
    for (const std::string& language : languages) {
      std::istringstream lines(runIn(language, {tool, "--help"}).output);
      size_t count = 0;
      for (std::string line; std::getline(lines, line); ++count) {
        const int columns = columnsOf(line);
        EXPECT_TRUE(columns >= 0 && columns <= 80) << tool << " " << language << ": " << line;
      }
      EXPECT_GT(count, 8u) << tool << " " << language;
    }
  }
}

TEST(Tools, KeepInEnglishWhatProgramsRead) {
  const TemporaryFolder folder;
  const std::string stream = folder.write(
      "stream", std::string(64, '\0') + "\x64\x10\x40" + std::string(6, '\0') + "\x9B");
  const CommandResult english = runIn("en", {"korvel-decode", stream});
  EXPECT_NE(english.output.find("status"), std::string::npos) << english.output;
  EXPECT_EQ(runIn("de", {"korvel-decode", stream}).output, english.output);
  EXPECT_EQ(runIn("de", {"korvel-decode", "--version"}).output, "korvel-decode 1.0.0\n");
}

}  // namespace
