// What the descriptions say, read through the spooler's own library and its checker.
// Every description is held against the table of what it is meant to be.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "tests/ppd/descriptions.h"
#include "tests/support/temporary_folder.h"

namespace {

using Words = std::set<std::string>;

class EveryDescription : public testing::TestWithParam<Description> {};

INSTANTIATE_TEST_SUITE_P(, EveryDescription, testing::ValuesIn(descriptions()),
                         [](const auto& each) {
                           std::string name = each.param.name;
                           for (char& c : name) c = c == '-' ? '_' : c;
                           return name;
                         });

// All findings, one a line, without the blanks before them.
std::string findings(const std::string& report) {
  std::istringstream in(report);
  std::string kept;
  for (std::string line; std::getline(in, line);) {
    const size_t at = std::min(line.find("WARN"), line.find("FAIL"));
    if (at != std::string::npos) kept += line.substr(at) + "\n";
  }
  return kept;
}

// Not looked for: the filter itself, which need not be installed while it is built.
TEST_P(EveryDescription, PassesTheSpoolersChecker) {
  const CommandResult report =
      runCommand(KORVEL_CUPSTESTPPD " -I filters " + quoted(ppdPath(GetParam())) + " 2>&1");
  EXPECT_EQ(report.status, 0) << report.output;
  // The frame knows its sheets by these two names.
  const char* const kSheetNames =
      "WARN    Size \"Tattoo_A5\" should be the Adobe standard name \"A5Rotated\".\n"
      "WARN    Size \"Tattoo_A6\" should be the Adobe standard name \"A6\".\n";
  if (GetParam().stencil) {
    EXPECT_EQ(findings(report.output), kSheetNames) << report.output;
    return;
  }
  // Labels are printed to their edges. The checker would have ".Fullbleed" in the names of such
  // sizes, and cuts that off where a name gets too long; users and queues know the short names.
  std::istringstream in(findings(report.output));
  for (std::string line; std::getline(in, line);) {
    EXPECT_TRUE(line.starts_with("WARN    Size \"")) << line;
    EXPECT_NE(line.find("\" should be the Adobe standard name \""), std::string::npos) << line;
  }
}

// Programs that know print qualities only. Normal quality is what every job has: a preset for it
// would override the defaults of the queue.
TEST_P(EveryDescription, HasAPresetForHighQualityAlone) {
  const OpenPpd ppd = openPpd(GetParam());
  ASSERT_NE(ppd, nullptr);
  int presets = 0;
  for (const ppd_attr_t* each = ppdFindAttr(ppd.get(), "APPrinterPreset", nullptr); each != nullptr;
       each = ppdFindNextAttr(ppd.get(), "APPrinterPreset", nullptr)) {
    EXPECT_STREQ(each->value,
                 "*HalftoneType Ordered *Contrast 0 com.apple.print.preset.quality high");
    ++presets;
  }
  EXPECT_EQ(presets, GetParam().stencil ? 0 : 1);
}

TEST_P(EveryDescription, TellsTheSpoolerWhatThePrinterIs) {
  const Description& want = GetParam();
  const OpenPpd ppd = openPpd(want);
  ASSERT_NE(ppd, nullptr);
  struct Case {
    const char* sentence;
    std::string have;
    std::string want;
  };
  const Case kCases[] = {
      {"the maker", attribute(ppd.get(), "Manufacturer"), "Korvel"},
      {"the bare model", attribute(ppd.get(), "ModelName"), want.model},
      {"what people choose it by", attribute(ppd.get(), "NickName"),
       std::string(want.nickName) + ", 1.0"},
      {"the resolution", attribute(ppd.get(), "DefaultResolution"),
       std::to_string(want.dpi) + "dpi"},
      {"copies are made before the filter", attribute(ppd.get(), "cupsManualCopies"), "True"},
      {"supplies are not asked for", attribute(ppd.get(), "cupsSNMPSupplies"), "False"},
      {"the filter", attribute(ppd.get(), "cupsFilter"),
       "application/vnd.cups-raster 0 rastertokorvel"},
      {"the filter and what it makes", attribute(ppd.get(), "cupsFilter2"),
       "application/vnd.cups-raster application/vnd.korvel-commands 0 rastertokorvel"},
      {"labels for sizes of one's own", ppd->variable_sizes != 0 ? "yes" : "no",
       want.stencil ? "no" : "yes"},
      {"the sheet", attribute(ppd.get(), "DefaultPageSize"), want.stencil ? "A4" : "4x6"},
      {"the halftone", attribute(ppd.get(), "DefaultHalftoneType"), want.halftone},
      {"the contrast", attribute(ppd.get(), "DefaultContrast"), want.stencil ? "0" : "50"},
      {"bars of their own width", attribute(ppd.get(), "DefaultCenterOfPixel"),
       want.stencil ? "(none)" : "True"},
      {"labels are torn off by hand only", attribute(ppd.get(), "DefaultPostAction"), "None"},
      {"the heat", attribute(ppd.get(), "DefaultDarkness"), "Middle"},
      {"trim is the cutter's", attribute(ppd.get(), "cupsIPPFinishings", "11"),
       want.cutter ? "*PostAction Cut" : "(none)"},
      {"trim after every page", attribute(ppd.get(), "cupsIPPFinishings", "60"),
       want.cutter ? "*PostAction Cut *Occurrence EveryPage" : "(none)"},
      {"trim after the job", attribute(ppd.get(), "cupsIPPFinishings", "63"),
       want.cutter ? "*PostAction Cut *Occurrence AfterJob" : "(none)"},
      {"no finishing leaves the queue's default alone",
       attribute(ppd.get(), "cupsIPPFinishings", "3"), "(none)"},
  };
  for (const Case& c : kCases) EXPECT_EQ(c.have, c.want) << c.sentence;
}

TEST_P(EveryDescription, OffersOnlyWhatReachesThePrinter) {
  const OpenPpd ppd = openPpd(GetParam());
  ASSERT_NE(ppd, nullptr);
  Words want = {"PageSize",     "PageRegion", "ColorModel",  "Resolution",
                "HalftoneType", "Darkness",   "Brightness",  "Contrast",
                "PaperType",    "PostAction", "MirrorImage", "NegativeImage",
                "Origin",       "Occurrence", "MediaType",   "InputSlot"};
  want.insert(GetParam().stencil ? "AntiWrinkle" : "CenterOfPixel");
  Words have;
  forEachOption(*ppd, [&](const ppd_option_t& option) { have.insert(option.keyword); });
  EXPECT_EQ(have, want);
}

TEST_P(EveryDescription, OffersACutOnlyWhereThereIsACutter) {
  const OpenPpd ppd = openPpd(GetParam());
  ASSERT_NE(ppd, nullptr);
  const bool offered = ppdFindChoice(ppdFindOption(ppd.get(), "PostAction"), "Cut") != nullptr;
  EXPECT_EQ(offered, GetParam().cutter);
}

TEST_P(EveryDescription, LabelsAHalftoneByTheMethodThatRuns) {
  struct Case {
    const char* choice;
    const char* text;
  };
  const Case kCases[] = {
      {"None", "Threshold"},
      {"FloydSteinberg", "Ordered 4 x 4"},
      {"Ordered", "Burkes"},
      {"Burkes", "Stucki"},
      {"Stucki", "Jarvis-Judice-Ninke"},
      {"JarvisJudiceNinke", "Sierra"},
      {"Sierra", "Stevenson-Arce"},
      {"StevensonArce", "Ordered, Bayer"},
      {"Tattoo", "Tattoo stencil"},
      {"Tattoo_Z4", "Tattoo stencil, fine"},
  };
  const OpenPpd ppd = openPpd(GetParam());
  ASSERT_NE(ppd, nullptr);
  ppd_option_t* option = ppdFindOption(ppd.get(), "HalftoneType");
  ASSERT_NE(option, nullptr);
  EXPECT_EQ(option->num_choices, 10);
  for (const Case& c : kCases) {
    const ppd_choice_t* choice = ppdFindChoice(option, c.choice);
    EXPECT_STREQ(choice == nullptr ? "(none)" : choice->text, c.text) << c.choice;
  }
}

TEST_P(EveryDescription, OffersTheNegativeForTattooOnly) {
  const OpenPpd ppd = openPpd(GetParam());
  ASSERT_NE(ppd, nullptr);
  const ppd_option_t* halftones = ppdFindOption(ppd.get(), "HalftoneType");
  ASSERT_NE(halftones, nullptr);
  for (int i = 0; i < halftones->num_choices; ++i) {
    const std::string halftone = halftones->choices[i].choice;
    const bool tattoo = halftone == "Tattoo" || halftone == "Tattoo_Z4";
    ppdMarkDefaults(ppd.get());
    ppdMarkOption(ppd.get(), "HalftoneType", halftone.c_str());
    EXPECT_EQ(ppdConflicts(ppd.get()), 0) << halftone;
    ppdMarkOption(ppd.get(), "NegativeImage", "True");
    EXPECT_EQ(ppdConflicts(ppd.get()) == 0, tattoo) << halftone;
  }
}

TEST_P(EveryDescription, HasAPlainTextForEachPrinterState) {
  struct Case {
    const char* reason;
    const char* name;
    const char* text;
  };
  const Case kCases[] = {
      {"media-empty-warning", "Out of media", "The printer is out of media."},
      {"cover-open-warning", "Cover open", "The cover of the printer is open."},
  };
  const OpenPpd ppd = openPpd(GetParam());
  ASSERT_NE(ppd, nullptr);
  for (const Case& c : kCases) {
    const ppd_attr_t* reason = ppdFindAttr(ppd.get(), "cupsIPPReason", c.reason);
    EXPECT_STREQ(reason == nullptr ? "(none)" : reason->text, c.name) << c.reason;
    char text[200] = "";
    ppdLocalizeIPPReason(ppd.get(), c.reason, nullptr, text, sizeof text);
    EXPECT_STREQ(text, c.text) << c.reason;
  }
}

// The lines of a description without those that name it.
std::string withoutNames(const Description& description) {
  std::istringstream in(ppdText(description));
  std::string kept;
  for (std::string line; std::getline(in, line);) {
    bool names = line.starts_with("*%");
    for (const char* key :
         {"*ModelName:", "*NickName:", "*ShortNickName:", "*Product:", "*PCFileName:"}) {
      names = names || line.starts_with(key);
    }
    for (const char* key :
         {".Translation ModelName/", ".Translation NickName/", ".Translation ShortNickName/"}) {
      names = names || line.find(key) != std::string::npos;
    }
    if (!names) kept += line + "\n";
  }
  return kept;
}

TEST(OneWayTwin, DiffersFromItsModelInNothingButTheNames) {
  int twins = 0;
  for (const Description& each : descriptions()) {
    if (!reportsStatus(each)) continue;
    SCOPED_TRACE(each.name);
    const std::string twinName = std::string(each.name) + "-oneway";
    const Description& twin = description(twinName);
    EXPECT_FALSE(reportsStatus(twin));
    EXPECT_EQ(withoutNames(twin), withoutNames(each));
    ++twins;
  }
  EXPECT_EQ(twins, 6);
}

// A description that names the filter by its path, as no test may install it.
TEST(FilterChain, LeadsFromEveryDocumentToTheFilter) {
  struct Case {
    const char* sentence;
    const char* type;
    const char* chain;
  };
  const Case kCases[] = {
      {"PDF", "application/pdf", "pdftopdf gstoraster "},
      {"text", "text/plain", "texttopdf pdftopdf gstoraster "},
      {"a picture", "image/png", "imagetoraster "},
      {"raster", "application/vnd.cups-raster", ""},
  };
  const TemporaryFolder folder;
  std::filesystem::copy_file(KORVEL_FILTER, folder.file("rastertokorvel"));
  std::filesystem::permissions(folder.file("rastertokorvel"), std::filesystem::perms(0755));
  std::string text = ppdText(description("k220-203"));
  for (size_t at = 0; (at = text.find(" rastertokorvel\"", at)) != std::string::npos;) {
    text.insert(at + 1, folder.path() + "/");
    at += folder.path().size() + 3;
  }
  const std::string ppd = folder.write("printer.ppd", text);
  const std::string document = folder.write("document", "any");
  for (const Case& c : kCases) {
    const CommandResult list =
        runCommand(KORVEL_CUPSFILTER " -e --list-filters -p " + quoted(ppd) + " -i " + c.type +
                   " -m printer/any " + quoted(document) + " 2>/dev/null | tr '\\n' ' '");
    EXPECT_EQ(list.output, c.chain + folder.file("rastertokorvel") + " ") << c.sentence;
  }
}

}  // namespace
