// Two helpers for C strings: the last part of a path, and a copy that always ends.
// A leaf header.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_PRINTER_TEXT_H
#define KORVEL_PRINTER_TEXT_H

#include <cstddef>

extern "C" {

// What follows the last '/' or '\', pointing into `path`; all of it without either, null for null.
const char* pellamPathGetBasename(const char* path);

// Copies at most len - 1 characters and pads `dst` with zeros up to `len`, which is at least 1.
// Returns `dst`.
char* pellamStrCpy(char* dst, const char* src, size_t len);
}

#endif
