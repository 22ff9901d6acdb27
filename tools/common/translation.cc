// Looks texts up in the installed catalogues. Numbers are the same in every language: only messages
// are translated.
// SPDX-License-Identifier: Apache-2.0
#include "tools/common/translation.h"

#include <libintl.h>

#include <clocale>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "tools/common/installation.h"

namespace korvel {

namespace {

constexpr char kDomain[] = "korvel";

}  // namespace

void startTranslation() {
  std::setlocale(LC_MESSAGES, "");
  std::setlocale(LC_CTYPE, "");
  const char* folder = std::getenv("TEXTDOMAINDIR");
  bindtextdomain(kDomain, folder != nullptr ? folder : catalogueFolder().c_str());
}

const char* translated(const char* text) { return dgettext(kDomain, text); }

std::string filled(const char* format, ...) {
  char text[4096];
  va_list values;
  va_start(values, format);
  std::vsnprintf(text, sizeof text, translated(format), values);
  va_end(values);
  return text;
}

}  // namespace korvel
