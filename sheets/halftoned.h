// A grey picture as each halftone prints it, made by the filter's own libraries.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_SHEETS_HALFTONED_H_
#define KORVEL_SHEETS_HALFTONED_H_

#include <cstddef>

#include "drawing/dot_canvas.h"

namespace korvel {

// `setting` is the place of the halftone in kHalftoneNames. The result is paper and black only.
DotCanvas halftoned(const DotCanvas& picture, size_t setting);

}  // namespace korvel

#endif
