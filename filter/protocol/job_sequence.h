// The command sequences that open every page and close the job.
// Both end with a print control of 1, so that the printer executes what it has received.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_PROTOCOL_JOB_SEQUENCE_H
#define KORVEL_PROTOCOL_JOB_SEQUENCE_H

#include "protocol/korvel_printer.h"

// Sends the print density between two controls: 33 bytes, before every page.
void jobSetup(KorvelPrinter* printer, const Settings* settings);

// Sends the post action of the whole job, if there is one, between two controls.
void jobEnd(KorvelPrinter* printer, const Settings* settings);

#endif
