// The sheets that help, each drawn for any size that has room for it.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_SHEETS_SHEETS_H_
#define KORVEL_SHEETS_SHEETS_H_

#include <array>

#include "sheets/sheet_page.h"

namespace korvel {

// Rulers along two edges, a measured square, lines and greys to judge the heat by, and codes of 2,
// 3 and 4 dots per module. Black and paper only: every halftone but the stencil ones prints it as
// it is.
SheetPage drawCalibration(const SheetSize& size);
std::string calibrationCode(int module);  // the text of its codes of that module

// The same picture in all ten halftones, dithered beforehand. To be printed with the threshold.
bool hasRoomForSampler(const SheetSize& size);
SheetPage drawSampler(const SheetSize& size);
// Where the ten pictures are, in the order of kHalftoneNames, and the grey picture in all of them;
// dots.
struct SamplerPatches {
  int width;
  int height;
  std::array<int, 10> left;
  std::array<int, 10> top;
};
SamplerPatches samplerPatches(const SheetSize& size);
DotCanvas samplerPicture(const SheetSize& size);

// In greys, for the queue's own halftone: a label with a code that scans, and a drawing.
SheetPage drawTestLabel(const SheetSize& size);
SheetPage drawTestStencil(const SheetSize& size);

}  // namespace korvel

#endif
