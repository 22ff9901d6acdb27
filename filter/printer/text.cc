// Path and string helpers.
// Paths of either style are understood: logs and arguments come from both worlds.
// SPDX-License-Identifier: Apache-2.0
#include "printer/text.h"

#include <cstring>

const char* pellamPathGetBasename(const char* path) {
  if (path == nullptr) return nullptr;
  const char* name = path;
  for (const char* c = path; *c != '\0'; ++c) {
    if (*c == '/' || *c == '\\') name = c + 1;
  }
  return name;
}

char* pellamStrCpy(char* dst, const char* src, size_t len) {
  std::strncpy(dst, src, len);
  dst[len - 1] = '\0';
  return dst;
}
