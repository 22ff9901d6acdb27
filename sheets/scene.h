// The picture that all halftones are compared on: balls on a chequered floor, from black to white
// with soft shades, sharp edges and small lights, and a ramp of greys.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_SHEETS_SCENE_H_
#define KORVEL_SHEETS_SCENE_H_

#include "drawing/dot_canvas.h"

namespace korvel {

DotCanvas paintScene(int width, int height);
DotCanvas paintRamp(int width, int height);  // black at the left, paper at the right

// The scene above a ramp, as one picture.
DotCanvas paintSample(int width, int height);

}  // namespace korvel

#endif
