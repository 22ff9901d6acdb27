// Every failure is one sentence, and tells wrong usage from what cannot be shown.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>

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
      {{}, "which file?"},
      {{label, "-P"}, "-P wants a value"},
      {{label, "--out", ""}, "--out wants a value"},
      {{label, "-x"}, "unknown option '-x'"},
      {{label, label}, "more than one file: "},
      {{label, "--pages=1"}, "--pages takes no value"},
      {{label, "--out="}, "--out wants a value"},
      {{label, "-n", "0"}, "-n wants a number from 1 to 9999, have '0'"},
      {{label, "-n", "99999"}, "-n wants a number from 1 to 9999, have '99999'"},
      {{label, "-n", "2x"}, "-n wants a number from 1 to 9999, have '2x'"},
      {{label, "-Pa", "-p", "b"}, "-P and -p exclude each other"},
      {{label, "--halftones", "--pages"},
       "--halftones makes one picture: leave --pages and --stream out"},
      {{label, "--halftones", "-o", "HalftoneType=None"},
       "--halftones shows them all: leave -o HalftoneType out"},
      {{"-p", ppd, raster, "-n", "2"}, "a raster file prints as it is, once; -n is for documents"},
      {{"-p", ppd, label, "-o", "Darknes=Dark"}, "unknown option Darknes"},
      {{"-p", ppd, label, "-o", "Darkness=Hot"},
       "the printer description offers no Darkness=Hot, only Light Middle Dark"},
      {{"-p", ppd, label, "-o", "PostAction="},
       "the option PostAction wants a value, one of None TearOff Cut"},
      {{"-p", ppd, label, "-o", "MirrorImage=yes"},
       "the printer description offers no MirrorImage=yes, only False True"},
      {{"-p", ppd, label, "-o", "fit-to-page PageSize=Custom.axb"},
       "the printer description offers no PageSize=Custom.axb, only"},
  };
  for (const UsageCase& c : kCases) {
    const CommandResult result = runner.preview(c.arguments);
    EXPECT_EQ(result.status, 2) << c.sentence;
    EXPECT_TRUE(result.output.starts_with(std::string("korvel-preview: ") + c.sentence))
        << result.output;
    EXPECT_TRUE(result.output.ends_with("; see korvel-preview --help\n")) << result.output;
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

TEST(PreviewFaults, WhatCannotBeShownIsStatusOne) {
  PreviewRunner runner;
  const TemporaryFolder& files = runner.files();
  const std::string ppd = ppdOf("korvel-label-203");
  const std::string label = exampleFile("label.pdf");
  const std::string raster = files.write("page.ras", rasterOf("8x8 203dpi picture=black"));
  const std::string deep = files.write("deep.ras", rasterOf("8x8 203dpi bpp=24 picture=black"));
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
      {{files.file("no.pdf")}, "there is no file " + files.file("no.pdf")},
      {{files.path()}, files.path() + " is a directory"},
      {{"/dev/null"}, "/dev/null is not a plain file"},
      {{files.write("empty.pdf", "")}, files.file("empty.pdf") + " is empty"},
      {{files.write("bytes", std::string("\1\2\0\3", 4))},
       files.file("bytes") + " is not a PDF, PNG, JPEG, text or CUPS raster file"},
      {{"-p", "korvel-nothing", label},
       "there is no printer description korvel-nothing here or in "},
      {{"-p", files.file("no.ppd"), label},
       "cannot read the printer description " + files.file("no.ppd") +
           ": No such file or directory"},
      {{"-p", label, raster}, label + " is not a printer description (PPD)"},
      {{"-p", foreign, label},
       foreign + " is not of a Korvel printer: it does not print with rastertokorvel"},
      {{"-p", ppd, "--out", raster + "/x", label},
       "cannot make the folder " + raster + "/x: Not a directory"},
      {{"-p", ppd, "--filter", "/no/filter", "--out", files.file("shown"), raster},
       "cannot run /no/filter: No such file or directory"},
      {{"-p", ppd, "--out", files.file("shown"), nothing},
       nothing + " cannot be shown: it has no pages"},
      {{"-p", ppd, "--out", files.file("shown"), deep},
       "the filter stopped with status 1: Unsupported bits per pixel : 24 ! Requires 8 bits per "
       "pixel!"},
      {{"-p", ppd, "--out", files.file("shown"), broken},
       "the rasteriser cannot make pages of " + broken + ": "},
      {{"-P", "labels", label},
       "the spooler does not answer for queue labels; start it, or name a printer description with "
       "-p instead"},
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
