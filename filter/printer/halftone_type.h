// The halftone setting and its names, as job options and PPDs spell them.
// A leaf header.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_PRINTER_HALFTONE_TYPE_H
#define KORVEL_PRINTER_HALFTONE_TYPE_H

#include <cstdint>

// The setting's number is the method's number, although the two lists are offset by one: a name
// must keep printing what it has always printed (HalftoneSettings table).
enum DitherType : int32_t {
  kHalftoneNone = 0,
  kHalftoneFloydSteinberg,
  kHalftoneOrdered,
  kHalftoneBurkes,
  kHalftoneStucki,
  kHalftoneJarvisJudiceNinke,
  kHalftoneSierra,
  kHalftoneStevensonArce,
  kHalftoneTattoo,
  kHalftoneTattooZ4,
};

extern "C" {

// The setting's name; "None" for 10 and more. Not for negative values.
const char* pellamHalftoneTypeToStr(DitherType type);

// The setting of exactly that name; 0 ("None") for any other text.
DitherType pellamHalftoneTypeFromStr(const char* name);
}

#endif
