// One colour or palette entry, laid out as in a device-independent bitmap.
// A leaf header: the palette image and its callers share it.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_IMAGE_RGB_QUAD_H
#define KORVEL_IMAGE_RGB_QUAD_H

#include <cstdint>

struct tagRGBQUAD {
  uint8_t rgbBlue;
  uint8_t rgbGreen;
  uint8_t rgbRed;
  uint8_t rgbReserved;  // carried along; takes no part in matching colours
};

static_assert(sizeof(tagRGBQUAD) == 4, "palette entries are copied as four bytes");

#endif
