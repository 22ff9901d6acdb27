// The one logging call. The spooler reads the prefixes to sort the lines.
// A leaf header: everything may log.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_PRINTER_LOG_H
#define KORVEL_PRINTER_LOG_H

extern "C" {

// Writes a line to standard error: the level's prefix (0 and 1 "DEBUG:", 2 "WARN:", 3 "ERROR:",
// 4 "CRIT:", 5 "INVALID:"), directly followed by the text, and a newline, even if the text ends in
// one. Nothing is filtered; the level is not checked.
__attribute__((format(printf, 2, 3))) void pellamLogCommon(int level, const char* format, ...);
}

#endif
