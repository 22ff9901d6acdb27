// The ten halftones: the setting's name, and the method that runs for it. The names are in the
// setting's order; most belong to the method of the entry before.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_DESCRIPTION_HALFTONE_NAMES_H
#define KORVEL_TOOLS_DESCRIPTION_HALFTONE_NAMES_H

#include <array>

#include "tools/common/translation.h"

namespace korvel {

struct HalftoneName {
  const char* setting;  // the choice of HalftoneType
  const char* method;   // in English; translated(method) is in the user's language
};

inline constexpr std::array<HalftoneName, 10> kHalftoneNames = {{
    {"None", later("Threshold")},
    {"FloydSteinberg", later("Ordered 4 x 4")},
    {"Ordered", "Burkes"},
    {"Burkes", "Stucki"},
    {"Stucki", "Jarvis-Judice-Ninke"},
    {"JarvisJudiceNinke", "Sierra"},
    {"Sierra", "Stevenson-Arce"},
    {"StevensonArce", later("Ordered, Bayer")},
    {"Tattoo", later("Stencil")},
    {"Tattoo_Z4", later("Stencil, fine")},
}};

}  // namespace korvel

#endif
