// Opens the small diagnostic files that the filter leaves at names which others can guess.
// A leaf header.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_PRINTER_OWN_FILE_H
#define KORVEL_PRINTER_OWN_FILE_H

#include <cstdio>

// Opens `path` for writing and reading from its start, made or emptied, mode 0600. Never follows
// a link, never blocks, and empties only a regular file of our own that has no other name.
// Returns null when that cannot be; the caller closes the file.
FILE* pellamOpenOwnFile(const char* path);

#endif
