// The two grey pictures that sheets show: a still life of balls on a chequered floor, from black to
// white with soft shades, sharp edges and small highlights, and a dahlia drawn for a stencil.
// Both are in pictures.png, which is read once and scaled to each sheet.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_SHEETS_PICTURES_H_
#define KORVEL_SHEETS_PICTURES_H_

#include "drawing/dot_canvas.h"

namespace korvel {

// Throws std::runtime_error when pictures.png cannot be read, and so do the functions that call it.
DotCanvas paintScene(int width, int height);
DotCanvas paintRamp(int width, int height);  // black at the left, paper at the right

// The scene above a ramp, as one picture: what all halftones are compared on.
DotCanvas paintSample(int width, int height);

// Fills the square around `centre` that is 2 * `radius` dots wide.
void paintFlower(DotCanvas* canvas, Point centre, double radius);

}  // namespace korvel

#endif
