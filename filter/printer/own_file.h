// Opens the small diagnostic files that the filter leaves under names that others can guess.
// A leaf header.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_PRINTER_OWN_FILE_H
#define KORVEL_PRINTER_OWN_FILE_H

#include <cstdio>

// Opens `path` for writing and reading from its start, created or truncated, mode 0600. Never
// follows a link, never blocks, and empties only a regular file of our own that has no other name.
// Returns null when that is not possible; the caller closes the file.
FILE* pellamOpenOwnFile(const char* path);

#endif
