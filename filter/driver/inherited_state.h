// The state that a process inherits from the one that started it: signals and open files.
// Hosts of filters differ in what they leave behind; a job runs the same under each of them.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_DRIVER_INHERITED_STATE_H
#define KORVEL_DRIVER_INHERITED_STATE_H

// Brings signals and descriptors to the state that the job relies on:
// SIGPIPE ends the process (a printer's connection that is gone ends the job), SIGTERM and SIGPIPE
// are delivered, SIGXFSZ is ignored (a file-size limit is a failed write), and the standard streams
// block: the raster library would read standard input in a busy loop. Install the handler of
// SIGTERM first: a signal may be pending.
void restoreInheritedState();

#endif
