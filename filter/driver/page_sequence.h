// What happens on the printer around one page: its start, and its printing.
// The order of the steps is the printer's: every page is a complete little job.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_DRIVER_PAGE_SEQUENCE_H
#define KORVEL_DRIVER_PAGE_SEQUENCE_H

#include <cups/raster.h>

#include "printer/settings.h"
#include "protocol/korvel_printer.h"

// Hands the page's resolution and all settings to the printer, which keeps pointers to both
// records, and sends 64 NUL bytes and the setup packets.
void startPage(KorvelPrinter* printer, Settings* settings, cups_page_header2_t* header);

// Prints the page's pixels with status waits, feeds and the per-page post action, and flushes the
// output. `page` counts from 0. No failure is reported: a wait that times out only takes time.
void printPage(KorvelPrinter* printer, const Settings& settings, const cups_page_header2_t& header,
               const unsigned char* pixels, int32_t page);

#endif
