// Every failure is one sentence; wrong usage has another exit status than a file that cannot be
// shown.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/raster_maker.h"
#include "tests/tools/preview/preview_runner.h"

namespace {

struct UsageCase {
  Words arguments;
  const char* sentence;
};

TEST(PreviewFaults, WrongUsageIsStatusTwo) {
  const std::string label = exampleFile("label.pdf");
  const std::string ppd = ppdOf("korvel-label-203");
  PreviewRunner runner;
  const std::string raster = runner.files().write("page.ras", rasterOf("8x8 203dpi picture=black"));
  const UsageCase kCases[] = {
      {{}, "no file given"},
      {{label, "-P"}, "-P needs a value"},
      {{label, "--out", ""}, "--out needs a value"},
      {{label, "-x"}, "unknown option '-x'"},
      {{label, label}, "more than one file: "},
      {{label, "--pages=1"}, "--pages takes no value"},
      {{label, "--out="}, "--out needs a value"},
      {{label, "-n", "0"}, "-n needs a number from 1 to 9999, not '0'"},
      {{label, "-n", "99999"}, "-n needs a number from 1 to 9999, not '99999'"},
      {{label, "-n", "2x"}, "-n needs a number from 1 to 9999, not '2x'"},
      {{label, "-Pa", "-p", "b"}, "-P and -p cannot be combined"},
      {{label, "--halftones", "--pages"},
       "--halftones cannot be combined with --pages and --stream"},
      {{label, "--halftones", "-o", "HalftoneType=None"},
       "--halftones shows all of them; remove -o HalftoneType"},
      {{"-p", ppd, raster, "-n", "2"},
       "-n is not for raster files, which contain all their copies"},
  };
  for (const UsageCase& c : kCases) {
    const CommandResult result = runner.preview(c.arguments);
    EXPECT_EQ(result.status, 2) << c.sentence;
    EXPECT_TRUE(result.output.starts_with(std::string("korvel-preview: ") + c.sentence))
        << result.output;
    EXPECT_TRUE(result.output.ends_with("; see korvel-preview --help\n")) << result.output;
  }
}

TEST(PreviewFaults, InvalidOptionsAreStatusTwoWithTheNearestValidOnes) {
  const std::string label = exampleFile("label.pdf");
  const std::string ppd = ppdOf("korvel-label-203");
  const struct {
    const char* option;
    const char* sentence;
  } kCases[] = {
      {"Darknes=Dark", "There is no option Darknes. Nearest options: Darkness."},
      {"Colour=red", "There is no option Colour. Nearest options: ColorModel."},
      {"Stapling=yes",
       "There is no option Stapling. Show all options: korvel-setup --list -m MODEL"},
      {"Darkness=Hot", "There is no choice Darkness=Hot. All choices: Light, Middle, Dark."},
      {"PostAction=", "There is no choice PostAction=. All choices: None, TearOff, Cut."},
      {"MirrorImage=yes", "There is no choice MirrorImage=yes. All choices: False, True."},
      {"HalftoneType=Tatoo",
       "There is no choice HalftoneType=Tatoo. Nearest choices: Tattoo, Tattoo_Z4."},
      {"HalftoneType=Fine",
       "There is no choice HalftoneType=Fine. Show all choices: korvel-setup --list -m MODEL"},
      {"PageSize=2x1",
       "There is no choice PageSize=2x1. Nearest choices: 1x2Rotated, 2x4, 2x2, 1x1, "
       "Custom.WIDTHxHEIGHTmm."},
      {"fit-to-page PageSize=Custom.axb",
       "There is no choice PageSize=Custom.axb. Nearest choices: Custom.WIDTHxHEIGHTmm."},
      {"PageSize=custom.50x80mm",
       "There is no choice PageSize=custom.50x80mm. Nearest choices: Custom.WIDTHxHEIGHTmm."},
      {"media=iso_a4", "There is no choice media=iso_a4. Nearest choices: Custom.WIDTHxHEIGHTmm."},
  };
  PreviewRunner runner;
  for (const auto& c : kCases) {
    const CommandResult result = runner.preview({"-p", ppd, label, "-o", c.option});
    EXPECT_EQ(result.status, 2) << c.option;
    EXPECT_EQ(result.output, std::string("korvel-preview: ") + c.sentence + "\n");
  }
}

TEST(PreviewFaults, OptionsThatPrintersAndSpoolersKnowAreHeard) {
  PreviewRunner runner;
  const std::string raster = runner.files().write("page.ras", rasterOf("8x8 203dpi picture=black"));
  for (const char* options : {"MirrorImage", "noMirrorImage", "fit-to-page media=4x4",
                              "PageSize=Custom.50x80mm", "job-name=x scaling=50"}) {
    const CommandResult result = runner.preview({"-p", ppdOf("korvel-label-203"), "-o", options,
                                                 "--out", runner.files().file("shown"), raster});
    EXPECT_EQ(result.status, 0) << result.output;
  }
}

TEST(PreviewFaults, AFileWithTheNameOfAnOptionIsAFile) {
  PreviewRunner runner;
  for (const char* name : {"-p", "--list-filters", "--help", "-o"}) {
    SCOPED_TRACE(name);
    const TemporaryFolder folder;
    folder.write(name, fileBytes(exampleFile("label.pdf")));
    const CommandResult result = runner.previewIn(
        folder.path(), {"-p", ppdOf("korvel-label-203"), "--stream", "--out", "shown", "--", name});
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_NE(result.output.find("shown/sheet-1.png\n"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("rasteriser: "), std::string::npos) << result.output;
  }
}

// The programs of the spooler convert it with root's rights.
TEST(PreviewFaults, RootIsWarnedOfDocumentsOfOthers) {
  if (geteuid() != 0) GTEST_SKIP() << "only root is warned";
  PreviewRunner runner;
  const std::string document =
      runner.files().write("theirs.pdf", fileBytes(exampleFile("label.pdf")));
  const std::string raster =
      runner.files().write("theirs.ras", rasterOf("8x8 203dpi picture=black"));
  const Words words = {"-p", ppdOf("korvel-label-203"), "--out", runner.files().file("shown")};
  const auto outputFor = [&](const std::string& file, unsigned owner) {
    EXPECT_EQ(chown(file.c_str(), owner, owner), 0);
    Words all = words;
    all.push_back(file);
    const CommandResult result = runner.preview(all);
    EXPECT_EQ(result.status, 0) << result.output;
    return result.output;
  };
  const std::string sheet = runner.files().file("shown/sheet-1.png\n");
  EXPECT_EQ(outputFor(document, 12345),
            "korvel-preview: Running as root: " + document +
                " is converted with root's rights. If you do not trust the file, run "
                "korvel-preview as another user.\n" +
                sheet);
  EXPECT_EQ(outputFor(document, 0), sheet);
  EXPECT_EQ(outputFor(raster, 12345), sheet) << "nothing converts it";
}

TEST(PreviewFaults, ControlCharactersInFileNamesAreEscaped) {
  PreviewRunner runner;
  const TemporaryFolder folder;
  const std::string raster = folder.write("a\x1b[2Jb.ras", rasterOf("8x8 203dpi picture=black"));
  const Words words = {"-p", ppdOf("korvel-label-203"), "--out", folder.file("s\x1b[1mn"), raster};
  const CommandResult result = runner.preview(words);
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(result.output, folder.file("s\\x1B[1mn") + "/sheet-1.png\n");
  const CommandResult missing = runner.preview({folder.file("no\x1b[2J\nsuch")});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.output, "korvel-preview: Cannot read " + folder.file("no\\x1B[2J\\x0Asuch") +
                                ": No such file or directory.\n");
}

TEST(PreviewFaults, WhatCannotBeShownIsStatusOne) {
  PreviewRunner runner;
  const TemporaryFolder& files = runner.files();
  const std::string ppd = ppdOf("korvel-label-203");
  const std::string label = exampleFile("label.pdf");
  const std::string raster = files.write("page.ras", rasterOf("8x8 203dpi picture=black"));
  const std::string deepRaster = rasterOf("8x8 203dpi bpp=24 picture=black");
  const std::string deep = files.write("deep.ras", deepRaster);
  const std::string whole = fileBytes(raster);
  const std::string cut = files.write("cut.ras", whole.substr(0, whole.size() - 1));
  const std::string odd = files.write("odd.ras", whole + "no header");
  const std::string nothing = files.write("nothing.ras", rasterOf("").substr(0, 4));
  const std::string broken = files.write("broken.pdf", "%PDF-1.4\nand no more\n");
  const std::string foreign =
      files.write("foreign.ppd",
                  "*PPD-Adobe: \"4.3\"\n*FormatVersion: \"4.3\"\n*FileVersion: \"1.0\"\n"
                  "*LanguageVersion: English\n*LanguageEncoding: ISOLatin1\n"
                  "*PCFileName: \"X.PPD\"\n*Manufacturer: \"X\"\n*Product: \"(X)\"\n"
                  "*PSVersion: \"(3010.000) 0\"\n*ModelName: \"X\"\n*ShortNickName: \"X\"\n"
                  "*NickName: \"X\"\n*cupsFilter: \"application/vnd.cups-raster 0 other\"\n");
  const struct {
    Words arguments;
    std::string sentence;
  } kCases[] = {
      {{files.file("no.pdf")},
       "Cannot read " + files.file("no.pdf") + ": No such file or directory."},
      {{files.path()}, files.path() + " is a directory."},
      {{"/dev/null"}, "/dev/null is not a regular file."},
      {{files.write("empty.pdf", "")}, files.file("empty.pdf") + " is empty."},
      {{files.write("bytes", std::string("\1\2\0\3", 4))},
       files.file("bytes") + " is not a PDF, PNG, JPEG, TIFF, text or CUPS raster file."},
      {{"-p", "korvel-nothing", label}, "There is no PPD korvel-nothing here or in "},
      {{"-p", files.file("no.ppd"), label},
       "Cannot read " + files.file("no.ppd") + ": No such file or directory."},
      {{"-p", label, raster}, label + " is not a PPD."},
      {{"-p", foreign, label},
       foreign + " is not for a Korvel printer: it does not use the filter rastertokorvel."},
      {{"-p", ppd, "--out", raster + "/x", label},
       "Cannot create the folder " + raster + "/x: Not a directory."},
      {{"-p", ppd, "--filter", "/no/filter", "--out", files.file("shown"), raster},
       "Cannot run /no/filter: No such file or directory."},
      {{"-p", ppd, "--out", files.file("shown"), nothing},
       "Cannot show " + nothing + ": There are no pages."},
      {{"-p", ppd, "--out", files.file("shown"), deep},
       libraryReads(deepRaster) ? "The filter failed with status 1: Unsupported bits per pixel : "
                                  "24 ! Requires 8 bits per pixel!"
                                : "Cannot show " + deep + ": Page 1 is damaged or incomplete."},
      {{"-p", ppd, "--out", files.file("shown"), cut},
       "Cannot show " + cut + ": Page 1 is damaged or incomplete."},
      {{"-p", ppd, "--out", files.file("shown"), odd},
       "Cannot show " + odd + ": Page 2 is damaged or incomplete."},
      {{"-p", ppd, "--out", files.file("shown"), broken},
       "Cannot convert " + broken + " to pages: "},
      {{"-P", "labels", label},
       "The print service does not answer for queue labels; start it, or name a PPD with -p."},
  };
  for (const auto& c : kCases) {
    const CommandResult result = runner.preview(c.arguments);
    EXPECT_EQ(result.status, 1) << c.sentence;
    EXPECT_TRUE(result.output.starts_with("korvel-preview: " + c.sentence)) << result.output;
    EXPECT_EQ(result.output.find('\n'), result.output.size() - 1) << result.output;
    EXPECT_TRUE(!std::filesystem::exists(runner.passing()) ||
                std::filesystem::is_empty(runner.passing()))
        << c.sentence;
  }
}

TEST(PreviewFaults, AJobThatPrintsNothingLeavesNoStream) {
  PreviewRunner runner;
  const std::string broken = runner.files().write("broken.pdf", "%PDF-1.4\nand no more\n");
  const std::string shown = runner.files().file("shown");
  EXPECT_EQ(
      runner.preview({"--stream", "-p", ppdOf("korvel-label-203"), "--out", shown, broken}).status,
      1);
  EXPECT_TRUE(std::filesystem::is_empty(shown));
}

}  // namespace
