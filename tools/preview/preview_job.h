// One job through the filter to sheets: the filter as the spooler runs it, its stream into the
// emulated printer's world, and no waiting for its motor.
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
  SpoolerJob job;    // its sinks, when set, see everything first
  PrinterBody body;  // the printer that the sheets come out of

  // Each is called once a page, in the order of pages, numbered from 1; a sheet when nothing more
  // can happen to it. Any may be unset.
  std::function<void(unsigned number, const PagePicture& page)> page;
  std::function<void(unsigned number, const SheetPicture& sheet)> sheet;
  std::function<void(unsigned pages)> progress;  // pages that the filter has begun
};

struct PreviewOutcome {
  std::string fault;   // one sentence; empty when the whole job came through
  unsigned pages = 0;  // that the filter has begun
};

PreviewOutcome runPreviewJob(const PreviewJob& preview);

}  // namespace korvel

#endif
