// Reads the job's settings record: options marked over the description's defaults, each look-up
// with its own default, all of it logged.
// SPDX-License-Identifier: Apache-2.0
#include "driver/settings_reader.h"

#include <cups/cups.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "driver/ppd_access.h"
#include "printer/halftone_type.h"
#include "printer/log.h"
#include "printer/text.h"

namespace {

constexpr double kMillimetresPerPoint = 0.3528;

void markOptions(ppd_file_t* ppd, const char* options) {
  ppdMarkDefaults(ppd);
  cups_option_t* list = nullptr;
  const int count = cupsParseOptions(options, 0, &list);
  if (count == 0 || list == nullptr) return;
  cupsMarkOptions(ppd, count, list);
  cupsFreeOptions(count, list);
}

void copyChoice(ppd_file_t* ppd, const char* keyword, char* text) {
  pellamStrCpy(text, pellamPpdGetChoiceAsStrDefault(ppd, keyword, ""), kSettingText);
}

int32_t densityOf(const char* darkness) {
  if (std::strcmp(darkness, "Light") == 0) return 1;
  if (std::strcmp(darkness, "Middle") == 0) return 8;
  if (std::strcmp(darkness, "Dark") == 0) return 15;
  return 0;
}

void readSettings(ppd_file_t* ppd, Settings* settings) {
  copyChoice(ppd, "PageSize", settings->PageSize);
  copyChoice(ppd, "DefaultResolution", settings->Resolution);
  copyChoice(ppd, "MediaMethod", settings->MediaMethod);
  copyChoice(ppd, "PaperType", settings->PaperType);
  settings->GapsHeight = pellamPpdGetChoiceAsIntDefault(ppd, "GapsHeight", 0);
  copyChoice(ppd, "PostAction", settings->PostAction);
  copyChoice(ppd, "Occurrence", settings->Occurrence);
  copyChoice(ppd, "Origin", settings->Origin);
  settings->halftoneType =
      pellamHalftoneTypeFromStr(pellamPpdGetChoiceAsStrDefault(ppd, "HalftoneType", ""));
  // NOLINTBEGIN(bugprone-signed-char-misuse): the 8-bit value widens with its sign
  settings->MirrorImage = pellamPpdGetChoiceAsBoolDefault(ppd, "MirrorImage", 0);
  settings->NegativeImage = pellamPpdGetChoiceAsBoolDefault(ppd, "NegativeImage", 0);
  // NOLINTEND(bugprone-signed-char-misuse)
  settings->Rotate180 = std::strcmp(settings->Origin, "Rotation180") == 0 ? 1 : 0;
  settings->AntiWrinkle = pellamPpdGetChoiceAsIntDefault(ppd, "AntiWrinkle", -1);
  settings->IsTattooPrinter = settings->AntiWrinkle != -1 ? 1 : 0;
  pellamStrCpy(settings->ModelName, pellamPpdGetAttrAsStrDefault(ppd, "ModelName", "", ""),
               kSettingText);
  copyChoice(ppd, "DefaultPrintSpeed", settings->PrintSpeed);
  settings->Darkness = densityOf(pellamPpdGetChoiceAsStrDefault(ppd, "Darkness", ""));
  settings->Brightness = pellamPpdGetChoiceAsIntDefault(ppd, "Brightness", 0);
  settings->Contrast = pellamPpdGetChoiceAsIntDefault(ppd, "Contrast", 0);
  getPageWidthPageHeight(ppd, settings);
}

// The one text that a description can spread over several lines: shown on one, so that it forges no
// line of the log (ForgesNoLogLine).
void logModelName(const char* name) {
  char shown[kSettingText];
  pellamStrCpy(shown, name, sizeof shown);
  for (char* c = shown; *c != '\0'; ++c) {
    if (*c == '\n' || *c == '\r') *c = ' ';
  }
  pellamLogCommon(0, "settings->ModelName:%s", shown);
}

void logSettings(const Settings* settings) {
  pellamLogCommon(0, "settings->Resolution:%s", settings->Resolution);
  pellamLogCommon(0, "settings->MediaMethod:%s", settings->MediaMethod);
  pellamLogCommon(0, "settings->PaperType:%s", settings->PaperType);
  pellamLogCommon(0, "settings->GapsHeight:%d", settings->GapsHeight);
  pellamLogCommon(0, "settings->PostAction:%s", settings->PostAction);
  pellamLogCommon(0, "settings->Occurrence:%s", settings->Occurrence);
  pellamLogCommon(0, "settings->Origin:%s", settings->Origin);
  pellamLogCommon(0, "settings->MirrorImage:%d", settings->MirrorImage);
  pellamLogCommon(0, "settings->NegativeImage:%d", settings->NegativeImage);
  pellamLogCommon(0, "settings->PrintSpeed:%s", settings->PrintSpeed);
  pellamLogCommon(0, "settings->Darkness:%d", settings->Darkness);
  pellamLogCommon(0, "settings->halftoneType:%d", settings->halftoneType);
  pellamLogCommon(0, "settings->PageSize:%s", settings->PageSize);
  pellamLogCommon(0, "settings->pageWidth:%f", static_cast<double>(settings->pageWidth));
  pellamLogCommon(0, "settings->pageHeight:%f", static_cast<double>(settings->pageHeight));
  pellamLogCommon(0, "settings->AntiWrinkle:%d", settings->AntiWrinkle);
  pellamLogCommon(0, "settings->IsTattooPrinter:%d", settings->IsTattooPrinter);
  logModelName(settings->ModelName);
  pellamLogCommon(0, "settings->Brightness:%d", settings->Brightness);
  pellamLogCommon(0, "settings->Contrast:%d", settings->Contrast);
}

// Whether an error is about what the process may use, not about the file.
bool isShortage(int error) { return error == EMFILE || error == ENFILE || error == ENOMEM; }

}  // namespace

void getPageWidthPageHeight(ppd_file_t* ppd, Settings* settings) {
  const char* name = pellamPpdGetChoiceAsStrDefault(ppd, "PageSize", "");
  settings->pageWidth = 0.0f;
  settings->pageHeight = 0.0f;
  pellamLogCommon(0, "PageSizeName: %s", name);
  const ppd_size_t* size = ppdPageSize(ppd, name);
  if (size == nullptr) return;
  // Written for every size found, custom or not.
  pellamLogCommon(0, "Custom Size: (%f,%f,%f,%f,%f,%f)", static_cast<double>(size->width),
                  static_cast<double>(size->length), static_cast<double>(size->left),
                  static_cast<double>(size->bottom), static_cast<double>(size->right),
                  static_cast<double>(size->top));
  const double widthMm = static_cast<double>(size->width) * kMillimetresPerPoint;
  const double heightMm = static_cast<double>(size->length) * kMillimetresPerPoint;
  settings->pageWidth = static_cast<float>(widthMm);
  settings->pageHeight = static_cast<float>(heightMm);
  pellamLogCommon(0, "Set page size: width %f mm, height %f mm",
                  static_cast<double>(settings->pageWidth),
                  static_cast<double>(settings->pageHeight));
}

bool parseSettings(Settings* settings, const char* options) {
  errno = 0;
  ppd_file_t* ppd = ppdOpenFile(std::getenv("PPD"));  // null yields the defaults
  const int error = errno;
  if (ppd == nullptr && isShortage(error)) {
    pellamLogCommon(3, "Unable to open the PPD file : %s!", std::strerror(error));
    return false;
  }
  markOptions(ppd, options);
  *settings = {};
  readSettings(ppd, settings);
  logSettings(settings);
  ppdClose(ppd);
  return true;
}
