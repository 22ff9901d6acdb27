// Fills a job's settings record from the printer's PPD and the job's options.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_DRIVER_SETTINGS_READER_H
#define KORVEL_DRIVER_SETTINGS_READER_H

#include <cups/ppd.h>

#include "printer/settings.h"

// Sets page width and height, in millimetres, from the chosen page size; 0 without one.
void getPageWidthPageHeight(ppd_file_t* ppd, Settings* settings);

// Fills the whole record from the PPD that the environment variable PPD names, with the job's
// options marked over its defaults, and logs it. A missing option gets its default, and so does
// everything without a PPD. Returns false, with one ERROR line, only when the process has too few
// descriptors or too little memory to open it.
bool parseSettings(Settings* settings, const char* options);

#endif
