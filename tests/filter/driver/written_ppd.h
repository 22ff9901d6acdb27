// Hand-written PPDs, as small as the CUPS library accepts them.
// Each test adds the lines that it needs.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_DRIVER_WRITTEN_PPD_H
#define KORVEL_TESTS_DRIVER_WRITTEN_PPD_H

#include <string>
#include <vector>

// One option: its keyword, its default choice and all its choices.
inline std::string ppdOption(const std::string& keyword, const std::string& defaultChoice,
                             const std::vector<std::string>& choices) {
  std::string text = "*OpenUI *" + keyword + "/" + keyword + ": PickOne\n" +
                     "*OrderDependency: 10 AnySetup *" + keyword + "\n" + "*Default" + keyword +
                     ": " + defaultChoice + "\n";
  for (const std::string& choice : choices) {
    text += "*" + keyword + " " + choice + "/" + choice + ": \"\"\n";
  }
  return text + "*CloseUI: *" + keyword + "\n";
}

// Two page sizes and a custom size, in points.
inline const char* const kPpdPageSizes =
    "*VariablePaperSize: True\n"
    "*HWMargins: 1 2 3 4\n"
    "*MaxMediaWidth: \"1000\"\n"
    "*MaxMediaHeight: \"1000\"\n"
    "*CustomPageSize True: \"\"\n"
    "*ParamCustomPageSize Width: 1 points 10 1000\n"
    "*ParamCustomPageSize Height: 2 points 10 1000\n"
    "*ParamCustomPageSize WidthOffset: 3 points 0 0\n"
    "*ParamCustomPageSize HeightOffset: 4 points 0 0\n"
    "*ParamCustomPageSize Orientation: 5 int 0 0\n"
    "*OpenUI *PageSize/Size: PickOne\n"
    "*OrderDependency: 10 AnySetup *PageSize\n"
    "*DefaultPageSize: Square\n"
    "*PageSize Square/Square: \"\"\n"
    "*PageSize Tall/Tall: \"\"\n"
    "*CloseUI: *PageSize\n"
    "*DefaultImageableArea: Square\n"
    "*ImageableArea Square/Square: \"1 2 70 69\"\n"
    "*ImageableArea Tall/Tall: \"0 0 144 288\"\n"
    "*DefaultPaperDimension: Square\n"
    "*PaperDimension Square/Square: \"72 72\"\n"
    "*PaperDimension Tall/Tall: \"144 288\"\n";

// A complete PPD that contains `lines`.
inline std::string writtenPpd(const std::string& lines, const std::string& modelName = "Z4") {
  return "*PPD-Adobe: \"4.3\"\n"
         "*FormatVersion: \"4.3\"\n"
         "*FileVersion: \"1.0\"\n"
         "*LanguageVersion: English\n"
         "*LanguageEncoding: ISOLatin1\n"
         "*PCFileName: \"WRITTEN.PPD\"\n"
         "*Product: \"(Written)\"\n"
         "*Manufacturer: \"Written\"\n" +
         (modelName.empty() ? std::string() : "*ModelName: \"" + modelName + "\"\n") +
         "*ShortNickName: \"Written\"\n"
         "*NickName: \"Written\"\n"
         "*PSVersion: \"(3010.000) 0\"\n"
         "*LanguageLevel: \"3\"\n" +
         lines;
}

#endif
