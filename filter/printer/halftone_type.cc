// Names of the halftone settings, both ways.
// The table's index is the setting's value.
// SPDX-License-Identifier: Apache-2.0
#include "printer/halftone_type.h"

#include <cstring>

namespace {

constexpr int kHalftones = 10;

const char* const sHalftoneTypeStrTable[kHalftones] = {
    "None",   "FloydSteinberg", "Ordered", "Burkes",    "Stucki", "JarvisJudiceNinke",
    "Sierra", "StevensonArce",  "Tattoo",  "Tattoo_Z4",
};

}  // namespace

const char* pellamHalftoneTypeToStr(DitherType type) {
  return type < kHalftones ? sHalftoneTypeStrTable[type] : "None";
}

DitherType pellamHalftoneTypeFromStr(const char* name) {
  for (int i = 0; i < kHalftones; ++i) {
    if (std::strcmp(name, sHalftoneTypeStrTable[i]) == 0) return static_cast<DitherType>(i);
  }
  return kHalftoneNone;
}
