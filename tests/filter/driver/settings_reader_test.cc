// The settings record as filled from PPDs and job options, and its log lines.
// The PPDs are in a temporary folder; the environment is restored.
// SPDX-License-Identifier: Apache-2.0
#include "driver/settings_reader.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "driver/ppd_access.h"
#include "tests/filter/driver/written_ppd.h"
#include "tests/support/captured_stderr.h"
#include "tests/support/temporary_folder.h"

namespace {

// Sets or unsets the variable PPD during its lifetime.
class PpdVariable {
 public:
  explicit PpdVariable(const char* path) {
    if (const char* before = std::getenv("PPD")) before_ = before;
    set(path);
  }
  PpdVariable(const PpdVariable&) = delete;
  PpdVariable& operator=(const PpdVariable&) = delete;
  ~PpdVariable() { set(before_ ? before_->c_str() : nullptr); }

 private:
  static void set(const char* path) {
    if (path != nullptr) {
      setenv("PPD", path, 1);
    } else {
      unsetenv("PPD");
    }
  }

  std::optional<std::string> before_;
};

struct Parsed {
  Settings settings;
  std::string log;
};

// Parses into a record full of garbage. An empty `ppd` means no PPD.
Parsed parse(const std::string& ppd, const char* options) {
  const TemporaryFolder folder;
  const std::string path = ppd.empty() ? "" : folder.write("test.ppd", ppd);
  const PpdVariable variable(ppd.empty() ? nullptr : path.c_str());
  Parsed parsed;
  std::memset(&parsed.settings, 0xAB, sizeof parsed.settings);
  CapturedStderr captured;
  parseSettings(&parsed.settings, options);
  parsed.log = captured.text();
  return parsed;
}

TEST(Settings, StandInTheirOrder) {
  static_assert(std::is_trivial_v<Settings> && std::is_standard_layout_v<Settings>);
  EXPECT_EQ(sizeof(Settings::ModelName), 41u);
  EXPECT_EQ(sizeof(Settings::PrintSpeed), 41u);
  EXPECT_EQ(sizeof(Settings::FilterOutputPath), 256u);
  const size_t offsets[] = {
      offsetof(Settings, ModelName),     offsetof(Settings, PageSize),
      offsetof(Settings, pageWidth),     offsetof(Settings, pageHeight),
      offsetof(Settings, Resolution),    offsetof(Settings, MediaMethod),
      offsetof(Settings, PaperType),     offsetof(Settings, GapsHeight),
      offsetof(Settings, PostAction),    offsetof(Settings, Occurrence),
      offsetof(Settings, Origin),        offsetof(Settings, MirrorImage),
      offsetof(Settings, NegativeImage), offsetof(Settings, Rotate180),
      offsetof(Settings, AntiWrinkle),   offsetof(Settings, IsTattooPrinter),
      offsetof(Settings, halftoneType),  offsetof(Settings, PrintSpeed),
      offsetof(Settings, Darkness),      offsetof(Settings, Brightness),
      offsetof(Settings, Contrast),      offsetof(Settings, FilterOutputPath),
  };
  for (size_t i = 1; i < std::size(offsets); ++i) EXPECT_LT(offsets[i - 1], offsets[i]) << i;
}

constexpr const char* kLogOfNothing =
    "DEBUG:PageSizeName: \n"
    "DEBUG:settings->Resolution:\n"
    "DEBUG:settings->MediaMethod:\n"
    "DEBUG:settings->PaperType:\n"
    "DEBUG:settings->GapsHeight:0\n"
    "DEBUG:settings->PostAction:\n"
    "DEBUG:settings->Occurrence:\n"
    "DEBUG:settings->Origin:\n"
    "DEBUG:settings->MirrorImage:0\n"
    "DEBUG:settings->NegativeImage:0\n"
    "DEBUG:settings->PrintSpeed:\n"
    "DEBUG:settings->Darkness:0\n"
    "DEBUG:settings->halftoneType:0\n"
    "DEBUG:settings->PageSize:\n"
    "DEBUG:settings->pageWidth:0.000000\n"
    "DEBUG:settings->pageHeight:0.000000\n"
    "DEBUG:settings->AntiWrinkle:-1\n"
    "DEBUG:settings->IsTattooPrinter:0\n"
    "DEBUG:settings->ModelName:\n"
    "DEBUG:settings->Brightness:0\n"
    "DEBUG:settings->Contrast:0\n";

TEST(Settings, AreAllDefaultsWithoutADescription) {
  for (const char* options : {"", "MirrorImage PageSize=A4 Brightness=5"}) {
    const Parsed parsed = parse("", options);
    EXPECT_EQ(parsed.log, kLogOfNothing) << options;
    // Fields that are not logged, in a record that was full of garbage.
    EXPECT_EQ(parsed.settings.Rotate180, 0);
    EXPECT_EQ(std::string(parsed.settings.FilterOutputPath, 256), std::string(256, '\0'));
  }
}

TEST(Settings, AreAllDefaultsWithADescriptionThatCannotBeRead) {
  const PpdVariable variable("/nowhere/at/all.ppd");
  Settings settings;
  CapturedStderr captured;
  parseSettings(&settings, "");
  EXPECT_EQ(captured.text(), kLogOfNothing);
}

// Every option that is read, with defaults that differ from those without a PPD.
std::string fullPpd() {
  return writtenPpd(kPpdPageSizes + ppdOption("MediaMethod", "Direct", {"Direct", "Transfer"}) +
                        ppdOption("PaperType", "LabelMark", {"LabelGaps", "LabelMark"}) +
                        ppdOption("GapsHeight", "3mm", {"2mm", "3mm"}) +
                        ppdOption("PostAction", "Cut", {"None", "TearOff", "Cut"}) +
                        ppdOption("Occurrence", "AfterJob", {"EveryPage", "AfterJob"}) +
                        ppdOption("Origin", "Rotation180", {"Normal", "Rotation180"}) +
                        ppdOption("HalftoneType", "Stucki", {"None", "Stucki", "Tattoo_Z4"}) +
                        ppdOption("MirrorImage", "True", {"True", "False"}) +
                        ppdOption("NegativeImage", "False", {"True", "False"}) +
                        ppdOption("AntiWrinkle", "2", {"0", "1", "2"}) +
                        ppdOption("Darkness", "Dark", {"Light", "Middle", "Dark"}) +
                        ppdOption("Brightness", "-4", {"-4", "0", "7"}) +
                        ppdOption("Contrast", "6", {"0", "6"}),
                    "M6");
}

TEST(Settings, ComeFromTheDescriptionsDefaults) {
  EXPECT_EQ(parse(fullPpd(), "").log,
            "DEBUG:PageSizeName: Square\n"
            "DEBUG:Custom Size: (72.000000,72.000000,1.000000,2.000000,70.000000,69.000000)\n"
            "DEBUG:Set page size: width 25.401600 mm, height 25.401600 mm\n"
            "DEBUG:settings->Resolution:\n"
            "DEBUG:settings->MediaMethod:Direct\n"
            "DEBUG:settings->PaperType:LabelMark\n"
            "DEBUG:settings->GapsHeight:3\n"
            "DEBUG:settings->PostAction:Cut\n"
            "DEBUG:settings->Occurrence:AfterJob\n"
            "DEBUG:settings->Origin:Rotation180\n"
            "DEBUG:settings->MirrorImage:1\n"
            "DEBUG:settings->NegativeImage:0\n"
            "DEBUG:settings->PrintSpeed:\n"
            "DEBUG:settings->Darkness:15\n"
            "DEBUG:settings->halftoneType:4\n"
            "DEBUG:settings->PageSize:Square\n"
            "DEBUG:settings->pageWidth:25.401600\n"
            "DEBUG:settings->pageHeight:25.401600\n"
            "DEBUG:settings->AntiWrinkle:2\n"
            "DEBUG:settings->IsTattooPrinter:1\n"
            "DEBUG:settings->ModelName:M6\n"
            "DEBUG:settings->Brightness:-4\n"
            "DEBUG:settings->Contrast:6\n");
}

TEST(Settings, OfTheJobGoOverTheDefaults) {
  const Parsed parsed = parse(
      fullPpd(),
      "media-foo PageSize=Tall MediaMethod=Transfer PaperType=LabelGaps GapsHeight=2mm "
      "PostAction=TearOff Occurrence=EveryPage Origin=Normal HalftoneType=Tattoo_Z4 noMirrorImage "
      "NegativeImage AntiWrinkle=0 Darkness=Light Brightness=7 Contrast=0 ModelName=Z4");
  EXPECT_EQ(parsed.log,
            "DEBUG:PageSizeName: Tall\n"
            "DEBUG:Custom Size: (144.000000,288.000000,0.000000,0.000000,144.000000,288.000000)\n"
            "DEBUG:Set page size: width 50.803200 mm, height 101.606400 mm\n"
            "DEBUG:settings->Resolution:\n"
            "DEBUG:settings->MediaMethod:Transfer\n"
            "DEBUG:settings->PaperType:LabelGaps\n"
            "DEBUG:settings->GapsHeight:2\n"
            "DEBUG:settings->PostAction:TearOff\n"
            "DEBUG:settings->Occurrence:EveryPage\n"
            "DEBUG:settings->Origin:Normal\n"
            "DEBUG:settings->MirrorImage:0\n"
            "DEBUG:settings->NegativeImage:1\n"
            "DEBUG:settings->PrintSpeed:\n"
            "DEBUG:settings->Darkness:1\n"
            "DEBUG:settings->halftoneType:9\n"
            "DEBUG:settings->PageSize:Tall\n"
            "DEBUG:settings->pageWidth:50.803200\n"
            "DEBUG:settings->pageHeight:101.606400\n"
            "DEBUG:settings->AntiWrinkle:0\n"
            "DEBUG:settings->IsTattooPrinter:1\n"
            "DEBUG:settings->ModelName:M6\n"
            "DEBUG:settings->Brightness:7\n"
            "DEBUG:settings->Contrast:0\n");
  EXPECT_EQ(parsed.settings.Rotate180, 0);
}

// One option, one choice, and the resulting field of the record.
struct Number {
  const char* keyword;
  const char* choice;
  int want;
  int Settings::*field;
};

TEST(Settings, TurnChoicesIntoNumbers) {
  const Number cases[] = {
      {"Darkness", "Light", 1, &Settings::Darkness},
      {"Darkness", "Middle", 8, &Settings::Darkness},
      {"Darkness", "Dark", 15, &Settings::Darkness},
      {"Darkness", "light", 0, &Settings::Darkness},
      {"Darkness", "DARK", 0, &Settings::Darkness},
      {"Darkness", "Medium", 0, &Settings::Darkness},
      {"Darkness", "15", 0, &Settings::Darkness},
      {"AntiWrinkle", "0", 0, &Settings::AntiWrinkle},
      {"AntiWrinkle", "0", 1, &Settings::IsTattooPrinter},
      {"AntiWrinkle", "-1", -1, &Settings::AntiWrinkle},
      {"AntiWrinkle", "-1", 0, &Settings::IsTattooPrinter},
      {"AntiWrinkle", "-2", 1, &Settings::IsTattooPrinter},
      {"AntiWrinkle", "None", 0, &Settings::AntiWrinkle},
      {"AntiWrinkle", "None", 1, &Settings::IsTattooPrinter},
      {"Unheard", "0", -1, &Settings::AntiWrinkle},
      {"Unheard", "0", 0, &Settings::IsTattooPrinter},
      {"Origin", "Rotation180", 1, &Settings::Rotate180},
      {"Origin", "rotation180", 0, &Settings::Rotate180},
      {"Origin", "Rotation1800", 0, &Settings::Rotate180},
      {"MirrorImage", "Yes", 1, &Settings::MirrorImage},
      {"MirrorImage", "2", 2, &Settings::MirrorImage},
      {"MirrorImage", "255", -1, &Settings::MirrorImage},
      {"MirrorImage", "256", 0, &Settings::MirrorImage},
      {"MirrorImage", "Sideways", 0, &Settings::MirrorImage},
      {"NegativeImage", "128", -128, &Settings::NegativeImage},
      {"NegativeImage", "TRUE", 1, &Settings::NegativeImage},
      {"HalftoneType", "Tattoo", 8, &Settings::halftoneType},
      {"HalftoneType", "tattoo", 0, &Settings::halftoneType},
      {"HalftoneType", "FloydSteinberg", 1, &Settings::halftoneType},
      {"GapsHeight", "25.4", 25, &Settings::GapsHeight},
      {"Brightness", "-100", -100, &Settings::Brightness},
      {"Brightness", "1000", 1000, &Settings::Brightness},
      {"Contrast", "x", 0, &Settings::Contrast},
  };
  for (const Number& c : cases) {
    const Parsed parsed =
        parse(writtenPpd(ppdOption(c.keyword, c.choice, {c.choice, "Another"})), "");
    EXPECT_EQ(parsed.settings.*c.field, c.want) << c.keyword << "=" << c.choice;
  }
}

TEST(Settings, OfTrueAndFalseComeInManyWays) {
  struct Case {
    const char* sentence;
    std::vector<std::string> choices;  // the first one is the default
    const char* options;
    int want;
  };
  const Case cases[] = {
      {"yes over a default of no", {"no", "yes"}, "MirrorImage=yes", 1},
      {"the bare name", {"False", "True"}, "MirrorImage", 1},
      {"a \"no\" prefix", {"True", "False"}, "noMirrorImage", 0},
      {"a \"no\" prefix, default false", {"False", "True"}, "noMirrorImage", 0},
      {"in capitals", {"False", "True"}, "MirrorImage=TRUE", 1},
      {"an unknown choice leaves the default", {"True", "False"}, "MirrorImage=maybe", 1},
      {"the last one counts", {"False", "True"}, "MirrorImage=true MirrorImage=false", 0},
      {"another option changes nothing", {"False", "True"}, "NegativeImage=true", 0},
  };
  for (const Case& c : cases) {
    const std::string ppd = writtenPpd(ppdOption("MirrorImage", c.choices[0], c.choices));
    EXPECT_EQ(parse(ppd, c.options).settings.MirrorImage, c.want) << c.sentence;
  }
}

TEST(Settings, CutTextsAtFortyCharacters) {
  const std::string fifty = "1234567890123456789012345678901234567890abcdefghij";
  const std::string forty = fifty.substr(0, 40);
  const Parsed parsed =
      parse(writtenPpd(ppdOption("PaperType", forty, {forty, "LabelMark"}), fifty), "");
  EXPECT_EQ(parsed.settings.ModelName, forty);
  EXPECT_EQ(parsed.settings.PaperType, forty);
  EXPECT_NE(parsed.log.find("DEBUG:settings->ModelName:" + forty + "\n"), std::string::npos);
}

TEST(Settings, HaveNoModelNameWithoutTheAttribute) {
  EXPECT_STREQ(parse(writtenPpd("", ""), "").settings.ModelName, "");
}

struct Size {
  const char* sentence;
  const char* options;
  const char* name;
  float width;
  float height;
  const char* log;
};

TEST(PageSizes, BecomeMillimetres) {
  const Size cases[] = {
      {"an inch square", "", "Square", 0x1.966cf4p+4f, 0x1.966cf4p+4f,
       "DEBUG:PageSizeName: Square\n"
       "DEBUG:Custom Size: (72.000000,72.000000,1.000000,2.000000,70.000000,69.000000)\n"
       "DEBUG:Set page size: width 25.401600 mm, height 25.401600 mm\n"},
      {"another size", "PageSize=Tall", "Tall", 0x1.966cf4p+5f, 0x1.966cf4p+6f,
       "DEBUG:PageSizeName: Tall\n"
       "DEBUG:Custom Size: (144.000000,288.000000,0.000000,0.000000,144.000000,288.000000)\n"
       "DEBUG:Set page size: width 50.803200 mm, height 101.606400 mm\n"},
      {"a custom size, within the margins of the printer", "PageSize=Custom.100x25", "Custom",
       0x1.1a3d7p+5f, 0x1.1a3d7p+3f,
       "DEBUG:PageSizeName: Custom\n"
       "DEBUG:Custom Size: (100.000000,25.000000,1.000000,2.000000,97.000000,21.000000)\n"
       "DEBUG:Set page size: width 35.279999 mm, height 8.820000 mm\n"},
      {"an unknown size leaves the default", "PageSize=Nothing", "Square", 0x1.966cf4p+4f,
       0x1.966cf4p+4f,
       "DEBUG:PageSizeName: Square\n"
       "DEBUG:Custom Size: (72.000000,72.000000,1.000000,2.000000,70.000000,69.000000)\n"
       "DEBUG:Set page size: width 25.401600 mm, height 25.401600 mm\n"},
  };
  for (const Size& c : cases) {
    const Parsed parsed = parse(writtenPpd(kPpdPageSizes), c.options);
    EXPECT_STREQ(parsed.settings.PageSize, c.name) << c.sentence;
    EXPECT_EQ(parsed.settings.pageWidth, c.width) << c.sentence;
    EXPECT_EQ(parsed.settings.pageHeight, c.height) << c.sentence;
    EXPECT_EQ(parsed.log.substr(0, parsed.log.find("DEBUG:settings->")), c.log) << c.sentence;
  }
}

TEST(PageSizes, AreNothingWhenTheDescriptionHasNone) {
  Settings settings{};
  settings.pageWidth = 5.0f;
  settings.pageHeight = 6.0f;
  CapturedStderr captured;
  getPageWidthPageHeight(nullptr, &settings);
  EXPECT_EQ(captured.text(), "DEBUG:PageSizeName: \n");
  EXPECT_EQ(settings.pageWidth, 0.0f);
  EXPECT_EQ(settings.pageHeight, 0.0f);
}

// The CUPS library treats every keyword that begins with Default as a default, so an option with
// such a name never has choices.
TEST(Settings, LookUpResolutionAndSpeedByKeywordsThatStayEmpty) {
  const std::string ppd = writtenPpd(ppdOption("Resolution", "203dpi", {"203dpi", "300dpi"}) +
                                     ppdOption("PrintSpeed", "4", {"4", "6"}) +
                                     ppdOption("DefaultResolution", "203dpi", {"203dpi"}) +
                                     ppdOption("DefaultPrintSpeed", "6", {"6"}));
  for (const char* options : {"", "Resolution=300dpi PrintSpeed=6 DefaultResolution=203dpi"}) {
    const Parsed parsed = parse(ppd, options);
    EXPECT_STREQ(parsed.settings.Resolution, "") << options;
    EXPECT_STREQ(parsed.settings.PrintSpeed, "") << options;
  }
}

}  // namespace
