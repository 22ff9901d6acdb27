// What a printer is made of, as far as its sheets depend on it.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_STREAM_PRINTER_BODY_H
#define KORVEL_TOOLS_STREAM_PRINTER_BODY_H

namespace korvel {

enum class Media { kGap, kMark, kContinuous, kSheet };

struct PrinterBody {
  unsigned dpi = 203;    // dots per inch, 1 to 9999
  unsigned speed = 150;  // millimetres per second, at least 1
  Media media = Media::kGap;
};

}  // namespace korvel

#endif
