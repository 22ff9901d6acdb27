// A dahlia as a stencil drawing: clear outlines, shaded petals, a spiral of seeds.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_SHEETS_FLOWER_H_
#define KORVEL_SHEETS_FLOWER_H_

#include "drawing/dot_canvas.h"

namespace korvel {

// In a circle around `centre`; all lengths are dots. Outlines are `stroke` thick.
void paintFlower(DotCanvas* canvas, Point centre, double radius, double stroke);

}  // namespace korvel

#endif
