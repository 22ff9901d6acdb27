// Turns one job into sheets: runs the filter as the spooler does, and passes its stream to an
// emulated printer whose motor takes no time.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_PREVIEW_PREVIEW_JOB_H
#define KORVEL_TOOLS_PREVIEW_PREVIEW_JOB_H

#include <functional>
#include <string>

#include "tools/emulator/printer_world.h"
#include "tools/emulator/sheet_picture.h"
#include "tools/host/emulated_spooler.h"
#include "tools/stream/page_picture.h"

namespace korvel {

struct PreviewJob {
  SpoolerJob job;    // its sinks, when set, receive everything first
  PrinterBody body;  // of the printer that prints the sheets

  // Each is called once per page, in order, numbered from 1; `sheet` when nothing more can happen
  // to the sheet. Any may be unset.
  std::function<void(unsigned number, const PagePicture& page)> page;
  std::function<void(unsigned number, const SheetPicture& sheet)> sheet;
  std::function<void(unsigned pages)> progress;  // that the filter has started
};

// Returns the number of pages that the filter has started; fails unless it has printed all of them.
Result<unsigned> runPreviewJob(const PreviewJob& preview);

}  // namespace korvel

#endif
