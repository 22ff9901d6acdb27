// Addresses and label sizes as users type them.
// SPDX-License-Identifier: Apache-2.0
#include "tools/setup/typed_answer.h"

#include <gtest/gtest.h>

namespace {

const char kHead[] =
    "*PPD-Adobe: \"4.3\"\n*FormatVersion: \"4.3\"\n*LanguageVersion: English\n"
    "*LanguageEncoding: ISOLatin1\n*PCFileName: \"X.PPD\"\n*Product: \"(X)\"\n"
    "*Manufacturer: \"X\"\n*ModelName: \"X\"\n*NickName: \"X\"\n*PSVersion: \"(3010.000) 0\"\n"
    "*OpenUI *PageSize/Media Size: PickOne\n*DefaultPageSize: 4x6\n"
    "*PageSize 1x1/1 x 1 in: \"\"\n*PageSize 4x6/4 x 6 in: \"\"\n"
    "*PageSize 3x4Rotated/4 x 3 in: \"\"\n*CloseUI: *PageSize\n"
    "*DefaultImageableArea: 4x6\n*ImageableArea 1x1: \"0 0 72 72\"\n"
    "*ImageableArea 4x6: \"0 0 288 432\"\n*ImageableArea 3x4Rotated: \"0 0 288 216\"\n"
    "*DefaultPaperDimension: 4x6\n*PaperDimension 1x1: \"72 72\"\n*PaperDimension 4x6: \"288 "
    "432\"\n"
    "*PaperDimension 3x4Rotated: \"288 216\"\n";

const char kCustom[] =
    "*HWMargins: 0 0 0 0\n*CustomPageSize True: \"pop\"\n"
    "*ParamCustomPageSize Width: 1 points 28 613\n*ParamCustomPageSize Height: 2 points 28 5669\n"
    "*ParamCustomPageSize WidthOffset: 3 points 0 0\n"
    "*ParamCustomPageSize HeightOffset: 4 points 0 0\n"
    "*ParamCustomPageSize Orientation: 5 int 0 0\n";

TEST(TypedAnswer, IsAnAddress) {
  const struct {
    const char* answer;
    const char* want;
  } kCases[] = {
      {"192.0.2.7", "socket://192.0.2.7"},
      {"192.0.2.7:9101", "socket://192.0.2.7:9101"},
      {"printer", "socket://printer"},
      {"label-1.example.net", "socket://label-1.example.net"},
      {"2001:db8::7", "socket://[2001:db8::7]"},
      {"socket://192.0.2.7", "socket://192.0.2.7"},
      {"lpd://server/labels", "lpd://server/labels"},
      {"usb://Korvel/K220?serial=1", "usb://Korvel/K220?serial=1"},
      {"serial:/dev/ttyUSB0?baud=115200", "serial:/dev/ttyUSB0?baud=115200"},
      {"beh:/1/3/5/socket://192.0.2.7", "beh:/1/3/5/socket://192.0.2.7"},
      {"two words", ""},
      {"-v", ""},
      {"/dev/usb/lp0", ""},
      {"", ""},
  };
  for (const auto& c : kCases) EXPECT_EQ(korvel::deviceUri(c.answer), c.want) << c.answer;
}

TEST(TypedAnswer, IsALabelSize) {
  const struct {
    const char* answer;
    const char* want;       // of a driver with custom sizes
    const char* wantFixed;  // of one without them
  } kCases[] = {
      {"4x6", "4x6", "4x6"},
      {"3X4rotated", "3x4Rotated", "3x4Rotated"},
      {"4 x 6 in", "4x6", "4x6"},
      {"4\"x6\"", "4x6", "4x6"},
      {"101.6 × 152,4 mm", "4x6", "4x6"},
      {"4 in * 3 in", "3x4Rotated", "3x4Rotated"},
      {"2.54cmx2.54cm", "1x1", "1x1"},
      {"57 x 32 mm", "Custom.57x32mm", ""},
      {"57.5x32,25mm", "Custom.57.5x32.25mm", ""},
      {"2.25 x 1.25 inch", "Custom.57.15x31.75mm", ""},
      {"9 x 32 mm", "", ""},  // below the smallest size
      {"9 x 32 in", "", ""},  // wider than the printer
      {"57 x 32", "", ""},    // mm or inches?
      {"57 mm", "", ""},
      {"Custom", "", ""},
      {"label", "", ""},
  };
  const std::string custom = std::string(kHead) + kCustom;
  for (const auto& c : kCases) {
    EXPECT_EQ(korvel::pageSize(custom, c.answer), c.want) << c.answer;
    EXPECT_EQ(korvel::pageSize(kHead, c.answer), c.wantFixed) << c.answer;
  }
}

TEST(TypedAnswer, TheDefaultSizeIsProposedFirst) {
  std::string have;
  for (const korvel::SizeChoice& one : korvel::commonSizes(std::string(kHead) + kCustom)) {
    have += one.choice + " (" + one.text + ")\n";
  }
  EXPECT_EQ(have, "4x6 (4 x 6 in)\n1x1 (1 x 1 in)\n3x4Rotated (4 x 3 in)\n");
}

TEST(TypedAnswer, TheContentSetsTheHalftone) {
  const korvel::Options none = {{"HalftoneType", "None"}};
  const korvel::Options flat = {{"Contrast", "0"}};
  EXPECT_EQ(korvel::optionsFor(korvel::Content::kBarcodesAndText), none);
  EXPECT_EQ(korvel::optionsFor(korvel::Content::kPictures), flat);
  EXPECT_EQ(korvel::optionsFor(korvel::Content::kBoth), korvel::Options{});
}

}  // namespace
