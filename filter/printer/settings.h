// The settings of one job, read once from the printer's PPD and the job's options.
// Data only: every layer above the pixels reads it.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_PRINTER_SETTINGS_H
#define KORVEL_PRINTER_SETTINGS_H

#include <cstddef>
#include <cstdint>

constexpr size_t kSettingText = 41;  // bytes of a text, its end included: longer choices are cut
constexpr size_t kSettingPath = 256;

// Texts are NUL-terminated and empty when the PPD has no such option. Zero-fill before use.
struct Settings {
  char ModelName[kSettingText];
  char PageSize[kSettingText];
  float pageWidth;   // millimetres: the PPD's size first, then the current page's
  float pageHeight;  // millimetres
  char Resolution[kSettingText];
  char MediaMethod[kSettingText];
  char PaperType[kSettingText];  // "LabelMark" is the one that changes what is sent
  int32_t GapsHeight;
  char PostAction[kSettingText];  // "TearOff", "Cut", or nothing happens
  char Occurrence[kSettingText];  // "EveryPage", "AfterJob", or never
  char Origin[kSettingText];
  int32_t MirrorImage;      // 0 or not
  int32_t NegativeImage;    // 0 or not
  int32_t Rotate180;        // 1 when Origin is "Rotation180"
  int32_t AntiWrinkle;      // level, -1 when the PPD has no such option
  int32_t IsTattooPrinter;  // 1 when AntiWrinkle is not -1
  int32_t halftoneType;     // a DitherType
  char PrintSpeed[kSettingText];
  int32_t Darkness;  // 1, 8, 15, or 0 for any other choice
  int32_t Brightness;
  int32_t Contrast;
  char FilterOutputPath[kSettingPath];  // copy of the printed bytes; no option fills it
};

#endif
