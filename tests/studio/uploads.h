// Documents that the studio's tests upload, made as bytes: small pictures, and broken ones.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_STUDIO_UPLOADS_H
#define KORVEL_TESTS_STUDIO_UPLOADS_H

#include <cstdint>
#include <string>

// A PNG of 8-bit greys: a ramp with the noise of `seed` on it. `dpi` 0 states none.
std::string noisyPng(unsigned width, unsigned height, unsigned seed, unsigned dpi = 0);

// A PNG whose header claims this size and whose data end there.
std::string pngHeader(uint32_t width, uint32_t height);

// A JPEG of 32 by 16 pixels, black in its upper left quarter, with this Exif orientation.
std::string orientedJpeg(unsigned orientation);

#endif
