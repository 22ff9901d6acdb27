// Pages that clients print, as dots, and the files in which they send them.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SHARING_PAGES_H
#define KORVEL_TESTS_SHARING_PAGES_H

#include <string>

#include "drawing/dot_canvas.h"
#include "tests/spooler/picture.h"

struct PageSize {
  std::string name;  // of the driver
  int width = 0, height = 0, dpi = 0;
  double points[2] = {0, 0};
  // Of the area that can be printed, in dots.
  int left = 0, top = 0, printWidth = 0, printHeight = 0;
};

// A size as a driver describes it; the default one without a name.
PageSize pageSize(const std::string& description, const std::string& name = "");

// The part of a sheet that can be printed, as a size of its own.
PageSize printablePart(const PageSize& size);

// Black and white noise with edges of another pattern, so that a dot too few or a shift shows.
korvel::DotCanvas noisePage(const PageSize& size, unsigned seed);
// A frame along the edges, and a block in the top left corner that covers a third by a quarter.
korvel::DotCanvas framedPage(const PageSize& size);
// A page with `number` in binary, to be read from the print.
korvel::DotCanvas numberedPage(const PageSize& size, int number);
int numberOn(const Picture& print);
// One level of ink everywhere, 0 to 255.
korvel::DotCanvas greyPage(const PageSize& size, int ink);

// What the printable part of a page must look like in print.
Picture printOf(const korvel::DotCanvas& page, const PageSize& size);

// Writes a page as image/urf, image/pwg-raster, image/png, image/jpeg or application/pdf. The PDF
// has the page's exact size and one picture.
std::string writePage(const korvel::DotCanvas& page, const PageSize& size,
                      const std::string& format, const std::string& path);

#endif
