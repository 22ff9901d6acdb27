// Catches the image dumps of whole pages: they go to memory instead of the spooler's folder.
// Linked into a test program, it replaces the opening of our own files.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_PRINTER_CAUGHT_DUMPS_H
#define KORVEL_TESTS_PRINTER_CAUGHT_DUMPS_H

#include <cstddef>
#include <string>
#include <vector>

// Whether a dump can be opened; on by default.
void allowDumps(bool allowed);

// Paths asked for since the last call, in their order, with the time as one '*'.
std::vector<std::string> takeDumpPaths();

// Bytes of the dumps written since the last call. All of them have to be closed.
std::vector<std::string> takeDumps();

#endif
