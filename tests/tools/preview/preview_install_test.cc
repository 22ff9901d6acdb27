// The tools below another prefix than the configured one, inside a tree of its own: they find
// their texts, the filter and the descriptions of that tree.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/tools/preview/preview_runner.h"

namespace {

namespace fs = std::filesystem;

constexpr double kSeconds = 60;
const char kSentence[] = "korvel-preview: / ist ein Verzeichnis.\n";

class Installed : public testing::Test {
 protected:
  void SetUp() override {
    const CommandResult result =
        run({KORVEL_CMAKE, "--install", KORVEL_BUILD_DIR, "--prefix", "/opt/korvel"}, kSeconds,
            {{"DESTDIR", tree()}});
    ASSERT_EQ(result.status, 0) << result.output;
  }

  std::string tree() const { return runner_.files().file("tree"); }
  std::string tool(const std::string& name) const { return tree() + "/opt/korvel/bin/" + name; }
  // Without the variables that lead tools elsewhere.
  CommandResult runInstalled(Words words, const std::string& language = "de") {
    words[0] = tool(words[0]);
    words.insert(words.begin(),
                 {"env", "-u", "CUPS_SERVERBIN", "-u", "CUPS_DATADIR", "-u", "TEXTDOMAINDIR",
                  "LC_ALL=en_US.UTF-8", "LOCPATH=" KORVEL_TEST_LOCALES, "LANGUAGE=" + language});
    return runner_.started(words);
  }

  PreviewRunner runner_;
};

TEST_F(Installed, EveryToolSpeaksTheUsersLanguage) {
  for (const char* name : {"korvel-decode", "korvel-preview", "korvel-printer", "korvel-setup"}) {
    const CommandResult help = runInstalled({name, "--help"});
    EXPECT_EQ(help.status, 0) << name;
    EXPECT_TRUE(help.output.starts_with(std::string("Aufruf: ") + name)) << help.output;
  }
  const CommandResult missing = runInstalled({"korvel-preview", "/"});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.output, kSentence);
}

TEST_F(Installed, ThePreviewTakesFilterAndDescriptionsOfItsTree) {
  const std::string document =
      runner_.files().write("page.ras", rasterOf("64x40 203dpi picture=noise:7"));
  const std::string shown = runner_.files().file("shown");
  const CommandResult result =
      runInstalled({"korvel-preview", "-m", "r57-203", "--out", shown, document});
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(result.output, shown + "/sheet-1.png\n");
  const std::string plain = runner_.files().file("plain");
  EXPECT_EQ(runner_.preview({"-p", ppdOf("korvel-r57-203"), "--out", plain, document}).status, 0);
  EXPECT_NE(fileBytes(shown + "/sheet-1.png"), "(none)");
  EXPECT_TRUE(fileBytes(shown + "/sheet-1.png") == fileBytes(plain + "/sheet-1.png"));

  const std::string filter = tree() + KORVEL_CUPS_SERVERBIN "/filter/rastertokorvel";
  fs::rename(filter, filter + ".away");
  const CommandResult without =
      runInstalled({"korvel-preview", "-p", "korvel-r57-203", "--out", shown, document});
  EXPECT_EQ(without.status, 1);
  EXPECT_NE(without.output.find(filter), std::string::npos) << without.output;
  const CommandResult unknown = runInstalled({"korvel-preview", "-p", "korvel-x", document});
  EXPECT_EQ(unknown.status, 1);
  EXPECT_NE(unknown.output.find(tree() + KORVEL_PPD_FOLDER "/"), std::string::npos)
      << unknown.output;
}

TEST_F(Installed, TheStreamIsToldInTheUsersLanguage) {
  const std::string document =
      runner_.files().write("bars.ras", rasterOf("16x5 203dpi picture=checker:4"));
  const std::string shown = runner_.files().file("shown");
  const CommandResult result =
      runInstalled({"korvel-preview", "--stream", "--out", shown, document});
  EXPECT_EQ(result.output, document +
                               " (application/vnd.cups-raster), Drucker Korvel Label 203 dpi\n"
                               "Rasterprogramm: ohne; Optionen: ohne; Exemplare: 1\n"
                               "Filter: 1 Seite mit 203 dpi, 185 Byte für den Drucker\n" +
                               shown + "/stream.bin  " + shown + "/stream.txt  " + shown +
                               "/messages.txt\n" + shown + "/sheet-1.png\n");
}

// German, Dutch and Spanish names need no other letters than English ones.
TEST_F(Installed, HalftonesAreNamedInLanguagesThatThePicturesLettersCanWrite) {
  const std::string document =
      runner_.files().write("page.ras", rasterOf("64x40 203dpi picture=noise:7"));
  const auto picture = [&](const std::string& language) {
    const std::string shown = runner_.files().file("shown-" + language);
    const CommandResult result =
        runInstalled({"korvel-preview", "--halftones", "--out", shown, document}, language);
    EXPECT_EQ(result.status, 0) << result.output;
    return fileBytes(shown + "/halftones.png");
  };
  const std::string english = picture("en");
  for (const char* language : {"de", "nl", "es"}) EXPECT_TRUE(picture(language) != english);
  for (const char* language : {"fr", "pl", "ja"}) EXPECT_TRUE(picture(language) == english);
}

// Whoever may write next to a program must not choose the filter that it runs.
TEST_F(Installed, ATreeThatEverybodyMayWriteToIsNotTrusted) {
  const std::string document =
      runner_.files().write("page.ras", rasterOf("64x40 203dpi picture=noise:7"));
  ASSERT_EQ(chmod(tree().c_str(), 01777), 0);
  const CommandResult result = runInstalled({"korvel-preview", "-p", "korvel-x", document});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output.find(tree() + KORVEL_PPD_FOLDER), std::string::npos) << result.output;
  EXPECT_NE(result.output.find(" " KORVEL_PPD_FOLDER "/"), std::string::npos) << result.output;
}

}  // namespace
